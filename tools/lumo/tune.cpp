// `lumo tune`: from which sizes on the drop-in library should serve each routine, measured here.
#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "choice.h"
#include "commands.h"
#include "common/measure.h"
#include "common/progress.h"
#include "common/routines.h"
#include "dropin/crossover_file.h"
#include "lumo.h"
#include "output_file.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;

// The drop-in library, told to serve every size, and the Lumo that it uses: not the one that is
// built into this program.
class DropIn {
  public:
    DropIn() {
        setenv("LUMO_CROSSOVER", "0", 1);
        unsetenv("LUMO_REPORT");
        library_ = dlopen("liblumo-lapack.so", RTLD_NOW | RTLD_LOCAL);
        if (!library_) throw std::runtime_error(dlerror());
        int device = 0;
        char text[300] = "";
        if (of<lumoStatus()>("lumoInitialize")() ||
            of<lumoStatus(int*)>("lumoGetExecutingDevice")(&device) ||
            of<lumoStatus(int, char*, int)>("lumoGetDeviceInfo")(device, text, sizeof text))
            throw std::runtime_error("Lumo cannot run here: see lumo info");
        device_ = text;
    }
    const std::string& device() const { return device_; }
    void* routine(const std::string& name) const { return dlsym(library_, (name + "_").c_str()); }

  private:
    template <class Function>
    Function* of(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }
    void* library_;
    std::string device_;
};

// The least size from which on Lumo takes a tenth less time than the CPU library, up to the largest
// that is measured: until a call takes a second, or as far as the user wants.
std::string crossoverOf(const MeasuredRoutine& routine, const DropIn& dropIn, int largest) {
    constexpr double enough = 0.9, longCall = 0.15;
    void* const lumo = dropIn.routine(routine.name);
    void* const cpu = cpuRoutine(routine.name);
    if (!lumo) throw std::runtime_error(routine.name + ": the drop-in library has none");
    std::printf("%-7s", routine.name.c_str());
    std::string size = "never";
    for (int n = 64; n <= largest; n *= 2) {
        const auto [lumoTime, cpuTime] = [&] {
            const Progress progress(routine.name + ", n = " + std::to_string(n));
            const auto problem = routine.makeSquare(n);
            return pairedMedians(
                3, 0.1, [&] { problem->restore(); }, [&] { problem->by(lumo); },
                [&] { problem->by(cpu); });
        }();
        std::printf("  %d: %.2f", n, lumoTime / cpuTime);
        std::fflush(stdout);
        if (lumoTime > enough * cpuTime)
            size = "never";
        else if (size == "never")
            size = std::to_string(n);
        if (std::max(lumoTime, cpuTime) > longCall) break;
    }
    std::printf("  -> %s\n", size.c_str());
    return size;
}

// The lines of a crossover file that do not begin with one of `keys`.
std::string linesBut(const std::vector<std::string>& keys, const std::string& file) {
    std::string kept, line;
    std::ifstream in(file);
    while (std::getline(in, line))
        if (std::find(keys.begin(), keys.end(), line.substr(0, line.find_last_of(' '))) ==
            keys.end())
            kept += line + "\n";
    return kept;
}

}  // namespace

void tune(const TuneOptions& options) {
    const auto routines = choose(measuredRoutines(), options.routines);
    const std::string file = options.file.empty() ? dropin::crossoverFile() : options.file;
    if (file.empty()) throw std::runtime_error("there is no home to write to: name a file by -o");
    const fs::path folder = fs::path(file).parent_path();
    if (!folder.empty()) fs::create_directories(folder);
    OutputFile output(file);

    const DropIn dropIn;
    std::printf("%s: Lumo's time over the CPU library's, by size\n", dropIn.device().c_str());
    std::vector<std::string> keys;
    std::string measured;
    for (const MeasuredRoutine& routine : routines) {
        keys.push_back(dropin::platformOf(dropIn.device()) + " " + routine.name);
        measured += keys.back() + " " + crossoverOf(routine, dropIn, options.largest) + "\n";
    }
    // What was measured of other routines and on other platforms stays.
    const std::string kept = linesBut(keys, file);
    if (kept.empty())
        output.stream() << "# From which size on Lumo serves a call: lumo tune, " << dropIn.device()
                        << "\n";
    output.stream() << kept << measured;
    output.commit();
    std::printf("written to %s\n", file.c_str());
}

}  // namespace lumo
