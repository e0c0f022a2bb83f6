#include "dropin/crossover.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <optional>

#include "dropin/crossover_file.h"
#include "dropin/device.h"

namespace lumo::dropin {
namespace {

constexpr double never = std::numeric_limits<double>::infinity();
constexpr double leastGuessed = 64;

// Of the environment: nothing if it says nothing, or nothing that can be understood.
std::optional<double> readOverride() {
    const char* word = std::getenv("LUMO_CROSSOVER");
    if (!word || !*word) return {};
    const auto size = crossoverFrom(word);
    if (!size)
        std::fprintf(stderr, "lumo: LUMO_CROSSOVER is a size or \"never\"; \"%s\" is ignored\n",
                     word);
    return size;
}

const std::optional<double>& overridden() {
    static const std::optional<double> size = readOverride();
    return size;
}

std::map<std::string, double> readFile() {
    const std::string file = crossoverFile();
    std::ifstream in(file);
    if (!in && secure_getenv("LUMO_CROSSOVER_FILE"))
        std::fprintf(stderr, "lumo: %s cannot be read\n", file.c_str());
    return readCrossovers(in, platformName(), [&](int line) {
        std::fprintf(stderr, "lumo: %s, line %d: not \"PLATFORM ROUTINE SIZE\"; ignored\n",
                     file.c_str(), line);
    });
}

// Guesses, not measured: a matrix crosses the bus and back before it is any use, so that what does
// little with it is not worth the way. `lumo tune` knows better.
double guess(const std::string& routine) {
    if (platformName() != "cuda") return never;
    const std::string family = routine.substr(1);
    const std::string kind = family.substr(0, 2), work = family.substr(2);
    if (family == "gemv" || work == "con") return never;
    if (work == "evd") return 1024;
    return kind == "tr" || kind == "sy" || kind == "he" || family == "gemm" ? 512 : 1024;
}

// Of the routines that one of Lumo's serves, the one that `lumo tune` measures: for syev and syevr
// that is syevd.
std::string measuredFor(const std::string& routine) {
    const std::string driver = routine.substr(1, 4);
    return driver == "syev" || driver == "heev" ? routine.substr(0, 5) + "d" : routine;
}

}  // namespace

double crossoverOf(const std::string& routine) {
    if (overridden()) return *overridden();
    static const std::map<std::string, double> sizes = readFile();
    const std::string measured = measuredFor(routine);
    const auto found = sizes.find(measured);
    return found != sizes.end() ? found->second : guess(measured);
}

bool worthAsking(double size) {
    return size >= leastGuessed || overridden();
}

}  // namespace lumo::dropin
