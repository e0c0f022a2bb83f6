// Where the measured crossovers are kept: made by `lumo tune`, read by the drop-in library.
#pragma once

#include <cstdlib>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>

namespace lumo::dropin {

// LUMO_CROSSOVER_FILE, else $XDG_CONFIG_HOME/lumo/crossover, else ~/.config/lumo/crossover; empty
// if there is no home. A program with more rights than its user takes no file's name from them.
inline std::string crossoverFile() {
    if (const char* file = secure_getenv("LUMO_CROSSOVER_FILE"); file && *file) return file;
    if (const char* config = secure_getenv("XDG_CONFIG_HOME"); config && *config)
        return std::string(config) + "/lumo/crossover";
    const char* home = secure_getenv("HOME");
    return home ? std::string(home) + "/.config/lumo/crossover" : std::string();
}

// A size, or infinity for "never"; nothing for any other word.
std::optional<double> crossoverFrom(const std::string& word);

// The sizes of a platform's routines. Tells the number of each line that is not one, which it
// skips.
std::map<std::string, double> readCrossovers(std::istream& in, const std::string& platform,
                                             const std::function<void(int)>& complain);

// The PLATFORM of its lines, from what lumoGetDeviceInfo says of a device.
inline std::string platformOf(const std::string& device) {
    return device.rfind("Lumo software device", 0) == 0 ? "software" : "cuda";
}

}  // namespace lumo::dropin
