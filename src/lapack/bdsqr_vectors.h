// The device's side of the bidiagonal singular value iteration: the singular vectors.
#pragma once

#include "basic/ApplySweeps/ApplySweeps.h"
#include "basic/Transpose/Transpose.h"
#include "basic/lasr/lasr.h"
#include "blas/cublas.h"
#include "common/matrix.h"
#include "common/state.h"
#include "lapack/bdsqr_iteration.h"
#include "lapack/rotation_ring.h"
#include "lapack/sweep_group.h"
#include "lapack/tuning.h"
#include "platform/table.h"

namespace lumo {

// A device matrix of vectors; absent if a vector has no elements.
template <class T>
struct VectorMatrix : MatrixView<T> {
    int length;  // of a vector
};

// V^T (n x ncvt), U (nru x n) and C (n x ncc) under the iteration's rotations. V^T is kept
// transposed meanwhile, so that its rotations, too, run along columns, which is what the rotation
// kernels are good at. Each sweep is one launch for each matrix, or sweeps are gathered in groups,
// and a group is one.
template <class T>
class SingularVectors {
    using Real = RealOf<T>;

  public:
    // Takes all the memory there is to take, before anything is changed.
    SingularVectors(int n, VectorMatrix<T> vt, VectorMatrix<T> u, VectorMatrix<T> c)
        : n_(n),
          vt_(vt),
          v_(vt),
          u_(u),
          c_(c),
          scratch_(turned() && vt.length != n ? std::size_t(n) * std::size_t(vt.length) : 0),
          gathers_(c.length == 0 && gathersSweeps()),
          ring_(gathers_
                    ? 0
                    : 2 * std::size_t(n - 1) * (std::size_t(hasRight()) + std::size_t(hasLeft()))),
          group_(n, gathers_ && hasRight(), gathers_ && hasLeft()) {
        if (scratch_.data()) v_ = {scratch_.data(), vt.length, vt.length};
    }

    // The two transpositions around the iteration.
    void turn() {
        if (scratch_.data())
            transpose(v_.data, ld(v_), vt_.data, ld(vt_), std::size_t(n_), std::size_t(vt_.length));
        else if (turned())
            transposeInplace(v_.data, ld(v_), std::size_t(n_));
    }
    void turnBack() {
        applyGroup();
        if (scratch_.data())
            transpose(vt_.data, ld(vt_), v_.data, ld(v_), std::size_t(vt_.length), std::size_t(n_));
        else
            turn();
    }

    Sweep<Real> stage(int count, int first, char direct) {
        return stage(count, first, direct, hasRight());
    }
    // For U and C alone.
    Sweep<Real> stageLeft(int count, int first, char direct) {
        return stage(count, first, direct, false);
    }

    // The sweep that was staged last, on the planes from (first, first + 1) on.
    void apply(const Sweep<Real>& sweep, int count, int first, char direct) {
        if (gathers_) return;
        const bool right = sweep.right.c, left = sweep.left.c;
        if (!right && !left) return;
        const Real* numbers = ring_.send(right ? sweep.right.c : sweep.left.c,
                                         2 * std::size_t(count) * (std::size_t(right) + left));
        if (right) {
            LASR('R', 'V', direct, v_.length, count + 1, numbers, numbers + count,
                 column(v_, first), v_.ld);
            numbers += 2 * std::size_t(count);
        }
        if (u_.length > 0)
            LASR('R', 'V', direct, u_.length, count + 1, numbers, numbers + count,
                 column(u_, first), u_.ld);
        if (c_.length > 0)
            LASR('L', 'V', direct, count + 1, c_.length, numbers, numbers + count, c_.data + first,
                 c_.ld);
    }

    void rotate(int i, Real cr, Real sr, Real cl, Real sl) {
        if (gathers_) {
            const Sweep<Real> sweep = stage(1, i, group_.direct());
            sweep.right.set(0, cr, sr);
            sweep.left.set(0, cl, sl);
            return;
        }
        if (hasRight()) cublas::rot(v_.length, column(v_, i), 1, column(v_, i + 1), 1, cr, sr);
        if (u_.length > 0) cublas::rot(u_.length, column(u_, i), 1, column(u_, i + 1), 1, cl, sl);
        if (c_.length > 0)
            cublas::rot(c_.length, c_.data + i, c_.ld, c_.data + i + 1, c_.ld, cl, sl);
    }
    void negate(int i) {
        applyGroup();
        if (turned())
            cublas::scal(v_.length, T(-1), column(v_, i), 1);
        else if (hasRight())
            cublas::scal(v_.length, T(-1), v_.data + i, v_.ld);
    }
    void swap(int i, int j) {
        applyGroup();
        if (hasRight()) cublas::swap(v_.length, column(v_, i), 1, column(v_, j), 1);
        if (u_.length > 0) cublas::swap(u_.length, column(u_, i), 1, column(u_, j), 1);
        if (c_.length > 0) cublas::swap(c_.length, c_.data + i, c_.ld, c_.data + j, c_.ld);
    }

  private:
    bool hasRight() const { return vt_.length > 0; }
    bool hasLeft() const { return u_.length > 0 || c_.length > 0; }
    // A single row is only ever negated.
    bool turned() const { return hasRight() && n_ > 1; }

    static T* column(const VectorMatrix<T>& m, int j) { return m.at(0, j); }
    static std::size_t ld(const VectorMatrix<T>& m) { return std::size_t(m.ld); }

    bool gathersSweeps() const {
        if (n_ == 1) return false;
        if (!platform::sharesMemory()) return deviceIsModern();
        const auto length = std::size_t(std::max(vt_.length, u_.length));
        return std::size_t(n_) * length * sizeof(T) >= gatheredOnCpu;
    }

    Sweep<Real> stage(int count, int first, char direct, bool right) {
        if (!gathers_) return stageAlone(count, right);
        if (!right && !hasLeft()) return {};
        if (!group_.takes(direct)) applyGroup();
        return group_.add(first, count, direct, right);
    }
    void applyGroup() {
        if (group_.empty()) return;
        const auto group = group_.send();
        auto apply = [&](const VectorMatrix<T>& m, const Rotation<Real>* table) {
            applySweeps(m.length, group.elements, group.stages, table, group.pitch,
                        column(m, group.first),
                        group.forward ? std::ptrdiff_t(m.ld) : -std::ptrdiff_t(m.ld));
        };
        if (hasRight()) apply(v_, group.right);
        if (hasLeft()) apply(u_, group.left);
    }

    // The pairs that cross lie one behind the other.
    Sweep<Real> stageAlone(int count, bool right) {
        Sweep<Real> sweep;
        const std::size_t pair = 2 * std::size_t(count);
        const bool left = hasLeft();
        if (!right && !left) return sweep;
        Real* numbers = ring_.next(pair * (std::size_t(right) + left));
        if (right) sweep.right = {numbers, numbers + count};
        if (right) numbers += pair;
        if (left) sweep.left = {numbers, numbers + count};
        return sweep;
    }

    const int n_;
    const VectorMatrix<T> vt_;  // the caller's
    VectorMatrix<T> v_;         // its transpose, once turned
    const VectorMatrix<T> u_, c_;
    cudalib::Workspace<T> scratch_;
    const bool gathers_;
    RotationRing<Real> ring_;
    SweepGroup<Real> group_;
};

}  // namespace lumo
