// What two halves of a tridiagonal or bidiagonal matrix become before they are merged: which of
// their values and vectors stay as they are, and what is left of the others (LAPACK xLAED2,
// xLASD2).
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "divide/merge.h"
#include "lapack/bdsqr_scalars.h"

namespace lumo {

// diag(d) + rho z z^T of two halves' eigenvalues d, or [z; 0 diag(d)] of their singular values, in
// ascending order, each with its column of the matrices of vectors. What is small beside the norm
// is set to zero: a z that is, and by a rotation of their columns one of two z whose d are close.
template <class R>
class Deflation {
  public:
    // Where a column has elements that are not zero.
    enum Rows { upper, both, lower };
    struct Pair {
        int column;
        R d, z;
        Rows rows;
    };

    static Deflation ofEigenvalues(const std::vector<Pair>& pairs, R rho) {
        R most = 0, mostZ = 0;
        for (const Pair& p : pairs) {
            most = std::max(most, std::abs(p.d));
            mostZ = std::max(mostZ, std::abs(p.z));
        }
        const R tolerance = 8 * roundingUnit<R> * std::max(most, mostZ);
        return Deflation(pairs, 0, rho, tolerance);
    }
    // The first one is the row between the halves, with a d of 0, and stays: if its z is small, it
    // is not any more; nor is the next d.
    static Deflation ofSingularValues(std::vector<Pair> pairs, R tolerance) {
        if (std::abs(pairs[0].z) <= tolerance) pairs[0].z = tolerance;
        Deflation result(pairs, 1, 1, tolerance);
        if (result.kept_.size() > 1) result.kept_[1].d = std::max(result.kept_[1].d, tolerance / 2);
        return result;
    }

    // Ascending; and what stays.
    const std::vector<Pair>& kept() const { return kept_; }
    const std::vector<Pair>& deflated() const { return deflated_; }
    const std::vector<ColumnRotation<R>>& rotations() const { return rotations_; }
    // The kept ones once more, those of the upper half alone first, then those of both.
    const std::vector<int>& byRows() const { return byRows_; }
    int count(Rows rows) const { return counts_[rows]; }

  private:
    Deflation(const std::vector<Pair>& pairs, std::size_t fixed, R rho, R tolerance)
        : kept_(pairs.begin(), pairs.begin() + std::ptrdiff_t(fixed)) {
        for (std::size_t i = fixed; i < pairs.size(); ++i) {
            const Pair& next = pairs[i];
            if (rho * std::abs(next.z) <= tolerance)
                deflated_.push_back(next);
            else if (kept_.size() == fixed || !join(kept_.back(), next, tolerance))
                kept_.push_back(next);
        }
        sortRows();
    }

    // Makes one of two neighbours that are close, in the place of the former.
    bool join(Pair& before, const Pair& next, R tolerance) {
        const R length = std::hypot(before.z, next.z);
        const R c = next.z / length, s = -before.z / length;
        if (!(std::abs((next.d - before.d) * c * s) <= tolerance)) return false;
        rotations_.push_back({before.column, next.column, c, s});
        deflated_.push_back({before.column, before.d * c * c + next.d * s * s, 0, both});
        before = {next.column, before.d * s * s + next.d * c * c, length,
                  before.rows == next.rows ? next.rows : both};
        return true;
    }

    void sortRows() {
        byRows_.reserve(kept_.size());
        for (Rows rows : {upper, both, lower}) {
            const std::size_t before = byRows_.size();
            for (std::size_t i = 0; i < kept_.size(); ++i)
                if (kept_[i].rows == rows) byRows_.push_back(int(i));
            counts_[rows] = int(byRows_.size() - before);
        }
    }

    std::vector<Pair> kept_, deflated_;
    std::vector<ColumnRotation<R>> rotations_;
    std::vector<int> byRows_;
    std::array<int, 3> counts_{};
};

}  // namespace lumo
