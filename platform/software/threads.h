// How many threads the software device has.
#pragma once

#include <string>

namespace software {

// The processors' worth of time that the control groups of the process allow, rounded; 0 for no
// limit. `self` is its /proc/self/cgroup, `root` where the groups are mounted.
int controlGroupLimit(const std::string& self = "/proc/self/cgroup",
                      const std::string& root = "/sys/fs/cgroup");

}  // namespace software
