// Option letters, which callers may give in either case.
#pragma once

#include <cctype>
#include <cstring>

namespace lumo {

inline char upper(char letter) {
    return char(std::toupper(static_cast<unsigned char>(letter)));
}

// Whether an upper-cased letter is among those of `letters`.
inline bool isOneOf(char letter, const char* letters) {
    return letter != '\0' && std::strchr(letters, letter) != nullptr;
}

}  // namespace lumo
