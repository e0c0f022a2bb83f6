// What two halves of a tridiagonal matrix become before they are merged: which of their eigenpairs
// stay as they are, and what is left of the others (LAPACK xLAED2).
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "divide/merge.h"
#include "lapack/bdsqr_scalars.h"

namespace lumo {

// diag(d) + rho z z^T of two halves' eigenvalues d, in ascending order, each with its column of the
// matrix of vectors. What is small beside the matrix's norm is set to zero: a z that is, and by a
// rotation of their columns one of two z whose d are close.
template <class R>
class Deflation {
  public:
    // Where a column has elements that are not zero.
    enum Rows { upper, both, lower };
    struct Eigenpair {
        int column;
        R d, z;
        Rows rows;
    };

    Deflation(std::vector<Eigenpair> pairs, R rho) {
        R most = 0, mostZ = 0;
        for (const Eigenpair& p : pairs) {
            most = std::max(most, std::abs(p.d));
            mostZ = std::max(mostZ, std::abs(p.z));
        }
        const R tolerance = 8 * roundingUnit<R> * std::max(most, mostZ);
        for (const Eigenpair& next : pairs) {
            if (rho * std::abs(next.z) <= tolerance)
                deflated_.push_back(next);
            else if (kept_.empty() || !join(kept_.back(), next, tolerance))
                kept_.push_back(next);
        }
        sortRows();
    }

    // Ascending; and what stays.
    const std::vector<Eigenpair>& kept() const { return kept_; }
    const std::vector<Eigenpair>& deflated() const { return deflated_; }
    const std::vector<ColumnRotation<R>>& rotations() const { return rotations_; }
    // The kept ones once more, those of the upper half alone first, then those of both.
    const std::vector<int>& byRows() const { return byRows_; }
    int count(Rows rows) const { return counts_[rows]; }

  private:
    // Makes one of two neighbours that are close, in the place of the former.
    bool join(Eigenpair& before, const Eigenpair& next, R tolerance) {
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

    std::vector<Eigenpair> kept_, deflated_;
    std::vector<ColumnRotation<R>> rotations_;
    std::vector<int> byRows_;
    std::array<int, 3> counts_{};
};

}  // namespace lumo
