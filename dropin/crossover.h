// From which size on Lumo serves a routine.
#pragma once

#include <string>

namespace lumo::dropin {

// The size of a call is that of the square problem with as much work: the cube root of m n k for a
// product of m x k by k x n, and of the like for every other routine; the square root of m n for
// gemv.
//
// `routine` is the name of the Fortran routine without the underscore, as "sgemm"; syev and syevr
// have the size of syevd, which does their work. Infinite where Lumo never serves it. In this
// order:
// - LUMO_CROSSOVER, a size or "never", for every routine;
// - a line "PLATFORM ROUTINE SIZE" of the file (crossover_file.h); PLATFORM is "software" or
//   "cuda", SIZE a size or "never", and what follows a # is a comment;
// - never on the software device; on a GPU the guesses in crossover.cpp.
double crossoverOf(const std::string& routine);

// Whether calls of this size are worth asking at all. To ask is to load the GPU's libraries, up to
// half a second, which small programs shall not pay for.
bool worthAsking(double size);

}  // namespace lumo::dropin
