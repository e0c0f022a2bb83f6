// Reflectors and orthogonal factors in double precision, and the residuals of the LAPACK testers
// for what is made of them.
#pragma once

#include <climits>

#include "lapack/block_reflector.h"
#include "lapack/tuning.h"
#include "platform/cpu/lapack.h"
#include "residuals.h"
#include "support/machine.h"

namespace test {

// Panels of 4 lines by the CPU.
template <class T, int thereFrom = INT_MAX>
std::shared_ptr<void> shrinkPanels() {
    return together(temporarily(lumo::geqrfTuning<T>, {4, 4}),
                    temporarily(lumo::qrPanels<T>, {3, {{{1, 4, thereFrom}}}}));
}

// The same with the device's own panels where it can, by strips of 3 columns and of one.
template <class T>
std::shared_ptr<void> shrinkPanelsThere() {
    return shrinkPanels<T, 70>();
}

// The same, in the reduction to bidiagonal form too, and blocks of 3 rows in divide and conquer.
template <class T>
std::shared_ptr<void> shrinkDivision() {
    using Restored = std::shared_ptr<void>;
    return std::make_shared<std::array<Restored, 3>>(
        std::array<Restored, 3>{temporarily(lumo::gebrdTuning<T>, {4, 4}), shrinkPanels<T>(),
                                temporarily(lumo::stedcLeaf, 3)});
}

constexpr double qrBound = 30;            // LAPACK xQRT01 with lin_s.in
constexpr double leastSquaresBound = 30;  // LAPACK xDRVLS
constexpr double lseBound = 20;           // LAPACK xCKLSE with lse.in

inline WideMatrix identity(int n) {
    return {n, n, [](int i, int j) { return Wide(i == j); }};
}

// ||I - Q^H Q|| / (rows eps), or of the rows of a Q that is wider than tall.
inline double orthogonality(const WideMatrix& q, double eps) {
    const WideMatrix gram = q.m >= q.n ? op('C', q) * q : q * op('C', q);
    return norm1(identity(gram.m) - gram) / (std::max(q.m, q.n) * eps);
}

// ||X - Y|| / (max(m, n) ||scale|| eps).
inline double difference(const WideMatrix& x, const WideMatrix& y, double scale, double eps) {
    return norm1(x - y) / (std::max(x.m, x.n) * scale * eps);
}

// Q, of the reflectors' order, one reflector after the other: H(1) ... H(k) (QR), the adjoint of
// H(1) ... H(k) (LQ) or H(1)^H ... H(k)^H (RQ).
template <class T>
WideMatrix qOf(lumo::Reflectors kind, const Matrix<T>& f, const Matrix<T>& tau) {
    const bool columns = kind == lumo::Reflectors::ofQr, backward = kind == lumo::Reflectors::ofRq;
    const int order = columns ? f.m : f.n, k = tau.m;
    WideMatrix q = identity(order);
    for (int i = 0; i < k; ++i) {
        WideMatrix v(order, 1);
        const int one = backward ? order - k + i : i;
        v(one, 0) = 1;
        for (int r = backward ? 0 : i + 1; r < (backward ? one : order); ++r)
            v(r, 0) = columns ? wide(f(r, i)) : std::conj(wide(f(backward ? f.m - k + i : i, r)));
        const Wide factor = columns ? wide(tau(i, 0)) : std::conj(wide(tau(i, 0)));
        // The products run from left to right, but for LQ.
        WideMatrix u = kind == lumo::Reflectors::ofLq ? v * (op('C', v) * q) : (q * v) * op('C', v);
        for (Wide& x : u.data) x *= factor;
        q = q - u;
    }
    return q;
}

// The triangular or trapezoidal factor: R of QR, L of LQ, R of RQ (at the end of A).
template <class T>
WideMatrix triangleOf(lumo::Reflectors kind, const Matrix<T>& f) {
    if (kind != lumo::Reflectors::ofRq)
        return triangular(kind == lumo::Reflectors::ofQr ? 'U' : 'L', 'N', WideMatrix(f));
    return {f.m, f.n, [&](int i, int j) { return f.n - j <= f.m - i ? wide(f(i, j)) : Wide(0); }};
}

// The larger of ||Q R - A|| / (max(m, n) ||A|| eps) and the orthogonality of Q (xQRT01, ...).
template <class T>
double factorizationResidual(lumo::Reflectors kind, const Matrix<T>& a, const Matrix<T>& f,
                             const Matrix<T>& tau) {
    const WideMatrix q = qOf(kind, f, tau), t = triangleOf(kind, f), original(a);
    const WideMatrix product = kind == lumo::Reflectors::ofQr ? q * t : t * q;
    return larger(difference(product, original, norm1(original), epsilon<T>),
                  orthogonality(q, epsilon<T>));
}

// min || A Y - B || over Y, column norm, for A with at least as many rows as columns.
inline double distanceFromRange(WideMatrix a, WideMatrix b) {
    if (a.n == 0) return norm1(b);
    cpu::withWorkspace<Wide>(1, [&](Wide* work, int size) {
        return cpu::gels<Wide>('N', a.m, a.n, b.n, a.data.data(), a.m, b.data.data(), a.m, work,
                               size);
    });
    return norm1({a.m, b.n, [&](int i, int j) { return i < a.n ? Wide(0) : b(i, j); }});
}

}  // namespace test
