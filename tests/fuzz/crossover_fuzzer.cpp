// Any bytes as the file of crossovers.
#include <algorithm>
#include <sstream>

#include "dropin/crossover_file.h"
#include "fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const auto lines = 1 + std::count(bytes.begin(), bytes.end(), '\n');
    std::istringstream in(bytes);
    int last = 0;
    const auto sizes = lumo::dropin::readCrossovers(in, "software", [&](int line) {
        require(line > last && line <= lines, "complaints go down the file");
        last = line;
    });
    for (const auto& [routine, least] : sizes)
        require(!routine.empty() && least >= 0, routine + " has a size");
    return 0;
}
