// Where the measured crossovers are kept: made by `lumo tune`, read by the drop-in library.
#pragma once

#include <cstdlib>
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

// The PLATFORM of its lines, from what lumoGetDeviceInfo says of a device.
inline std::string platformOf(const std::string& device) {
    return device.rfind("Lumo software device", 0) == 0 ? "software" : "cuda";
}

}  // namespace lumo::dropin
