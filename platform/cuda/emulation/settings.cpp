#include "platform/cuda/emulation/settings.h"

#include <cstdlib>
#include <map>

namespace emulated {
namespace {

std::string word(const char* name, const char* otherwise) {
    const char* value = std::getenv((std::string("EMULATED_GPU_") + name).c_str());
    return value && *value ? value : otherwise;
}
int number(const char* name, const char* otherwise) {
    return std::atoi(word(name, otherwise).c_str());
}

// The place of a word in a list: a word that is not in it ends the run rather than being ignored.
template <class Enum>
Enum oneOf(const char* name, std::initializer_list<const char*> words) {
    const std::string chosen = word(name, *words.begin());
    int place = 0;
    for (const char* known : words) {
        if (chosen == known) return Enum(place);
        ++place;
    }
    std::fprintf(stderr, "EMULATED_GPU_%s=%s is not known\n", name, chosen.c_str());
    std::_Exit(2);
}

}  // namespace

const Settings& settings() {
    static const auto* made = new Settings{
        oneOf<Schedule>("SCHEDULE", {"late", "early", "random"}),
        oneOf<Sequence>("ORDER", {"forward", "reverse", "random"}),
        number("RACES", "1") != 0,
        number("OVERFLOW", "0") != 0,
        number("NOISE", "0") != 0,
        word("DROP", "") == "synchronise",
        std::size_t(number("MEMORY", "4096")) << 20,
        number("DEVICES", "1"),
        number("CAPABILITY", "90"),
        number("FAIL_CODE", "700"),
        word("FAIL", ""),
        word("COUNTS", ""),
    };
    return *made;
}

std::mt19937& randomEngine() {
    static auto* engine = new std::mt19937(unsigned(number("SEED", "1")));
    return *engine;
}

bool failsNow(const char* kind) {
    static auto* seen = new std::map<std::string, int>;
    const std::string& wish = settings().fail;
    const std::string prefix = std::string(kind) + ":";
    if (wish.compare(0, prefix.size(), prefix) != 0) return false;
    return ++(*seen)[kind] == std::atoi(wish.c_str() + prefix.size());
}

}  // namespace emulated
