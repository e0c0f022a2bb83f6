#include "lapack/dqds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>
#include <vector>

#include "common/element_types.h"
#include "lapack/bdsqr_scalars.h"

namespace lumo {
namespace {

// The work is done on squares, in a type with room for them: nothing has to be scaled, and the
// rounding errors of many transforms do not show.
template <class Real>
using Wide = std::conditional_t<std::is_same_v<Real, float>, double, long double>;

template <class Real>
class Dqds {
    using W = Wide<Real>;

  public:
    Dqds(int n, const Real* d, const Real* e, std::int64_t maxSteps) : steps_(maxSteps) {
        for (Factors& f : factors_) {
            f.q.resize(std::size_t(n));
            f.e.resize(std::size_t(n - 1));
        }
        const auto square = [](Real x) { return W(x) * W(x); };
        std::transform(d, d + n, factors_[0].q.begin(), square);
        std::transform(e, e + (n - 1), factors_[0].e.begin(), square);
        eigenvalues_.reserve(std::size_t(n));
        blocks_.push_back({0, n - 1, 0, 0});
    }

    bool run() {
        while (!blocks_.empty()) {
            block_ = blocks_.back();
            blocks_.pop_back();
            if (!reduceBlock()) return false;
        }
        return std::all_of(eigenvalues_.begin(), eigenvalues_.end(),
                           [](W x) { return std::isfinite(x); });
    }
    // The squares of the singular values, in any order.
    std::vector<W>& eigenvalues() { return eigenvalues_; }

  private:
    // An off-diagonal may go that is so small beside an eigenvalue: the square of the relative
    // error allowed. Beside the q next to it would not do.
    static constexpr W tolerance = W(roundingUnit<Real>) * W(roundingUnit<Real>);

    // The bidiagonal factors of a matrix whose eigenvalues are those wanted, less the shifts so
    // far: L has ones and below them e, U has q and above it ones. There are two of them: a
    // transform is repeated from the same source if its shift was too large.
    struct Factors {
        std::vector<W> q, e;
    };
    // Rows that no others have to do with.
    struct Block {
        int first, last;
        W shift;   // the sum of the shifts so far
        int side;  // which factors
    };
    // Of a transform: the smallest pivot, the last one, the smallest off-diagonal.
    struct Extremes {
        W smallest, last, offDiagonal;
    };
    // Of all rows, of all but the last one, and of all but the last two.
    using Outcome = std::array<Extremes, 3>;
    static constexpr int unknown = 3;

    // Finds the eigenvalues of the block; upper parts that separate from it are put off.
    bool reduceBlock() {
        Outcome outcome{};
        for (int deflated = unknown;; deflated = 0) {  // rows since the last transform
            deflated = std::min(deflated + deflate(), unknown);
            if (block_.last < block_.first) return true;
            const bool mayPart =
                deflated == unknown || outcome[deflated].offDiagonal <= tolerance * block_.shift;
            if (mayPart && split()) deflated = unknown;
            if (deflated > 0) {
                boldness_ = 0;
                if (turn()) deflated = unknown;
            }
            const W shift = deflated == unknown ? W(0) : chooseShift(outcome[deflated]);
            if (!subtract(shift, outcome)) return false;
        }
    }

    // Takes the eigenvalues off that the last rows have converged to; how many.
    int deflate() {
        const auto& [q, e] = factors_[block_.side];
        const int before = block_.last;
        for (int& last = block_.last; last >= block_.first;) {
            if (last == block_.first || e[last - 1] <= tolerance * (block_.shift + q[last])) {
                eigenvalues_.push_back(block_.shift + q[last]);
                last -= 1;
            } else if (last - 1 == block_.first || e[last - 2] <= tolerance * block_.shift) {
                const W x = q[last - 1], y = e[last - 1], z = q[last];
                const W larger = (x + y + z + std::sqrt((x - z + y) * (x - z + y) + 4 * y * z)) / 2;
                eigenvalues_.push_back(block_.shift + larger);
                eigenvalues_.push_back(block_.shift + x * (z / larger));
                last -= 2;
            } else {
                break;
            }
        }
        return before - block_.last;
    }

    bool split() {
        const std::vector<W>& e = factors_[block_.side].e;
        for (int k = block_.last - 2; k >= block_.first; --k) {
            if (e[k] > tolerance * block_.shift) continue;
            blocks_.push_back({block_.first, k, block_.shift, block_.side});
            block_.first = k + 1;
            return true;
        }
        return false;
    }

    // Small elements belong to the end, where the iteration looks for the smallest eigenvalue.
    bool turn() {
        auto& [q, e] = factors_[block_.side];
        const int first = block_.first, last = block_.last;
        if (W(1.5) * q[first] >= q[last]) return false;
        std::reverse(q.begin() + first, q.begin() + last + 1);
        std::reverse(e.begin() + first, e.begin() + last);
        return true;
    }

    // Close to the smallest eigenvalue, and hardly ever above it.
    W chooseShift(const Extremes& pivots) {
        if (pivots.smallest == pivots.last) {
            // The last pivot is a Rayleigh quotient. What its vector has above the last row, whose
            // element is 1, tells its residual.
            const auto& [q, e] = factors_[block_.side];
            constexpr W useful = W(0.563);  // above, the bound is worse than a fraction
            W square = 0, term = 1;
            for (int k = block_.last - 1; k >= block_.first && square <= useful; --k) {
                const W before = term;
                term *= e[k] / q[k];
                square += term;
                if (e[k] > q[k]) square = 1;
                if (100 * std::max(term, before) < square) break;
            }
            square *= W(1.05);  // for the terms left out
            if (square < useful) return pivots.smallest * ((1 - std::sqrt(square)) / (1 + square));
        }
        boldness_ += (1 - boldness_) / 3;
        return boldness_ * pivots.smallest;
    }

    // A lower bound of the eigenvalues, good where they are a cluster.
    W gershgorinBound() {
        const auto& [q, e] = factors_[block_.side];
        W bound = std::numeric_limits<W>::infinity(), before = 0;
        for (int k = block_.first; k <= block_.last; ++k) {
            const W above = k > block_.first ? e[k - 1] : W(0);
            const W next = k < block_.last ? std::sqrt(q[k] * e[k]) : W(0);
            bound = std::min(bound, q[k] + above - before - next);
            before = next;
        }
        return bound;
    }

    // Transforms with the shift, or with less where it turns out to be above the smallest
    // eigenvalue. Gives up out of steps, and where numbers left the range.
    bool subtract(W shift, Outcome& outcome) {
        for (int attempt = 1;; ++attempt) {
            steps_ -= block_.last - block_.first;
            if (steps_ < 0) return false;
            outcome = transform(shift);
            if (outcome[0].smallest >= 0) break;
            if (shift == 0) return false;
            boldness_ = 0;
            if (attempt == 4)
                shift = 0;
            else if (outcome[1].smallest > 0)  // only the last one failed: it tells by how much
                shift = std::max((shift + outcome[0].last) * (1 - 4 * roundingUnit<W>), W(0));
            else
                shift = std::max(attempt == 1 ? gershgorinBound() : W(0), shift / 4);
        }
        block_.shift += shift;
        block_.side = 1 - block_.side;
        return true;
    }

    // xLASQ5. A NaN that comes up stays, and ends up as the smallest pivot.
    Outcome transform(W shift) {
        const W *q = factors_[block_.side].q.data(), *e = factors_[block_.side].e.data();
        W *newQ = factors_[1 - block_.side].q.data(), *newE = factors_[1 - block_.side].e.data();
        const int first = block_.first, last = block_.last;
        Outcome outcome{};
        W pivot = q[first] - shift, smallest = pivot;
        W offDiagonal = std::numeric_limits<W>::infinity();
        for (int k = first;; ++k) {
            if (last - k <= 2) outcome[last - k] = {smallest, pivot, offDiagonal};
            if (k == last) break;
            newQ[k] = pivot + e[k];
            const W ratio = q[k + 1] / newQ[k];
            newE[k] = e[k] * ratio;
            pivot = pivot * ratio - shift;
            smallest = std::min(pivot, smallest);
            offDiagonal = std::min(offDiagonal, newE[k]);
        }
        newQ[last] = pivot;
        return outcome;
    }

    std::array<Factors, 2> factors_;
    std::vector<Block> blocks_;  // put off
    Block block_{};              // at work
    std::vector<W> eigenvalues_;
    W boldness_ = 0;  // the part of the smallest pivot that a shift without a bound takes
    std::int64_t steps_;
};

}  // namespace

template <class Real>
bool dqds(int n, Real* d, Real* e, std::int64_t maxSteps) {
    Dqds<Real> iteration(n, d, e, maxSteps);
    if (!iteration.run()) return false;
    auto& squares = iteration.eigenvalues();
    std::sort(squares.begin(), squares.end(), std::greater<>());
    std::transform(squares.begin(), squares.end(), d, [](auto x) { return Real(std::sqrt(x)); });
    std::fill(e, e + (n - 1), Real(0));
    return true;
}

LUMO_INSTANTIATE_REAL(dqds)

}  // namespace lumo
