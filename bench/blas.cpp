// The BLAS exports against the CPU BLAS: whole calls of the host interface, on the same data, in
// turn in one run. Columns: `Time` is Lumo's, `cpu` the CPU BLAS's median, `ratio` Lumo's median
// over it.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_blas [--benchmark_filter=...]
#include "contest.h"

int main(int argc, char** argv) {
    for (const char* routine :
         {"sgemm", "dgemm", "cgemm", "zgemm", "ssyrk", "strsm", "strmm", "chemm"})
        bench::add(routine, {{256, 101}, {512, 61}, {1024, 21}, {2048, 9}});
    return bench::runAll(argc, argv);
}
