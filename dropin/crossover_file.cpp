#include "dropin/crossover_file.h"

#include <istream>
#include <limits>
#include <sstream>

namespace lumo::dropin {

std::optional<double> crossoverFrom(const std::string& word) {
    if (word == "never") return std::numeric_limits<double>::infinity();
    char* end = nullptr;
    const double size = std::strtod(word.c_str(), &end);
    if (word.empty() || *end || !(size >= 0)) return {};
    return size;
}

std::map<std::string, double> readCrossovers(std::istream& in, const std::string& platform,
                                             const std::function<void(int)>& complain) {
    std::map<std::string, double> sizes;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string itsPlatform, routine, size, more;
        if (!(words >> itsPlatform)) continue;
        words >> routine >> size;
        const auto value = crossoverFrom(size);
        if (!value || words >> more)
            complain(number);
        else if (itsPlatform == platform)
            sizes[routine] = *value;
    }
    return sizes;
}

}  // namespace lumo::dropin
