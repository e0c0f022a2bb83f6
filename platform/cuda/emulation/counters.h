// Counts of what a program asks of the GPU, by the names in control.h.
#pragma once

#include <string>

namespace emulated {

void count(const std::string& name, long long amount = 1);
// For what is not a sum: the largest amount.
void countLargest(const std::string& name, long long amount);

}  // namespace emulated
