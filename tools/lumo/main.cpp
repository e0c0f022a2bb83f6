// The `lumo` command.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>

#include "commands.h"

namespace {

void addInfo(CLI::App& app) {
    app.add_subcommand("info", "Show the platform, the devices and the libraries in use")
        ->callback(lumo::showInfo);
}

void addSolve(CLI::App& app, lumo::SolveOptions& options) {
    CLI::App* command = app.add_subcommand(
        "solve", "Solve A X = B in single precision; A and B are Matrix Market or NumPy files");
    command->add_option("A", options.a, "The square matrix")->required();
    command->add_option("B", options.b, "The right-hand sides")->required();
    command->add_option("-o,--output", options.x, "Write the solution to this .mtx or .npy file");
    command->callback([&options] { lumo::solve(options); });
}

void addTune(CLI::App& app, lumo::TuneOptions& options) {
    CLI::App* command = app.add_subcommand(
        "tune", "Measure from which sizes on the drop-in library should let Lumo serve a routine");
    command->add_option("ROUTINE", options.routines, "As sgemm; all of them if none is named");
    command->add_option("-o,--output", options.file, "Write to this file");
    command->add_option("-n,--largest", options.largest, "The largest order that is measured")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    command->callback([&options] { lumo::tune(options); });
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Dense linear algebra on NVIDIA GPUs, and whole without one", "lumo");
    app.require_subcommand(1);
    app.set_version_flag("--version", LUMO_VERSION);
    lumo::SolveOptions solveOptions;
    lumo::TuneOptions tuneOptions;
    addInfo(app);
    addSolve(app, solveOptions);
    addTune(app, tuneOptions);
    try {
        app.parse(argc, argv);  // runs the command
        return 0;
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "lumo: this machine's memory does not suffice\n");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lumo: %s\n", error.what());
    }
    return 1;
}
