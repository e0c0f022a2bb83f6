// Which of the versions that kernels are compiled in a processor runs.
#pragma once

namespace cudalib {

// For baseline x86-64; with AVX2 and FMA (x86-64-v3); with AVX-512 (x86-64-v4).
enum class Vectors { baseline, avx2, avx512 };

// The widest that this processor has, or less if LUMO_SOFTWARE_VECTORS says so.
Vectors vectors();

}  // namespace cudalib
