// The other drivers of LAPACK's for symmetric and Hermitian eigenproblems, by Lumo's syevd and
// heevd: routines that Lumo has not, described like those that it has.
#pragma once

#include <algorithm>
#include <cmath>

#include "common/matrix.h"
#include "lapack/syevd.h"
#include "platform/element_types.h"
#include "routine/c_interface.h"

namespace lumo::dropin {

// xSYEV, xHEEV: the arguments are those of xSYEVD, but for the workspaces.
template <class T>
struct Syev : Syevd<T> {};

// xSYEVR, xHEEVR, where all eigenvalues are wanted.
template <class T>
struct Syevr {
    char jobz, range, uplo;
    int n;
    T* a;
    int lda;
    RealOf<T> vl, vu;  // of other ranges, as the next
    int il, iu;
    RealOf<T> abstol;
    int* m;
    RealOf<T>* w;
    T* z;
    int ldz;
    int* isuppz;

    template <class F>
    auto arguments(F f) const {
        return f(jobz, range, uplo, n, a, lda, vl, vu, il, iu, abstol, m, w, z, ldz, isuppz);
    }
    // Which one it is, the CPU library says.
    int badArgument() {
        Syevd<T> all{jobz, uplo, n, a, lda, w};
        const int bad = all.badArgument();
        jobz = all.jobz;
        uplo = all.uplo;
        if (bad || upper(range) != 'A' || std::isnan(abstol)) return 1;
        if (ldz < std::max(1, vectors() ? n : 1)) return 1;
        return empty() || (m && (!vectors() || (z && isuppz))) ? 0 : 1;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        const Access ofVectors = vectors() ? Access::out : Access::none;
        return f(factorized(a, lda, n, n, vectors() ? Access::inOut : Access::scratch),
                 adjacent(m, 1, Access::out), adjacent(w, n, Access::out),
                 matrix(z, ldz, n, n, ofVectors), adjacent(isuppz, 2 * n, ofVectors));
    }

  private:
    bool vectors() const { return jobz == 'V'; }
};

// Leaves the vectors in A as well, which LAPACK destroys. None of them is known to have zeros.
template <class T, class Element = decltype(external(T())), class Real = RealOf<T>>
lumoStatus syevr(char jobz, char, char uplo, int n, Element* a, int lda, Real, Real, int, int, Real,
                 int* m, Real* w, Element* z, int ldz, int* isuppz) {
    constexpr auto syevd = platform::ofType<T>(&lumoSsyevd, &lumoDsyevd, &lumoCheevd, &lumoZheevd);
    const lumoStatus status = syevd(jobz, uplo, n, a, lda, w);
    if (status != lumoNoError) return status;
    *m = n;
    for (int j = 0; j < n && jobz == 'V'; ++j) {
        std::copy_n(at(a, lda, 0, j), n, at(z, ldz, 0, j));
        isuppz[2 * j] = 1;
        isuppz[2 * j + 1] = n;
    }
    return status;
}

}  // namespace lumo::dropin
