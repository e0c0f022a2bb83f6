// Words of JSON.
#pragma once

#include <string>

namespace lumo {

inline std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) result += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
    return result + "\"";
}

}  // namespace lumo
