#include "platform/timeline/machines.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace timeline {
namespace {

struct Text {
    const char *name, *text;
};
constexpr Text texts[] = {
#include "machine_texts.inc"
};

}  // namespace

std::vector<std::string> machineNames() {
    std::vector<std::string> names;
    for (const Text& t : texts) names.emplace_back(t.name);
    return names;
}

Machine machineOf(const std::string& nameOrFile) {
    for (const Text& t : texts)
        if (nameOrFile == t.name) return readMachine(nameOrFile + ".ini", t.text);
    std::ifstream in(nameOrFile, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), {}};
    if (!in.is_open() || in.bad()) {
        std::string refusal =
            nameOrFile + " is neither a machine's name nor a file; the names are:";
        for (const Text& t : texts) refusal += std::string(" ") + t.name;
        throw std::runtime_error(refusal);
    }
    return readMachine(nameOrFile, text);
}

}  // namespace timeline
