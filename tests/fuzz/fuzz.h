// What the fuzzers share.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// libFuzzer keeps the input of a program that aborts.
inline void require(bool good, const std::string& what) {
    if (good) return;
    std::fprintf(stderr, "not so: %s\n", what.c_str());
    std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
