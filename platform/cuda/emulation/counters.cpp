#include "platform/cuda/emulation/counters.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "platform/cuda/emulation/control.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/settings.h"

namespace emulated {
namespace {

std::map<std::string, long long>& counts() {
    static auto* instance = new std::map<std::string, long long>;
    return *instance;
}

struct AtExit {
    ~AtExit() {
        const std::string& file = settings().counts;
        if (file.empty() || counts().empty()) return;
        std::FILE* out = file == "-" ? stderr : std::fopen(file.c_str(), "a");
        if (!out) return;
        for (const auto& [name, n] : counts()) std::fprintf(out, "%12lld %s\n", n, name.c_str());
        if (out != stderr) std::fclose(out);
    }
} atExit;

}  // namespace

void count(const std::string& name, long long amount) {
    counts()[name] += amount;
}

void countLargest(const std::string& name, long long amount) {
    long long& largest = counts()[name];
    largest = std::max(largest, amount);
}

}  // namespace emulated

extern "C" long long emulatedGpuCount(const char* name) {
    const emulated::Call call;
    auto it = emulated::counts().find(name);
    return it == emulated::counts().end() ? 0 : it->second;
}
