// An extension as Python loads them, linked with the BLAS that it brings along (wheel_blas.cpp).
#include <cstdint>

#include "checks.h"

using Long = std::int64_t;
constexpr int mark = 1000 + LUMO_WHEEL;

extern "C" {
void scipy_sgesv_(const int*, const int*, float*, const int*, int*, float*, const int*, int*);
void scipy_sgesv_64_(const Long*, const Long*, float*, const Long*, Long*, float*, const Long*,
                     Long*);
Long scipy_LAPACKE_sgesv64_(int, Long, Long, float*, Long, Long*, float*, Long);
void scipy_cblas_sgemm64_(int, int, int, Long, Long, Long, float, const float*, Long, const float*,
                          Long, float, float*, Long);
}

namespace {

template <class Integer, class Routine>
void solve(Routine* gesv) {
    const Integer n = 40, one = 1, beyond = Integer((Long(1) << 32) + n);
    const auto a = noise<float>(n * n), b = noise<float>(n);
    auto factors = a, x = b;
    std::vector<Integer> ipiv(n, -7);
    Integer info = -99;
    gesv(&n, &one, factors.data(), &n, ipiv.data(), x.data(), &n, &info);
    CHECK(info == 0 && residual(int(n), a, x, b) < 30);
    for (Integer i = 0; i < n; ++i) CHECK(ipiv[i] > i && ipiv[i] <= n);
    // A singular matrix is this package's BLAS's, and so are sizes beyond 32 bits.
    factors.assign(n * n, 0);
    ipiv.assign(n, -7);
    gesv(&n, &one, factors.data(), &n, ipiv.data(), x.data(), &n, &info);
    CHECK(info == mark);
    if (sizeof n == 4) return;
    CHECK(ipiv == std::vector<Integer>(n, -7));
    info = 0;
    gesv(&beyond, &one, factors.data(), &beyond, ipiv.data(), x.data(), &beyond, &info);
    CHECK(info == mark);
}

}  // namespace

extern "C" [[gnu::visibility("default")]] int useWheel() {
    solve<int>(scipy_sgesv_);
    solve<Long>(scipy_sgesv_64_);
    float a[] = {2, 1, 2, 5}, b[] = {4, 12}, c = 0;  // by rows: 2 x + y = 4, 2 x + 5 y = 12
    Long ipiv[2];
    CHECK(scipy_LAPACKE_sgesv64_(101, 2, 1, a, 2, ipiv, b, 1) == 0 && b[0] == 1 && b[1] == 2);
    scipy_cblas_sgemm64_(101, 111, 111, 1, 1, 1, 3, b, 1, b + 1, 1, 0, &c, 1);
    CHECK(c == 6);
    std::fill_n(a, 4, 0);
    CHECK(scipy_LAPACKE_sgesv64_(101, 2, 1, a, 2, ipiv, b, 1) == mark);
    return failures;
}
