// The routines that a command line names.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo {

// Those of `all` that are named, each once, or all of them. Throws a std::runtime_error that lists
// them for a name that none has.
template <class Routine>
std::vector<Routine> choose(const std::vector<Routine>& all,
                            const std::vector<std::string>& names) {
    if (names.empty()) return all;
    std::vector<Routine> routines;
    for (const std::string& name : names) {
        const auto isIt = [&](const Routine& r) { return r.name == name; };
        if (std::any_of(routines.begin(), routines.end(), isIt)) continue;
        const auto found = std::find_if(all.begin(), all.end(), isIt);
        if (found == all.end()) {
            std::string refusal = name + " is not measured; these are:";
            for (const Routine& r : all) refusal += " " + r.name;
            throw std::runtime_error(refusal);
        }
        routines.push_back(*found);
    }
    return routines;
}

}  // namespace lumo
