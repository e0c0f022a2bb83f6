// Plays the BLAS that a package of Python brings along: computes nothing, but tells whose it is.
#include <cstdint>

using Long = std::int64_t;
constexpr int mark = 1000 + LUMO_WHEEL;

extern "C" {
#pragma GCC visibility push(default)
void scipy_sgesv_(int*, int*, float*, int*, int*, float*, int*, int* info) {
    *info = mark;
}
void scipy_sgesv_64_(Long*, Long*, float*, Long*, Long*, float*, Long*, Long* info) {
    *info = mark;
}
Long scipy_LAPACKE_sgesv64_(int, Long n, Long nrhs, float* a, Long lda, Long* p, float* b,
                            Long ldb) {
    Long info = 0;
    scipy_sgesv_64_(&n, &nrhs, a, &lda, p, b, &ldb, &info);
    return info;
}
void scipy_cblas_sgemm64_(int, int, int, Long, Long, Long, float, const float*, Long, const float*,
                          Long, float, float* c, Long) {
    *c = mark;
}
#pragma GCC visibility pop
}
