// The bidiagonal singular value iteration on the host: implicit zero-shift QR alternating with
// shifted QR (LAPACK xBDSQR; Demmel and Kahan, SIAM J. Sci. Stat. Comput. 11, 1990).
#pragma once

#include <cstddef>
#include <cstdint>

#include "lapack/bdsqr_scalars.h"

namespace lumo {

// Where the cosines and sines of a sweep go: those of its first plane, and so on by `step`; the
// sines times `sign`. Null if nobody wants them.
template <class Real>
struct SweepSide {
    Real* c = nullptr;
    Real* s = nullptr;
    std::ptrdiff_t step = 1;
    Real sign = 1;

    void set(int plane, Real cosine, Real sine) const {
        if (!c) return;
        c[plane * step] = cosine;
        s[plane * step] = sign * sine;
    }
};

// right: for the rows of V^T; left: for the columns of U and the rows of C.
template <class Real>
struct Sweep {
    SweepSide<Real> right, left;
};

// Works on d (n) and e (n - 1) of an upper bidiagonal matrix, and tells `vectors` what to do with
// the singular vectors:
//     Sweep stage(count, first, direct)  where the rotations of the next sweep go, which is on the
//                                        planes from (first, first + 1) on
//     apply(sweep, count, first, direct) that sweep, now or with others
//     rotate(first, cr, sr, cl, sl)      a single rotation
//     negate(i), swap(i, j)              of right vectors, of all vectors
template <class Real, class Vectors>
class BidiagonalIteration {
  public:
    BidiagonalIteration(int n, Real* d, Real* e, Vectors& vectors, std::int64_t maxSteps)
        : n_(n), d_(d), e_(e), vectors_(vectors), maxSteps_(maxSteps) {}

    // d becomes the singular values in descending order. Returns 0, or, where `maxSteps` steps did
    // not suffice, the number of superdiagonals that are not zero; d and e are then the bidiagonal
    // matrix reached so far.
    int run() {
        setThreshold();
        for (last_ = n_ - 1; last_ > 0;) {
            if (steps_ > maxSteps_) return int(n_ - 1 - std::count(e_, e_ + (n_ - 1), Real(0)));
            findBlock();
            if (first_ == last_)
                --last_;
            else if (first_ == last_ - 1)
                finishTwoByTwo();
            else
                reduceBlock();
        }
        makePositive();
        sort();
        return 0;
    }

  private:
    static constexpr Real eps = roundingUnit<Real>;

    // A block seen in the direction of the chase, which has the same formulas both ways: `length`
    // superdiagonals, e(p) between d(p) and d(p + 1).
    struct Chase {
        Real *d0, *e0;
        std::ptrdiff_t step;
        int length;
        Real& d(int p) const { return d0[p * step]; }
        Real& e(int p) const { return e0[p * step]; }
    };

    // Rotations as the chase makes them: upwards, the plane runs from the other end, sines change
    // their sign and the sides their roles.
    struct Recorder {
        const Sweep<Real>& sweep;
        int length;
        bool down;
        void operator()(int p, Real c1, Real s1, Real c2, Real s2) const {
            if (down) {
                sweep.right.set(p, c1, s1);
                sweep.left.set(p, c2, s2);
            } else {
                sweep.left.set(length - 1 - p, c1, -s1);
                sweep.right.set(length - 1 - p, c2, -s2);
            }
        }
    };

    // What an off-diagonal may be set to zero for, from an estimate of the smallest singular value.
    void setThreshold() {
        const Real factor = std::clamp(std::pow(eps, Real(-0.125)), Real(10), Real(100));
        tol_ = factor * eps;
        Real smallest = std::abs(d_[0]), mu = smallest;
        for (int i = 1; i < n_ && smallest != 0; ++i) {
            mu = std::abs(d_[i]) * (mu / (mu + std::abs(e_[i - 1])));
            smallest = std::min(smallest, mu);
        }
        smallest /= std::sqrt(Real(n_));
        threshold_ = std::max(tol_ * smallest, Real(maxSteps_) * safeMinimum<Real>);
    }

    // The unreduced block [first_, last_] at the bottom and its largest element.
    void findBlock() {
        Real largest = std::abs(d_[last_]);
        int first = last_;
        for (; first > 0; --first) {
            const Real off = std::abs(e_[first - 1]);
            if (off <= threshold_) {
                e_[first - 1] = 0;
                break;
            }
            largest = std::max(largest, std::max(std::abs(d_[first - 1]), off));
        }
        first_ = first;
        largest_ = largest;
    }

    void finishTwoByTwo() {
        const TwoByTwoSvd<Real> svd = lasv2(d_[first_], e_[first_], d_[last_]);
        d_[first_] = svd.larger;
        e_[first_] = 0;
        d_[last_] = svd.smaller;
        vectors_.rotate(first_, svd.cr, svd.sr, svd.cl, svd.sl);
        last_ -= 2;
    }

    // An off-diagonal set to zero, or a sweep.
    void reduceBlock() {
        if (first_ > oldLast_ || last_ < oldFirst_)
            down_ = std::abs(d_[first_]) >= std::abs(d_[last_]);
        const Chase b = down_ ? Chase{d_ + first_, e_ + first_, 1, last_ - first_}
                              : Chase{d_ + last_, e_ + (last_ - 1), -1, last_ - first_};
        Real smallest;
        if (converged(b, smallest)) return;
        oldFirst_ = first_;
        oldLast_ = last_;
        steps_ += b.length;

        const Real shift = chooseShift(b, smallest);
        const char direct = down_ ? 'F' : 'B';
        const Sweep<Real> sweep = vectors_.stage(b.length, first_, direct);
        const Recorder record{sweep, b.length, down_};
        if (shift == 0)
            zeroShiftSweep(b, record);
        else
            shiftedSweep(b, shift, record);
        vectors_.apply(sweep, b.length, first_, direct);
        if (std::abs(b.e(b.length - 1)) <= threshold_) b.e(b.length - 1) = 0;
    }

    // The tests for relative accuracy. Sets the off-diagonal that has converged to zero, or tells
    // an estimate of the block's smallest singular value.
    bool converged(const Chase& b, Real& smallest) const {
        if (std::abs(b.e(b.length - 1)) <= tol_ * std::abs(b.d(b.length))) {
            b.e(b.length - 1) = 0;
            return true;
        }
        Real mu = std::abs(b.d(0)), least = mu;
        for (int p = 0; p < b.length; ++p) {
            const Real off = std::abs(b.e(p));
            if (off <= tol_ * mu) {
                b.e(p) = 0;
                return true;
            }
            mu = std::abs(b.d(p + 1)) * (mu / (mu + off));
            least = std::min(least, mu);
        }
        smallest = least;
        return false;
    }

    // Zero where a shift would spoil the relative accuracy, or is negligible.
    Real chooseShift(const Chase& b, Real smallest) const {
        if (Real(n_) * tol_ * (smallest / largest_) <= std::max(eps, Real(0.01) * tol_)) return 0;
        const int k = b.length;
        const Real shift = las2(b.d(k - 1), b.e(k - 1), b.d(k)), top = std::abs(b.d(0));
        return top > 0 && (shift / top) * (shift / top) < eps ? Real(0) : shift;
    }

    // Elements in use are kept in variables: the compiler cannot know that d, e and the rotations
    // lie apart, and each would go through memory, on the critical path.
    void zeroShiftSweep(const Chase& b, const Recorder& record) const {
        Real c = 1, oldC = 1, oldS = 0, d = b.d(0);
        for (int p = 0; p < b.length; ++p) {
            const Real next = b.d(p + 1);
            const GivensRotation<Real> one = lartg(d * c, b.e(p));
            if (p > 0) b.e(p - 1) = oldS * one.r;
            const GivensRotation<Real> two = lartg(oldC * one.r, next * one.s);
            b.d(p) = two.r;
            record(p, one.c, one.s, two.c, two.s);
            c = one.c;
            oldC = two.c;
            oldS = two.s;
            d = next;
        }
        b.d(b.length) = d * c * oldC;
        b.e(b.length - 1) = d * c * oldS;
    }

    void shiftedSweep(const Chase& b, Real shift, const Recorder& record) const {
        Real d = b.d(0), e = b.e(0);
        Real f = (std::abs(d) - shift) * (std::copysign(Real(1), d) + shift / d), g = e;
        for (int p = 0; p < b.length; ++p) {
            const GivensRotation<Real> one = lartg(f, g);
            if (p > 0) b.e(p - 1) = one.r;
            f = one.c * d + one.s * e;
            e = one.c * e - one.s * d;
            const Real next = b.d(p + 1);
            const GivensRotation<Real> two = lartg(f, one.s * next);
            b.d(p) = two.r;
            f = two.c * e + two.s * (one.c * next);
            d = two.c * (one.c * next) - two.s * e;
            record(p, one.c, one.s, two.c, two.s);
            if (p + 1 == b.length) break;
            g = two.s * b.e(p + 1);
            e = two.c * b.e(p + 1);
        }
        b.d(b.length) = d;
        b.e(b.length - 1) = f;
    }

    void makePositive() {
        for (int i = 0; i < n_; ++i) {
            if (d_[i] < 0) vectors_.negate(i);
            d_[i] = std::abs(d_[i]);
        }
    }

    // By selection, so that each vector moves once.
    void sort() {
        for (int end = n_ - 1; end > 0; --end) {
            int smallest = 0;
            for (int j = 1; j <= end; ++j)
                if (d_[j] <= d_[smallest]) smallest = j;
            if (smallest == end) continue;
            std::swap(d_[smallest], d_[end]);
            vectors_.swap(smallest, end);
        }
    }

    const int n_;
    Real *const d_, *const e_;
    Vectors& vectors_;
    const std::int64_t maxSteps_;
    Real tol_ = 0, threshold_ = 0;
    int first_ = 0, last_ = 0;          // the block at work
    int oldFirst_ = -1, oldLast_ = -1;  // the block of the last sweep
    Real largest_ = 0;
    bool down_ = true;
    std::int64_t steps_ = 0;
};

}  // namespace lumo
