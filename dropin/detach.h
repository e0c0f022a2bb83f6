// Keeps the CPU library's and Lumo's own calls out of the symbols that are taken over.
#pragma once

namespace lumo::dropin {

// Lumo calls the CPU library by name (sgetrf_ for a panel, sgemm_ on the software device), and the
// CPU library calls itself so (sgemm_ in its sgetrf_). The dynamic linker would bind these calls to
// this library, being the first in the process to have the name: a call would come back round, and
// from any thread. So their entries in the tables of the dynamic linker, in liblumo.so and in every
// library that itself defines a name of ours, are set to the CPU library's functions.
//
// It is done for the names of ours and nothing else: the CPU library's calls of XERBLA and ILAENV
// still find the program's, as LAPACK allows. A private copy of the CPU library, or one that looks
// up names in itself first (RTLD_DEEPBIND), would lose that, and bring a second set of threads.
//
// Done as the process starts, and again when libraries have been loaded since; cheap if not. False
// if it cannot be done: then nothing must be served.
bool detach();

}  // namespace lumo::dropin
