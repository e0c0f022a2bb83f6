// The LAPACK routines that Lumo serves: see serve.h for the members. Data that are not finite are
// the CPU library's, and so are those that it would scale.
#pragma once

#include <limits>

#include "dropin/blas.h"

namespace lumo::dropin {

template <class T>
struct Getrf {
    using Type = T;
    static constexpr const char* name = "getrf";
    static constexpr auto lumo = pick<T>(lumoSgetrf, nullptr, lumoCgetrf, nullptr);
    int m, n;
    T* a;
    int lda;
    int* ipiv;

    bool servable() const { return m > 0 && n > 0 && lda >= m; }
    double size() const { return geometricMean(m, n, std::min(m, n)); }
    lumoStatus run() const { return lumo(m, n, a, lda, ipiv); }
    void results(Results& r) const {
        r.overwrites(a, m, n, lda);
        r.writes(ipiv, std::min(m, n), 1, m);
    }
};
template <class T>
bool dataSuit(const Getrf<T>& r) {
    return isFinite(r.a, r.m, r.n, r.lda);
}

template <class T>
struct Gesv {
    using Type = T;
    static constexpr const char* name = "gesv";
    static constexpr auto lumo = pick<T>(lumoSgesv, nullptr, lumoCgesv, nullptr);
    int n, nrhs;
    T* a;
    int lda;
    int* ipiv;
    T* b;
    int ldb;

    bool servable() const { return n > 0 && nrhs > 0 && lda >= n && ldb >= n; }
    double size() const { return geometricMean(n, n, n); }
    lumoStatus run() const { return lumo(n, nrhs, a, lda, ipiv, b, ldb); }
    void results(Results& r) const {
        r.overwrites(a, n, n, lda);
        r.overwrites(b, n, nrhs, ldb);
        r.writes(ipiv, n, 1, n);
    }
};
template <class T>
bool dataSuit(const Gesv<T>& r) {
    return isFinite(r.a, r.n, r.n, r.lda) && isFinite(r.b, r.n, r.nrhs, r.ldb);
}

template <class T>
struct Geqrf {
    using Type = T;
    static constexpr const char* name = "geqrf";
    static constexpr auto lumo = pick<T>(lumoSgeqrf, nullptr, lumoCgeqrf, nullptr);
    int m, n;
    T* a;
    int lda;
    T* tau;

    bool servable() const { return m > 0 && n > 0 && lda >= m; }
    int leastWork() const { return n; }
    double size() const { return geometricMean(m, n, std::min(m, n)); }
    lumoStatus run() const { return lumo(m, n, a, lda, tau); }
    void results(Results& r) const {
        r.overwrites(a, m, n, lda);
        r.writes(tau, std::min(m, n), 1, m);
    }
};
template <class T>
bool dataSuit(const Geqrf<T>& r) {
    return isFinite(r.a, r.m, r.n, r.lda);
}

template <class T>
struct Gels {
    using Type = T;
    static constexpr const char* name = "gels";
    static constexpr auto lumo = pick<T>(lumoSgels, nullptr, lumoCgels, nullptr);
    char trans;
    int m, n, nrhs;
    T* a;
    int lda;
    T* b;
    int ldb;

    bool servable() const {
        return isOneOf(trans, isComplex<T> ? "NC" : "NT") && m > 0 && n > 0 && nrhs > 0 &&
               lda >= m && ldb >= std::max(m, n);
    }
    int leastWork() const { return std::min(m, n) + std::max({m, n, nrhs}); }
    double size() const { return geometricMean(m, n, std::min(m, n)); }
    lumoStatus run() const { return lumo(trans, m, n, nrhs, a, lda, b, ldb); }
    void results(Results& r) const {
        r.overwrites(a, m, n, lda);
        r.overwrites(b, std::max(m, n), nrhs, ldb);
    }
};
// Whether a matrix is one that a driver with these bounds neither scales nor has a short answer
// for. The largest part may be less than the largest modulus, but not less than half of it.
template <class Real>
bool needsNoScaling(Real largest, Real small) {
    return largest >= small && largest <= 1 / (2 * small);
}
// xGELS scales A, and the part of B that it reads, from SAFMIN / EPS on; a B of zeros it leaves.
template <class T>
bool dataSuit(const Gels<T>& r) {
    using Limits = std::numeric_limits<RealOf<T>>;
    constexpr RealOf<T> small = Limits::min() / Limits::epsilon();
    const auto b = largest(r.b, r.trans == 'N' ? r.m : r.n, r.nrhs, r.ldb);
    return needsNoScaling(largest(r.a, r.m, r.n, r.lda), small) &&
           (b == 0 || needsNoScaling(b, small));
}

template <class T>
struct Gglse {
    using Type = T;
    static constexpr const char* name = "gglse";
    static constexpr auto lumo = pick<T>(lumoSgglse, nullptr, lumoCgglse, nullptr);
    int m, n, p;
    T* a;
    int lda;
    T* b;
    int ldb;
    T *c, *d, *x;

    bool servable() const {
        return m > 0 && n > 0 && p > 0 && p <= n && n <= m + p && lda >= m && ldb >= p;
    }
    int leastWork() const { return m + n + p; }
    double size() const { return geometricMean(double(m) + p, n, n); }
    lumoStatus run() const { return lumo(m, n, p, a, lda, b, ldb, c, d, x); }
    void results(Results& r) const {
        r.overwrites(a, m, n, lda);
        r.overwrites(b, p, n, ldb);
        r.overwrites(c, m, 1, m);
        r.overwrites(d, p, 1, p);
        r.writes(x, n, 1, n);
    }
};
template <class T>
bool dataSuit(const Gglse<T>& r) {
    return isFinite(r.a, r.m, r.n, r.lda) && isFinite(r.b, r.p, r.n, r.ldb) &&
           isFinite(r.c, r.m, 1, r.m) && isFinite(r.d, r.p, 1, r.p);
}

}  // namespace lumo::dropin
