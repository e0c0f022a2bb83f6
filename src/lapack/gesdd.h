// Singular value decomposition by divide and conquer (LAPACK xGESDD).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

template <class T>
struct Gesdd {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char jobz;
    int m, n;
    T* a;
    int lda;
    RealOf<T>* s;
    T* u;
    int ldu;
    T* vt;
    int ldvt;

    template <class F>
    auto arguments(F f) const {
        return f(jobz, m, n, a, lda, s, u, ldu, vt, ldvt);
    }
    int badArgument() {
        jobz = upper(jobz);
        if (!isOneOf(jobz, "ASON")) return 1;
        if (m < 0) return 2;
        if (n < 0) return 3;
        if (lda < std::max(1, m)) return 5;
        if (ldu < std::max(1, hasU() ? m : 1)) return 8;
        if (ldvt < std::max(1, rowsOfVt())) return 10;
        if (empty()) return 0;
        if (!a) return 4;
        if (!s) return 6;
        if (!u && columnsOfU() > 0) return 7;
        return !vt && rowsOfVt() > 0 ? 9 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    // Of each matrix of vectors, how many u and vt take: for "O" the longer ones go to a.
    int columnsOfU() const { return !hasU() ? 0 : jobz == 'S' ? std::min(m, n) : m; }
    int rowsOfVt() const {
        return jobz == 'A' || (jobz == 'O' && m >= n) ? n : jobz == 'S' ? std::min(m, n) : 0;
    }
    template <class F>
    auto operands(F f) {
        const auto access = [](int count) { return count > 0 ? Access::out : Access::none; };
        return f(factorized(a, lda, m, n, jobz == 'O' ? Access::inOut : Access::scratch),
                 adjacent(s, std::min(m, n), Access::out),
                 matrix(u, ldu, m, columnsOfU(), access(columnsOfU())),
                 matrix(vt, ldvt, rowsOfVt(), n, access(rowsOfVt())));
    }
    void run() const;
    bool isSmall() const;
    lumoStatus runOnCpu() const;

  private:
    bool hasU() const { return isOneOf(jobz, "AS") || (jobz == 'O' && m < n); }
};

}  // namespace lumo
