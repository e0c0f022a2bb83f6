// The `lumo` command.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <limits>
#include <new>

#include "commands.h"

namespace {

void addInfo(CLI::App& app) {
    app.add_subcommand("info", "Show the platform, the devices and the libraries in use")
        ->callback(lumo::showInfo);
}

enum class Mixed { no, yes };
void addPrecision(CLI::App* command, std::string& precision, Mixed mixed) {
    std::vector<std::string> words{"s", "d"};
    std::string description = "Compute in single or double precision";
    if (mixed == Mixed::yes) {
        words.emplace_back("mixed");
        description += ", or factorise in single and refine to double";
    }
    command->add_option("--precision", precision, description + "; else as the files are")
        ->check(CLI::IsMember(words).description(""))
        ->type_name(mixed == Mixed::yes ? "s|d|mixed" : "s|d");
}

// A command that takes A and B from files and may write X.
CLI::App* addSolver(CLI::App& app, const char* name, const char* description, const char* shape,
                    const char* limits, lumo::SystemFiles& files,
                    void (*run)(const lumo::SystemFiles&)) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("A", files.a, shape)->required();
    command->add_option("B", files.b, "The right-hand sides")->required();
    command->add_option("-o,--output", files.x, "Write the solution to this .mtx or .npy file");
    command->callback([&files, run] { run(files); });
    command->footer(
        std::string("A and B are Matrix Market or NumPy files, which gzip may have compressed. A "
                    "file named -\nis the standard input, or output.") +
        limits);
    return command;
}

void addSolve(CLI::App& app, lumo::SystemFiles& files) {
    CLI::App* command =
        addSolver(app, "solve", "Solve A X = B", "The square matrix", "", files, lumo::solve);
    addPrecision(command, files.precision, Mixed::yes);
}

void addLstsq(CLI::App& app, lumo::SystemFiles& files) {
    CLI::App* command = addSolver(
        app, "lstsq",
        "Minimise ||B - A X||, or find the smallest X with A X = B if A has more columns than rows",
        "The m x n matrix, of full rank unless --any-rank is given",
        " Without --any-rank the data are not scaled:\nkeep the largest elements of A and of B "
        "between 1e-31 and "
        "1e31, in double precision between\n1e-291 and 1e291.",
        files, lumo::lstsq);
    addPrecision(command, files.precision, Mixed::no);
    command->add_flag(
        "--any-rank", files.anyRank,
        "By singular values: the smallest X that minimises ||B - A X||, and A's rank");
}

void addBench(CLI::App& app, lumo::BenchOptions& options) {
    CLI::App* command =
        app.add_subcommand("bench", "Measure Lumo's speed beside the CPU library's, by size");
    command->add_option("ROUTINE", options.routines, "As sgemm; all of them if none is named");
    command->add_option("-n,--largest", options.largest, "The largest order that is measured")
        ->check(CLI::Range(16, 32768))
        ->capture_default_str();
    command->add_option("--load", options.load, "Measure beside so many busy loops")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    command->add_option("--json", options.json, "Write the speeds to this file");
    command->add_option("--plot", options.plot, "Draw the speeds to this .svg, .png or .pdf file");
    command->callback([&options] { lumo::bench(options); });
}

void addTune(CLI::App& app, lumo::TuneOptions& options) {
    CLI::App* command = app.add_subcommand(
        "tune", "Measure from which sizes on the drop-in library should let Lumo serve a routine");
    command->add_option("ROUTINE", options.routines, "As sgemm; all of them if none is named");
    command->add_option("-o,--output", options.file, "Write to this file");
    command->add_option("-n,--largest", options.largest, "The largest order that is measured")
        ->check(CLI::Range(64, 32768))
        ->capture_default_str();
    command->callback([&options] { lumo::tune(options); });
}

void addPredict(CLI::App& app, lumo::PredictOptions& options) {
    CLI::App* command = app.add_subcommand(
        "predict",
        "Predict what a routine takes on a machine that is described, and what it waits "
        "for there");
    command->add_option("ROUTINE", options.routines, "As sgetrf; several: sgetrf sgesv")
        ->required();
    command->add_option("-n,--size", options.sizes, "The order of the problem; several: N,N,N")
        ->delimiter(',')
        ->allow_extra_args(false)  // which would be routines
        ->required()
        ->check(CLI::Range(1, 1000000).description(""))
        ->type_name("N");
    command->add_option("--machine", options.machine, "h100, h200, a100, laptop, or a machine file")
        ->capture_default_str();
    command->add_flag("--device", options.device, "Matrices in device memory");
    command->add_flag("--values", options.values,
                      "Of gesvd, gesdd, syevd, heevd: values without vectors");
    command->add_option("--against", options.against, "cpu: beside this machine's CPU library")
        ->check(CLI::IsMember({"cpu"}));
    command->add_option("--json", options.json, "Write the prediction to this file");
    command->add_option("--plot", options.plot, "Draw the speeds to this .svg, .png or .pdf file");
    command->callback([&options] { lumo::predict(options); });
    command->footer(
        "Nothing is computed: the library runs on a platform that only keeps time, as the "
        "machine's "
        "file\nsays. lumo calibrate writes such a file.");
}

void addCalibrate(CLI::App& app, lumo::CalibrateOptions& options) {
    CLI::App* command =
        app.add_subcommand("calibrate", "Measure what this machine's parts take, for lumo predict");
    command->add_option("-o,--output", options.file, "Write the machine file to this file");
    command->add_option("--name", options.name, "The machine's name in it");
    command->callback([&options] { lumo::calibrate(options); });
}

void addSvd(CLI::App& app, lumo::SvdTask& task) {
    CLI::App* command = app.add_subcommand(
        "svd", "Singular values of a matrix, and approximations of lower rank, also of images");
    command->add_option("A", task.a, "A Matrix Market or NumPy file, or an image: PGM, PPM or PNG")
        ->required();
    command
        ->add_option("-k,--rank", task.ranks,
                     "Approximate A by rank K, and check the errors; several: K,K,K")
        ->delimiter(',')
        ->allow_extra_args(false)  // which would be A
        ->check(CLI::Range(1, std::numeric_limits<int>::max()).description(""))
        ->type_name("K");
    command->add_option("-o,--output", task.prefix, "Write files whose names begin so; see below")
        ->type_name("PREFIX");
    command->add_flag("--compare", task.compare,
                      "Also time the CPU LAPACK's routine, and compare the singular values");
    addPrecision(command, task.precision, Mixed::no);
    command->callback([&task] { lumo::svd(task); });
    command->footer(
        "A = U diag(s) V^H. An image is a matrix for each of its channels, in single precision.\n"
        "The files, as .npy if A is one and as .mtx otherwise:\n"
        "  PREFIX.s.mtx                     the singular values; of an image a column each "
        "channel\n"
        "  PREFIX.u.mtx, PREFIX.vt.mtx      U and V^H, of a matrix without -k\n"
        "  PREFIX.k20.mtx, PREFIX.k20.png   with -k 20 the approximation, of an image in its "
        "format\n"
        "  PREFIX.spectrum.png              a plot of the singular values, if gnuplot is there");
}

void addEigh(CLI::App& app, lumo::EighTask& task) {
    CLI::App* command = app.add_subcommand(
        "eigh", "Eigenvalues and eigenvectors of a symmetric or Hermitian matrix");
    command->add_option("A", task.a, "A Matrix Market or NumPy file")->required();
    command->add_option("-o,--output", task.prefix, "Write files whose names begin so; see below")
        ->type_name("PREFIX");
    command->add_flag("--values", task.values, "Eigenvalues alone");
    command->add_flag("--compare", task.compare,
                      "Also time the CPU LAPACK's routine, and compare the eigenvalues");
    addPrecision(command, task.precision, Mixed::no);
    command->callback([&task] { lumo::eigh(task); });
    command->footer(
        "A V = V diag(w), the values in ascending order. The files, as .npy if A is one and as\n"
        ".mtx otherwise:\n"
        "  PREFIX.w.mtx   the eigenvalues\n"
        "  PREFIX.v.mtx   the eigenvectors, a column each, without --values");
}

// The parser counts commands, and does not say which word is none.
CLI::RequiredError withoutCommand(const CLI::App& app, const CLI::RequiredError& error) {
    if (!app.get_subcommands().empty()) return error;
    const std::vector<std::string> words = app.remaining();
    std::string text =
        words.empty() ? "A command is wanted:" : words[0] + " is no command; these are:";
    for (const CLI::App* command : app.get_subcommands({})) text += " " + command->get_name();
    return {text, error.get_exit_code()};
}

// Takes the places of standard streams that are closed: a file opened later would become one, and
// get what is printed. These cannot be written to.
void fillStandardStreams() {
    int descriptor = 0;
    do descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    close(descriptor);
}

// Throws if something was printed in vain.
void finishOutput() {
    const bool failed = std::ferror(stdout);
    errno = 0;
    if (std::fflush(stdout) != 0 || failed)
        throw std::runtime_error(std::string("standard output: ") +
                                 std::strerror(errno ? errno : EIO));
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Dense linear algebra on NVIDIA GPUs, and whole without one", "lumo");
    app.require_subcommand(1);
    app.set_version_flag("--version", LUMO_VERSION);
    fillStandardStreams();
    lumo::SystemFiles files;
    lumo::BenchOptions benchOptions;
    lumo::SvdTask svdTask;
    lumo::EighTask eighTask;
    lumo::TuneOptions tuneOptions;
    lumo::PredictOptions predictOptions;
    lumo::CalibrateOptions calibrateOptions;
    addInfo(app);
    addSolve(app, files);
    addLstsq(app, files);
    addBench(app, benchOptions);
    addSvd(app, svdTask);
    addEigh(app, eighTask);
    addTune(app, tuneOptions);
    addPredict(app, predictOptions);
    addCalibrate(app, calibrateOptions);
    try {
        int code = 0;
        try {
            app.parse(argc, argv);  // runs the command
        } catch (const CLI::RequiredError& error) {
            code = app.exit(withoutCommand(app, error));
        } catch (const CLI::ParseError& error) {
            code = app.exit(error);
        }
        finishOutput();
        return code;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "lumo: this machine's memory does not suffice\n");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lumo: %s\n", error.what());
    }
    return 1;
}
