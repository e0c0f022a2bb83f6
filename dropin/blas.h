// What the drop-in library knows of the BLAS routines beside their descriptions: see serve.h. A
// transpose() turns the arguments of a row-major call into those of a column-major one with the
// same effect, as the CBLAS of the reference does it.
//
// Where alpha or the inner size is zero the operands behind it are not to be read, and there is
// nothing to gain: these calls are passed on like those with bad arguments.
#pragma once

#include <cmath>
#include <utility>

#include "blas/gemm.h"
#include "blas/gemv.h"
#include "blas/symm.h"
#include "blas/syr2k.h"
#include "blas/syrk.h"
#include "blas/triangular.h"
#include "dropin/c.h"
#include "dropin/fortran.h"

namespace lumo::dropin {

inline void swapSides(char& side) {
    side = side == 'L' ? 'R' : side == 'R' ? 'L' : side;
}
inline void swapTriangles(char& uplo) {
    uplo = uplo == 'U' ? 'L' : uplo == 'L' ? 'U' : uplo;
}
// To the letter for the transpose of what a letter stands for.
inline void swapWays(char& trans, char transposed) {
    trans = trans == 'N' ? transposed : trans == 'T' || trans == 'C' ? 'N' : trans;
}

inline double geometricMean(double m, double n, double k) {
    return std::cbrt(m * n * k);
}

template <class T>
struct Rules<Gemm<T>> : UsualRules {
    using Routine = Gemm<T>;
    static bool worthwhile(const Routine& r) { return r.k > 0 && !(r.alpha == T(0)); }
    static double size(const Routine& r) { return geometricMean(r.m, r.n, r.k); }
    static void transpose(Routine& r) {
        std::swap(r.transa, r.transb);
        std::swap(r.m, r.n);
        std::swap(r.a, r.b);
        std::swap(r.lda, r.ldb);
    }
};

template <class T>
struct Rules<Gemv<T>> : UsualRules {
    using Routine = Gemv<T>;
    static bool worthwhile(const Routine& r) {
        return r.m > 0 && r.n > 0 && r.incx != 0 && r.incy != 0 && !(r.alpha == T(0));
    }
    static double size(const Routine& r) { return std::sqrt(double(r.m) * r.n); }
    static void transpose(Routine& r) {
        // There is no letter for the conjugate of a matrix that is not transposed.
        if (isComplex<T> && r.trans == 'C')
            r.trans = '?';
        else
            swapWays(r.trans, 'T');
        std::swap(r.m, r.n);
    }
};

// What has a symmetric or triangular matrix on one side of another.
template <class R>
struct SidedRules : UsualRules {
    using Routine = R;
    static bool worthwhile(const R& r) { return !(r.alpha == decltype(r.alpha)(0)); }
    static double size(const R& r) { return geometricMean(r.m, r.n, r.side == 'L' ? r.m : r.n); }
    static void transpose(R& r) {
        swapSides(r.side);
        swapTriangles(r.uplo);
        std::swap(r.m, r.n);
    }
};
template <class T>
struct Rules<Symm<T>> : SidedRules<Symm<T>> {};
template <class T, Triangular kind>
struct Rules<TriangularOperation<T, kind>> : SidedRules<TriangularOperation<T, kind>> {};

// What updates one triangle by products with a transpose.
template <class R, char letter>
struct UpdateRules : UsualRules {
    using Routine = R;
    static bool worthwhile(const R& r) { return r.k > 0 && !(r.alpha == decltype(r.alpha)(0)); }
    static double size(const R& r) { return geometricMean(r.n, r.n, r.k); }
    static void transpose(R& r) {
        swapTriangles(r.uplo);
        swapWays(r.trans, letter);
    }
};
template <class T, class Scalar, char letter>
struct Rules<RankUpdate<T, Scalar, letter>> : UpdateRules<RankUpdate<T, Scalar, letter>, letter> {};
template <class T, class Beta, char letter>
struct Rules<Rank2Update<T, Beta, letter>> : UpdateRules<Rank2Update<T, Beta, letter>, letter> {
    static void transpose(Rank2Update<T, Beta, letter>& r) {
        UpdateRules<Rank2Update<T, Beta, letter>, letter>::transpose(r);
        r.alpha = conjugate(r.alpha);
    }
};

}  // namespace lumo::dropin
