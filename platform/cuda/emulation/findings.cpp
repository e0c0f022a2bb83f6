#include "platform/cuda/emulation/findings.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <set>
#include <string>

#include "platform/cuda/emulation/control.h"
#include "platform/cuda/emulation/errors.h"

namespace emulated {
namespace {

constexpr const char* names[] = {"memory",   "uninitialised", "race",    "barrier",
                                 "exchange", "overflow",      "operand", "copy",
                                 "stream",   "launch",        "device"};
constexpr long long toldAtMost = 40;
constexpr int exitStatus = 86;

long long counts[std::size(names)];

long long total() {
    long long sum = 0;
    for (long long n : counts) sum += n;
    return sum;
}

std::set<std::string>& told() {
    static auto* set = new std::set<std::string>;
    return *set;
}

struct AtExit {
    ~AtExit() {
        if (total() == 0) return;
        std::fprintf(stderr, "emulated GPU: %lld faults were found\n", total());
        std::fflush(nullptr);
        std::_Exit(exitStatus);
    }
} atExit;

}  // namespace

void found(Kind kind, const char* format, ...) {
    ++counts[int(kind)];
    if (total() > toldAtMost) return;
    char text[1024];
    va_list list;
    va_start(list, format);
    std::vsnprintf(text, sizeof text, format, list);
    va_end(list);
    std::fprintf(stderr, "emulated GPU: %s: %s\n", names[int(kind)], text);
}

bool firstTime(Kind kind, const char* where, const char* what) {
    return told().insert(std::string(names[int(kind)]) + " " + where + " " + what).second;
}

}  // namespace emulated

extern "C" long long emulatedGpuFindings(const char* kind) {
    using namespace emulated;
    if (!kind) return total();
    for (std::size_t i = 0; i < std::size(names); ++i)
        if (std::string(kind) == names[i]) return counts[i];
    return -1;
}

extern "C" void emulatedGpuForgive() {
    using namespace emulated;
    for (long long& n : counts) n = 0;
    told().clear();
    forgetErrors();
}
