// What the processor has that kernels are compiled for, beside baseline x86-64.
#pragma once

namespace cudalib {

// AVX2 and FMA: x86-64-v3.
inline bool hasV3() {
#if defined(__x86_64__)
    static const bool yes = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                            __builtin_cpu_supports("bmi2");
    return yes;
#else
    return false;
#endif
}

// AVX-512 as well: x86-64-v4.
inline bool hasV4() {
#if defined(__x86_64__)
    static const bool yes =
        hasV3() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512cd") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl");
    return yes;
#else
    return false;
#endif
}

}  // namespace cudalib
