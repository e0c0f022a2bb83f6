// The CPU's BLAS by itself. Under the drop-in library a call of sgemm_ would come back to the
// library that is under test: the routines that CUBLAS is made of are taken from the CPU library's
// file, and stand here under their own names, hidden.
#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#define EACH(routine) OF(s##routine) OF(d##routine) OF(c##routine) OF(z##routine)
#define ROTATIONS OF(srot) OF(drot) OF(csrot) OF(zdrot)
#define ON_VECTORS EACH(copy) EACH(swap) EACH(scal) EACH(axpy) ROTATIONS
#define BY_VECTOR EACH(symv) EACH(trmv) EACH(gemv)
#define HERMITIAN OF(chemm) OF(zhemm) OF(cherk) OF(zherk) OF(cher2k) OF(zher2k)
#define SYMMETRIC OF(ssymm) OF(dsymm) OF(ssyr2k) OF(dsyr2k) EACH(syrk)
#define ON_MATRICES EACH(gemm) EACH(trmm) EACH(trsm) SYMMETRIC HERMITIAN
#define ROUTINES ON_VECTORS BY_VECTOR ON_MATRICES

// A jump to where the routine is, so that its arguments need not be known.
#define OF(routine)                                                                 \
    extern "C" {                                                                    \
    [[gnu::used, gnu::visibility("hidden")]] void* hostBlas_##routine;              \
    }                                                                               \
    asm(".text\n\t.globl " #routine "_\n\t.hidden " #routine "_\n\t.type " #routine \
        "_, @function\n" #routine "_:\n\tjmp *hostBlas_" #routine "(%rip)\n");
ROUTINES
#undef OF

namespace {

// HOST_BLAS: files, separated by colons; a routine is taken from the first that has it.
void* find(const char* name) {
    const std::string files = HOST_BLAS;
    for (std::size_t begin = 0; begin < files.size();) {
        const std::size_t end = std::min(files.find(':', begin), files.size());
        void* library =
            dlopen(files.substr(begin, end - begin).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
        if (void* routine = library ? dlsym(library, name) : nullptr) return routine;
        begin = end + 1;
    }
    std::fprintf(stderr, "emulated GPU: %s has no %s\n", HOST_BLAS, name);
    std::abort();
}

struct Finder {
    Finder() {
#define OF(routine) hostBlas_##routine = find(#routine "_");
        ROUTINES
    }
} finder;

}  // namespace
