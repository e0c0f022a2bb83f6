// What the drop-in library knows of the LAPACK routines beside their descriptions: see serve.h.
// Data that are not finite are the CPU library's, and so are those that it would scale.
#pragma once

#include <limits>

#include "dropin/blas.h"
#include "dropin/eigenproblems.h"
#include "lapack/dsgesv.h"
#include "lapack/gecon.h"
#include "lapack/gels.h"
#include "lapack/gelsd.h"
#include "lapack/geqrf.h"
#include "lapack/gesdd.h"
#include "lapack/gesv.h"
#include "lapack/gesvd.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/gglse.h"
#include "lapack/orgqr.h"
#include "lapack/ormqr.h"
#include "lapack/pocon.h"
#include "lapack/posv.h"
#include "lapack/potrf.h"
#include "lapack/potrs.h"

namespace lumo::dropin {

// Whether a matrix is one that a driver with these bounds neither scales nor has a short answer
// for. The largest part may be less than the largest modulus, but not less than half of it.
template <class Real>
bool needsNoScaling(Real largest, Real small) {
    return largest >= small && largest <= 1 / (2 * small);
}

template <class T>
struct Rules<Getrf<T>> : UsualRules {
    using Routine = Getrf<T>;
    static double size(const Routine& r) { return geometricMean(r.m, r.n, std::min(r.m, r.n)); }
    static bool dataSuit(const Routine& r) { return isFinite(r.a, r.m, r.n, r.lda); }
};

template <class T>
struct Rules<Gesv<T>> : UsualRules {
    using Routine = Gesv<T>;
    static bool worthwhile(const Routine& r) { return r.nrhs > 0; }
    static double size(const Routine& r) { return r.n; }
    static bool dataSuit(const Routine& r) {
        return isFinite(r.a, r.n, r.n, r.lda) && isFinite(r.b, r.n, r.nrhs, r.ldb);
    }
};

// Solutions with factors, whose right-hand sides are what is to do.
template <class Routine>
struct RulesOfSolution : UsualRules {
    static double size(const Routine& r) { return geometricMean(r.n, r.n, r.nrhs); }
};
template <class T>
struct Rules<Getrs<T>> : RulesOfSolution<Getrs<T>> {};
template <class T>
struct Rules<Potrs<T>> : RulesOfSolution<Potrs<T>> {};

// A matrix that is not definite, for one because it is not finite, Lumo does not serve.
template <class T>
struct Rules<Potrf<T>> : UsualRules {
    static double size(const Potrf<T>& r) { return r.n; }
};
template <class T>
struct Rules<Posv<T>> : UsualRules {
    static bool worthwhile(const Posv<T>& r) { return r.nrhs > 0; }
    static double size(const Posv<T>& r) { return r.n; }
};

template <class T>
struct Rules<Dsgesv<T>> : UsualRules {
    using Routine = Dsgesv<T>;
    template <class Integer>
    using Workspace = std::conditional_t<isComplex<T>, Arguments<T*, Complex<float>*, RealOf<T>*>,
                                         Arguments<T*, float*>>;
    static bool worthwhile(const Routine& r) { return r.n > 0 && r.nrhs > 0; }
    static double size(const Routine& r) { return r.n; }
    static bool dataSuit(const Routine& r) {
        return isFinite(r.a, r.n, r.n, r.lda) && isFinite(r.b, r.n, r.nrhs, r.ldb);
    }
};

template <class Routine>
struct RulesOfCondition : UsualRules {
    using T = typename Routine::Element;
    template <class Integer>
    using Workspace = Arguments<T*, std::conditional_t<isComplex<T>, RealOf<T>, Integer>*>;
    static bool worthwhile(const Routine& r) { return r.n > 0 && std::isfinite(r.anorm); }
    static double size(const Routine& r) { return r.n; }
    static bool dataSuit(const Routine& r) { return isFinite(r.a, r.n, r.n, r.lda); }
};
template <class T>
struct Rules<Gecon<T>> : RulesOfCondition<Gecon<T>> {};
template <class T>
struct Rules<Pocon<T>> : RulesOfCondition<Pocon<T>> {};

template <class T>
struct Rules<Orgqr<T>> : UsualRules {
    using Routine = Orgqr<T>;
    template <class Integer>
    using Workspace = Arguments<T*, const Integer*>;
    static double size(const Routine& r) { return geometricMean(r.m, r.n, r.k); }
    static int leastWork(const Routine& r) { return r.n; }
};
template <class T>
struct Rules<Ormqr<T>> : UsualRules {
    using Routine = Ormqr<T>;
    template <class Integer>
    using Workspace = Arguments<T*, const Integer*>;
    // Of real matrices LAPACK takes one letter for the transpose, of the two that Lumo takes.
    static bool worthwhile(const Routine& r) { return isComplex<T> || r.trans != 'C'; }
    static double size(const Routine& r) { return geometricMean(r.m, r.n, r.k); }
    static int leastWork(const Routine& r) { return r.side == 'L' ? r.n : r.m; }
};

template <class T>
struct Rules<Geqrf<T>> : UsualRules {
    using Routine = Geqrf<T>;
    template <class Integer>
    using Workspace = Arguments<T*, const Integer*>;
    static double size(const Routine& r) { return geometricMean(r.m, r.n, std::min(r.m, r.n)); }
    static int leastWork(const Routine& r) { return r.n; }
    static bool dataSuit(const Routine& r) { return isFinite(r.a, r.m, r.n, r.lda); }
};

template <class T>
struct Rules<Gels<T>> : UsualRules {
    using Routine = Gels<T>;
    template <class Integer>
    using Workspace = Arguments<T*, const Integer*>;
    // LAPACK takes one letter for the transpose, of the two that Lumo takes.
    static bool worthwhile(const Routine& r) {
        return r.trans != (isComplex<T> ? 'T' : 'C') && std::min({r.m, r.n, r.nrhs}) > 0;
    }
    static double size(const Routine& r) { return geometricMean(r.m, r.n, std::min(r.m, r.n)); }
    static int leastWork(const Routine& r) {
        return std::min(r.m, r.n) + std::max({r.m, r.n, r.nrhs});
    }
    // xGELS scales A, and the part of B that it reads, from SAFMIN / EPS on; a B of zeros it
    // leaves.
    static bool dataSuit(const Routine& r) {
        using Limits = std::numeric_limits<RealOf<T>>;
        constexpr RealOf<T> small = Limits::min() / Limits::epsilon();
        const auto b = largest(r.b, r.trans == 'N' ? r.m : r.n, r.nrhs, r.ldb);
        return needsNoScaling(largest(r.a, r.m, r.n, r.lda), small) &&
               (b == 0 || needsNoScaling(b, small));
    }
};
template <class T>
struct Rules<Gglse<T>> : UsualRules {
    using Routine = Gglse<T>;
    template <class Integer>
    using Workspace = Arguments<T*, const Integer*>;
    static bool worthwhile(const Routine& r) { return r.m > 0 && r.p > 0; }
    static double size(const Routine& r) { return geometricMean(double(r.m) + r.p, r.n, r.n); }
    static int leastWork(const Routine& r) { return r.m + r.n + r.p; }
    static bool dataSuit(const Routine& r) {
        return isFinite(r.a, r.m, r.n, r.lda) && isFinite(r.b, r.p, r.n, r.ldb) &&
               isFinite(r.c, r.m, 1, r.m) && isFinite(r.d, r.p, 1, r.p);
    }
};

template <class T>
struct Rules<Gesvd<T>> : UsualRules {
    using Routine = Gesvd<T>;
    template <class Integer>
    using Workspace = std::conditional_t<isComplex<T>, Arguments<T*, const Integer*, RealOf<T>*>,
                                         Arguments<T*, const Integer*>>;
    using ExtraOfLapacke = Arguments<RealOf<T>*>;
    static double size(const Routine& r) { return geometricMean(r.m, r.n, std::min(r.m, r.n)); }
    // Enough for every path of xGESVD; with less, some paths still work, and it knows which.
    static int leastWork(const Routine& r) {
        const int least = std::min(r.m, r.n), most = std::max(r.m, r.n);
        return isComplex<T> ? 2 * least + most : std::max(3 * least + most, 5 * least);
    }
    // LAPACKE hands out the superdiagonal of the bidiagonal matrix: zeros once it has converged.
    static void clear(const Routine& r, RealOf<T>* superdiagonal) {
        std::fill(superdiagonal, superdiagonal + std::min(r.m, r.n) - 1, RealOf<T>(0));
    }
    // xGESVD scales from sqrt(SAFMIN) / EPS on, but not a matrix of zeros.
    static bool dataSuit(const Routine& r) {
        using Limits = std::numeric_limits<RealOf<T>>;
        const RealOf<T> small = std::sqrt(Limits::min()) / Limits::epsilon();
        const auto a = largest(r.a, r.m, r.n, r.lda);
        return a == 0 || needsNoScaling(a, small);
    }
};

// Matrices that are not finite are the CPU library's; others Lumo scales as LAPACK does. How long
// rwork is at least, LAPACK's documentation tells.
template <class T>
struct Rules<Gesdd<T>> : UsualRules {
    using Routine = Gesdd<T>;
    template <class Integer>
    using Workspace =
        std::conditional_t<isComplex<T>, Arguments<T*, const Integer*, RealOf<T>*, Integer*>,
                           Arguments<T*, const Integer*, Integer*>>;
    static double size(const Routine& r) { return geometricMean(r.m, r.n, std::min(r.m, r.n)); }
    // Of xGESDD's own paths, for a matrix that it makes square first and for others: its queries
    // answer with less than the lengths that its documentation tells.
    static Lengths leastWork(const Routine& r) {
        const std::int64_t n = std::min(r.m, r.n), m = std::max(r.m, r.n), square = n * n;
        const bool values = r.jobz == 'N', toA = r.jobz == 'O';
        const std::int64_t inner = isComplex<T> ? 0 : values ? 7 * n : 3 * square + 4 * n;
        const int squares = values ? 0 : toA ? 2 : 1;
        if (m >= (isComplex<T> ? n * 17 / 9 : n * 11 / 6))
            return std::max(squares * square + 3 * n + inner, r.jobz == 'A' ? square + n + m : 0);
        const std::int64_t overwriting = toA ? square : 0;
        return isComplex<T> ? 2 * n + m + overwriting : 3 * n + std::max(m, inner + overwriting);
    }
    static bool dataSuit(const Routine& r) { return isFinite(r.a, r.m, r.n, r.lda); }
};

template <class T>
struct Rules<Gelsd<T>> : UsualRules {
    using Routine = Gelsd<T>;
    template <class Integer>
    using Workspace = typename Rules<Gesdd<T>>::template Workspace<Integer>;
    static bool worthwhile(const Routine& r) { return std::min({r.m, r.n, r.nrhs}) > 0; }
    static double size(const Routine& r) { return geometricMean(r.m, r.n, std::min(r.m, r.n)); }
    // As xGELSD counts it, whose blocks have 25 rows.
    static Lengths leastWork(const Routine& r) {
        constexpr std::int64_t leaf = 25;
        const std::int64_t k = std::min(r.m, r.n), longer = std::max(r.m, r.n), nrhs = r.nrhs;
        if (isComplex<T>) return 2 * k + std::max(longer, k * nrhs);
        const std::int64_t levels = std::max(0, int(std::log2(double(k) / (leaf + 1))) + 1);
        const std::int64_t division =
            (9 + 2 * leaf + 8 * levels + nrhs) * k + (leaf + 1) * (leaf + 1);
        return 3 * k + std::max({r.m >= r.n ? longer : k, nrhs, division});
    }
    static bool dataSuit(const Routine& r) {
        return isFinite(r.a, r.m, r.n, r.lda) && isFinite(r.b, r.m, r.nrhs, r.ldb);
    }
};

// Symmetric and Hermitian eigenproblems. Matrices that are not finite Lumo does not serve; others
// it scales as LAPACK does.
template <class T>
struct RulesOfEigenproblem : UsualRules {
    template <class Integer>
    using Workspace = std::conditional_t<
        isComplex<T>,
        Arguments<T*, const Integer*, RealOf<T>*, const Integer*, Integer*, const Integer*>,
        Arguments<T*, const Integer*, Integer*, const Integer*>>;
    template <class Routine>
    static double size(const Routine& r) {
        return r.n;
    }
};
template <class T>
struct Rules<Syevd<T>> : RulesOfEigenproblem<T> {
    static Lengths leastWork(const Syevd<T>& r) {
        const std::int64_t n = r.n, square = n * n;
        if (r.jobz == 'N') return isComplex<T> ? Lengths{n + 1, n, 1} : Lengths{2 * n + 1, 1};
        if (isComplex<T>) return {2 * n + square, 1 + 5 * n + 2 * square, 3 + 5 * n};
        return {1 + 6 * n + 2 * square, 3 + 5 * n};
    }
};
template <class T>
struct Rules<Syev<T>> : RulesOfEigenproblem<T> {
    template <class Integer>
    using Workspace = typename Rules<Gesvd<T>>::template Workspace<Integer>;
    static int leastWork(const Syev<T>& r) { return (isComplex<T> ? 2 : 3) * r.n - 1; }
};
template <class T>
struct Rules<Syevr<T>> : RulesOfEigenproblem<T> {
    static Lengths leastWork(const Syevr<T>& r) {
        const std::int64_t n = r.n;
        return isComplex<T> ? Lengths{2 * n, 24 * n, 10 * n} : Lengths{26 * n, 10 * n};
    }
};

}  // namespace lumo::dropin
