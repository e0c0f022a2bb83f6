// The BLAS routines that Lumo serves: see serve.h for the members. A transpose() turns the
// arguments of a row-major call into those of a column-major one with the same effect, as the CBLAS
// of the reference does it.
//
// Where alpha or the inner size is zero the operands behind it are not to be read, and there is
// nothing to gain: these calls are passed on like those with bad arguments.
#pragma once

#include "dropin/entries.h"

namespace lumo::dropin {

inline char otherSide(char side) {
    return side == 'L' ? 'R' : side == 'R' ? 'L' : side;
}
inline char otherTriangle(char uplo) {
    return uplo == 'U' ? 'L' : uplo == 'L' ? 'U' : uplo;
}
// The letter for the transpose of what a letter stands for.
inline char otherWay(char trans, char transposed) {
    return trans == 'N' ? transposed : trans == 'T' || trans == 'C' ? 'N' : trans;
}

inline double geometricMean(double m, double n, double k) {
    return std::cbrt(m * n * k);
}

template <class T>
struct Gemm {
    using Type = T;
    static constexpr const char* name = "gemm";
    static constexpr auto lumo = pick<T>(lumoSgemm, lumoDgemm, lumoCgemm, lumoZgemm);
    char transa, transb;
    int m, n, k;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    bool servable() const {
        return isOneOf(transa, "NTC") && isOneOf(transb, "NTC") && m > 0 && n > 0 && k > 0 &&
               lda >= (transa == 'N' ? m : k) && ldb >= (transb == 'N' ? k : n) && ldc >= m &&
               !isZero(alpha);
    }
    double size() const { return geometricMean(m, n, k); }
    lumoStatus run() const {
        return lumo(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    }
    void results(Results& r) const {
        isZero(beta) ? r.writes(c, m, n, ldc) : r.overwrites(c, m, n, ldc);
    }
    void transpose() {
        std::swap(transa, transb);
        std::swap(m, n);
        std::swap(a, b);
        std::swap(lda, ldb);
    }
};

template <class T>
struct Gemv {
    using Type = T;
    static constexpr const char* name = "gemv";
    static constexpr auto lumo = pick<T>(lumoSgemv, lumoDgemv, lumoCgemv, lumoZgemv);
    char trans;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    const T* x;
    int incx;
    T beta;
    T* y;
    int incy;

    bool servable() const {
        return isOneOf(trans, "NTC") && m > 0 && n > 0 && lda >= m && incx != 0 && incy != 0 &&
               !isZero(alpha);
    }
    double size() const { return std::sqrt(double(m) * n); }
    lumoStatus run() const { return lumo(trans, m, n, alpha, a, lda, x, incx, beta, y, incy); }
    void results(Results& r) const {
        const int count = trans == 'N' ? m : n, step = std::abs(incy);
        isZero(beta) ? r.writes(y, 1, count, step) : r.overwrites(y, 1, count, step);
    }
    void transpose() {
        // There is no letter for the conjugate of a matrix that is not transposed.
        trans = isComplex<T> && trans == 'C' ? '?' : otherWay(trans, 'T');
        std::swap(m, n);
    }
};

// symm for real elements, hemm for complex ones.
template <class T>
struct Symm {
    using Type = T;
    static constexpr const char* name = isComplex<T> ? "hemm" : "symm";
    static constexpr auto lumo = pick<T>(lumoSsymm, lumoDsymm, lumoChemm, lumoZhemm);
    char side, uplo;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    int order() const { return side == 'L' ? m : n; }
    bool servable() const {
        return isOneOf(side, "LR") && isOneOf(uplo, "UL") && m > 0 && n > 0 && lda >= order() &&
               ldb >= m && ldc >= m && !isZero(alpha);
    }
    double size() const { return geometricMean(m, n, order()); }
    lumoStatus run() const { return lumo(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc); }
    void results(Results& r) const {
        isZero(beta) ? r.writes(c, m, n, ldc) : r.overwrites(c, m, n, ldc);
    }
    void transpose() {
        side = otherSide(side);
        uplo = otherTriangle(uplo);
        std::swap(m, n);
    }
};

// syrk, and where `hermitian` herk, whose scalars are real.
template <class T, bool hermitian>
struct Syrk {
    using Type = T;
    using Scalar = std::conditional_t<hermitian, RealOf<T>, T>;
    static constexpr const char* name = hermitian ? "herk" : "syrk";
    static constexpr const char* letters = hermitian ? "NC" : isComplex<T> ? "NT" : "NTC";
    static constexpr auto function() {
        if constexpr (hermitian)
            return pick<T>(nullptr, nullptr, lumoCherk, lumoZherk);
        else
            return pick<T>(lumoSsyrk, lumoDsyrk, lumoCsyrk, lumoZsyrk);
    }
    static constexpr auto lumo = function();
    char uplo, trans;
    int n, k;
    Scalar alpha;
    const T* a;
    int lda;
    Scalar beta;
    T* c;
    int ldc;

    bool servable() const {
        return isOneOf(uplo, "UL") && isOneOf(trans, letters) && n > 0 && k > 0 &&
               lda >= (trans == 'N' ? n : k) && ldc >= n && !isZero(alpha);
    }
    double size() const { return geometricMean(n, n, k); }
    lumoStatus run() const { return lumo(uplo, trans, n, k, alpha, a, lda, beta, c, ldc); }
    void results(Results& r) const { r.overwritesTriangle(c, n, ldc, !isZero(beta)); }
    void transpose() {
        uplo = otherTriangle(uplo);
        trans = otherWay(trans, hermitian ? 'C' : 'T');
    }
};

// syr2k for real elements, her2k for complex ones, whose beta is real.
template <class T>
struct Syr2k {
    using Type = T;
    static constexpr const char* name = isComplex<T> ? "her2k" : "syr2k";
    static constexpr const char* letters = isComplex<T> ? "NC" : "NTC";
    static constexpr auto lumo = pick<T>(lumoSsyr2k, lumoDsyr2k, lumoCher2k, lumoZher2k);
    char uplo, trans;
    int n, k;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    RealOf<T> beta;
    T* c;
    int ldc;

    bool servable() const {
        const int rows = trans == 'N' ? n : k;
        return isOneOf(uplo, "UL") && isOneOf(trans, letters) && n > 0 && k > 0 && lda >= rows &&
               ldb >= rows && ldc >= n && !isZero(alpha);
    }
    double size() const { return geometricMean(n, n, k); }
    lumoStatus run() const { return lumo(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc); }
    void results(Results& r) const { r.overwritesTriangle(c, n, ldc, !isZero(beta)); }
    void transpose() {
        uplo = otherTriangle(uplo);
        trans = otherWay(trans, isComplex<T> ? 'C' : 'T');
        alpha = conjugated(alpha);
    }
};

// trmm, and where `solves` trsm.
template <class T, bool solves>
struct Triangular {
    using Type = T;
    static constexpr const char* name = solves ? "trsm" : "trmm";
    static constexpr auto lumo = solves ? pick<T>(lumoStrsm, lumoDtrsm, lumoCtrsm, lumoZtrsm)
                                        : pick<T>(lumoStrmm, lumoDtrmm, lumoCtrmm, lumoZtrmm);
    char side, uplo, transa, diag;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    T* b;
    int ldb;

    int order() const { return side == 'L' ? m : n; }
    bool servable() const {
        return isOneOf(side, "LR") && isOneOf(uplo, "UL") && isOneOf(transa, "NTC") &&
               isOneOf(diag, "NU") && m > 0 && n > 0 && lda >= order() && ldb >= m &&
               !isZero(alpha);
    }
    double size() const { return geometricMean(m, n, order()); }
    lumoStatus run() const { return lumo(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb); }
    void results(Results& r) const { r.overwrites(b, m, n, ldb); }
    void transpose() {
        side = otherSide(side);
        uplo = otherTriangle(uplo);
        std::swap(m, n);
    }
};

}  // namespace lumo::dropin
