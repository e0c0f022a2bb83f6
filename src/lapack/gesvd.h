// Singular value decomposition (LAPACK xGESVD, without its scaling).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

template <class T>
struct Gesvd {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char jobu, jobvt;
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
        return f(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt);
    }
    int badArgument() {
        jobu = upper(jobu);
        jobvt = upper(jobvt);
        if (!isOneOf(jobu, "ASON")) return 1;
        if (!isOneOf(jobvt, "ASON") || (jobu == 'O' && jobvt == 'O')) return 2;
        if (m < 0) return 3;
        if (n < 0) return 4;
        if (lda < std::max(1, m)) return 6;
        if (ldu < std::max(1, separate(jobu) ? m : 1)) return 9;
        if (ldvt < std::max(1, separate(jobvt) ? rowsOfVt() : 1)) return 11;
        if (empty()) return 0;
        if (!a) return 5;
        if (!s) return 7;
        if (!u && separate(jobu)) return 8;
        return !vt && separate(jobvt) ? 10 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    template <class F>
    auto operands(F f) {
        auto access = [](char job) { return separate(job) ? Access::out : Access::none; };
        const bool toA = jobu == 'O' || jobvt == 'O';
        return f(factorized(a, lda, m, n, toA ? Access::inOut : Access::scratch),
                 adjacent(s, count(), Access::out),
                 matrix(u, ldu, m, jobu == 'A' ? m : count(), access(jobu)),
                 matrix(vt, ldvt, rowsOfVt(), n, access(jobvt)));
    }
    void run() const;
    bool isSmall() const;
    lumoStatus runOnCpu() const;

  private:
    // Whether vectors go to u (vt) itself, and not to a or nowhere.
    static bool separate(char job) { return job == 'A' || job == 'S'; }
    int count() const { return std::min(m, n); }
    int rowsOfVt() const { return jobvt == 'S' ? count() : n; }
};

}  // namespace lumo
