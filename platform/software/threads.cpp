#include "platform/software/threads.h"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "platform/blas_threads.h"
#include "platform/software/control.h"

namespace software {
namespace {

// The first numbers of a file; what is no number, as "max", ends them.
bool readNumber(const std::string& file, double& first, double* second = nullptr) {
    std::ifstream in(file);
    return (in >> first) && (!second || in >> *second);
}

// Of one group, 0 for none: version 2 of the interface, else version 1.
double limitOf(const std::string& group) {
    double quota = 0, period = 0;
    const bool known = readNumber(group + "/cpu.max", quota, &period) ||
                       (readNumber(group + "/cpu.cfs_quota_us", quota) &&
                        readNumber(group + "/cpu.cfs_period_us", period));
    return known && quota > 0 && period > 0 ? quota / period : 0;
}

}  // namespace

int controlGroupLimit(const std::string& self, const std::string& root) {
    double least = 0;
    std::ifstream groups(self);
    // "0::/a/b" (version 2) or "4:cpu,cpuacct:/a/b"; a group obeys those above it, too.
    for (std::string line; std::getline(groups, line);) {
        const auto controllers = line.find(':'), path = line.find(':', controllers + 1);
        if (path == std::string::npos) continue;
        const std::string names = line.substr(controllers + 1, path - controllers - 1);
        if (!names.empty() && names.find("cpu") == std::string::npos) continue;
        const std::string mount = names.empty() ? root : (root + "/").append(names);
        for (std::string group = line.substr(path + 1);; group.erase(group.rfind('/'))) {
            const double limit = limitOf(std::string(mount).append(group));
            if (limit > 0 && (least == 0 || limit < least)) least = limit;
            if (group.empty() || group.rfind('/') == std::string::npos) break;
        }
    }
    return least == 0 ? 0 : std::max(1, int(std::lround(least)));
}

// No more than the CPU library would use: who has told it a number means the process.
int threads() {
    static const int count = [] {
        if (const char* wish = std::getenv("LUMO_SOFTWARE_THREADS"))
            if (const int n = std::atoi(wish); n > 0) return n;
        cpu_set_t mine;
        int n = sched_getaffinity(0, sizeof mine, &mine) == 0
                    ? CPU_COUNT(&mine)
                    : int(std::thread::hardware_concurrency());
        for (const int limit : {controlGroupLimit(), platform::blasThreads()})
            if (limit > 0) n = std::min(n, limit);
        return std::max(1, n);
    }();
    return count;
}

}  // namespace software
