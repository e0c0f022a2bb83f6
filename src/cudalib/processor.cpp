#include "cudalib/processor.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace cudalib {
namespace {

Vectors widest() {
#if defined(__x86_64__)
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma") ||
        !__builtin_cpu_supports("bmi2"))
        return Vectors::baseline;
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512cd") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512vl");
    return avx512 ? Vectors::avx512 : Vectors::avx2;
#else
    return Vectors::baseline;
#endif
}

Vectors wanted() {
    const char* word = std::getenv("LUMO_SOFTWARE_VECTORS");
    const std::string wish = word ? word : "";
    if (wish == "baseline") return Vectors::baseline;
    if (wish == "avx2") return Vectors::avx2;
    if (!wish.empty())
        std::fprintf(stderr, "lumo: LUMO_SOFTWARE_VECTORS is \"baseline\" or \"avx2\"; ignored\n");
    return Vectors::avx512;
}

}  // namespace

Vectors vectors() {
    static const Vectors result = std::min(widest(), wanted());
    return result;
}

}  // namespace cudalib
