// Plays a package of Python's: with LUMO_EXTENSION its extension, without the BLAS that it brings
// along, which computes nothing and tells whose it is.
#include <cstdint>

using Long = std::int64_t;
constexpr int mark = 1000 + LUMO_WHEEL;

#pragma GCC visibility push(default)
extern "C" {
#ifndef LUMO_EXTENSION
using P = void*;
void scipy_sgesv_(P, P, P, P, P, P, P, int* info) {
    *info = mark;
}
void scipy_sgesv_64_(P, P, P, P, P, P, P, Long* info) {
    *info = mark;
}
// Were its call to go round, it would find no arguments.
Long scipy_LAPACKE_sgesv64_(int, Long, Long, P, Long, P, P, Long) {
    Long info = 0;
    scipy_sgesv_64_(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &info);
    return info;
}
void scipy_cblas_sgemm64_(int, int, int, Long, Long, Long, float, P, Long, P, Long, float, float* c,
                          Long) {
    *c = mark;
}
}
#else
void scipy_sgesv_(const int*, const int*, float*, const int*, int*, float*, const int*, int*);
void scipy_sgesv_64_(const Long*, const Long*, float*, const Long*, Long*, float*, const Long*,
                     Long*);
Long scipy_LAPACKE_sgesv64_(int, Long, Long, float*, Long, Long*, float*, Long);
void scipy_cblas_sgemm64_(int, int, int, Long, Long, Long, float, const float*, Long, const float*,
                          Long, float, float*, Long);
int wrongLine();  // of a check that failed, or 0
}
#define LUMO_CHECK(condition) \
    if (!(condition)) return __LINE__

template <class Integer, class Routine>
int wrongLineOfSolving(Routine* gesv) {
    const Integer n = 2, one = 1, beyond = Integer((Long(1) << 32) + 2);
    float a[] = {1, 2, 1, 6}, b[] = {3, 14}, again[] = {1, 2, 1, 6}, zeros[4] = {};
    Integer ipiv[] = {-7, -7}, info = -99;
    gesv(&n, &one, a, &n, ipiv, b, &n, &info);
    LUMO_CHECK(info == 0 && b[0] == 1 && b[1] == 2 && ipiv[0] == 2 && ipiv[1] == 2);
    // Singular matrices, and sizes beyond 32 bits, are this package's BLAS's, as they were.
    ipiv[0] = -7;
    gesv(&n, &one, zeros, &n, ipiv, b, &n, &info);
    LUMO_CHECK(info == mark && (sizeof n == 4 || ipiv[0] == -7));
    if (sizeof n == 4) return 0;
    info = 0;
    gesv(&beyond, &one, again, &beyond, ipiv, b, &beyond, &info);
    LUMO_CHECK(info == mark);
    return 0;
}

int wrongLine() {
    if (const int line = wrongLineOfSolving<int>(scipy_sgesv_)) return line;
    if (const int line = wrongLineOfSolving<Long>(scipy_sgesv_64_)) return line;
    float a[] = {2, 1, 2, 5}, b[] = {4, 12}, zeros[4] = {}, c[4];  // by rows
    Long ipiv[2];
    LUMO_CHECK(scipy_LAPACKE_sgesv64_(101, 2, 1, a, 2, ipiv, b, 1) == 0 && b[0] == 1 && b[1] == 2);
    LUMO_CHECK(scipy_LAPACKE_sgesv64_(101, 2, 1, zeros, 2, ipiv, b, 1) == mark);
    const float u[] = {1, 2}, v[] = {3, 4};
    for (int rows = 0; rows < 2; ++rows) {
        scipy_cblas_sgemm64_(102 - rows, 111, 111, 2, 2, 1, 1, u, 2 - rows, v, 1 + rows, 0, c, 2);
        LUMO_CHECK(c[1] == (rows ? 4 : 6));
    }
    return 0;
}
#endif
