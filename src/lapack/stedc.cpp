#include "lapack/stedc.h"

#include <limits>
#include <numeric>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/host_lapack.h"
#include "lapack/stedc_level.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

template <class R>
class DivideAndConquer {
  public:
    DivideAndConquer(int n, R* d, R* e, R* q, int ldq)
        : n_(n),
          d_(d),
          e_(e),
          q_{q, ldq},
          matrices_(2 * std::size_t(n) * std::size_t(n)),
          vectors_{n, q_, matrices_.data(), at(matrices_.data(), n, 0, n)},
          equations_(n),
          values_(d, d + n),
          order_(std::size_t(n)) {}

    void run() {
        divide();
        solveBlocks();
        while (bounds_.size() > 2) mergeLevel();
        sort();
    }

  private:
    using Pair = typename Deflation<R>::Pair;
    // What a level's merges come to, as the host knows it before their roots are found.
    struct Level {
        ColumnsOfLevel<R> columns;
        ValuesOfLevel<R> values;
    };

    // Halves it until its blocks are small; block k is that of rows bounds_[k] to bounds_[k + 1].
    // What is cut off, an e, is put back by the merge as e v v^T.
    void divide() {
        bounds_ = {0, n_};
        while (n_ > stedcLeaf * int(bounds_.size() - 1)) {
            std::vector<int> halves{0};
            for (std::size_t k = 1; k < bounds_.size(); ++k) {
                halves.push_back((bounds_[k - 1] + bounds_[k]) / 2);
                halves.push_back(bounds_[k]);
            }
            bounds_ = halves;
        }
        for (std::size_t k = 1; k + 1 < bounds_.size(); ++k) {
            const int cut = bounds_[k];
            values_[cut - 1] -= std::abs(e_[cut - 1]);
            values_[cut] -= std::abs(e_[cut - 1]);
        }
    }

    void solveBlocks() {
        const int widest = stedcLeaf;
        std::vector<R> panel(std::size_t(n_) * std::size_t(widest)), off(e_, e_ + n_ - 1),
            work(2 * std::size_t(widest));
        off.push_back(0);
        std::vector<ColumnMove> moves;
        for (std::size_t k = 0; k + 1 < bounds_.size(); ++k) {
            const int first = bounds_[k], end = bounds_[k + 1];
            const int info = host::steqr(end - first, &values_[first], &off[first], &panel[first],
                                         n_, work.data());
            if (info > 0) throwDataError((first + 1) * (n_ + 1) + end);
            checkReturnedInfo(info);
            for (int j = first; j < end; ++j) moves.push_back({j - first, j, first, end});
        }
        std::iota(order_.begin(), order_.end(), 0);
        upload(vectors_.kept, panel);
        LASET('A', n_, n_, R(0), R(0), q_.data, q_.ld);
        vectors_.move(moves, vectors_.kept, n_, q_.data, q_.ld);
        takeBoundaries();
    }

    void mergeLevel() {
        Level level{{}, ValuesOfLevel<R>(n_)};
        std::vector<int> bounds{0};
        for (std::size_t k = 0; k + 2 < bounds_.size(); k += 2) {
            plan(bounds_[k], bounds_[k + 1], bounds_[k + 2], level);
            bounds.push_back(bounds_[k + 2]);
        }
        bounds_ = bounds;
        const auto& merges = level.columns.merges;
        if (!merges.empty()) merge(level);
        if (bounds_.size() > 2 || !merges.empty()) takeBoundaries();
        for (const Merge<R>& m : merges)
            std::copy_n(&equations_.roots[m.first], m.kept, &values_[m.first]);
        for (std::size_t k = 0; k + 1 < bounds_.size(); ++k)
            std::sort(&order_[bounds_[k]], &order_[bounds_[k]] + (bounds_[k + 1] - bounds_[k]),
                      [&](int i, int j) { return values_[i] < values_[j]; });
    }

    // Rows and columns first to end, whose halves meet at `middle`.
    void plan(int first, int middle, int end, Level& level) {
        const R coupling = e_[middle - 1], root = std::sqrt(R(0.5));
        std::vector<Pair> pairs;
        pairs.reserve(std::size_t(end - first));
        for (int j = first; j < middle; ++j)
            pairs.push_back({order_[j], values_[order_[j]], equations_.z[order_[j]] * root,
                             Deflation<R>::upper});
        for (int j = middle; j < end; ++j)
            pairs.push_back({order_[j], values_[order_[j]],
                             equations_.z[order_[j]] * (coupling < 0 ? -root : root),
                             Deflation<R>::lower});
        std::inplace_merge(pairs.begin(), pairs.begin() + (middle - first), pairs.end(),
                           [](const Pair& x, const Pair& y) { return x.d < y.d; });
        const R rho = 2 * std::abs(coupling);
        const auto deflation = Deflation<R>::ofEigenvalues(pairs, rho);
        const auto& kept = deflation.kept();
        std::iota(&order_[first], &order_[first] + (end - first), first);
        if (kept.empty()) return;  // no column moves
        level.columns.add(deflation, first, middle, end, rho, int(level.columns.rotations.size()));
        level.values.add(deflation, first, 1);
        int to = first + int(kept.size());
        for (const Pair& p : deflation.deflated()) values_[to++] = p.d;
    }

    void merge(const Level& level) const {
        vectors_.separate(level.columns);
        equations_.template solve<Eigenvalues>(
            level.columns, level.values, [&](const SecularProblem<R>& problem) {
                secularVectors<Eigenvalues>(problem, vectors_.factors, n_);
                vectors_.multiply(level.columns);
            });
    }

    // The rows next to a cut.
    void takeBoundaries() {
        std::vector<int> rows;
        for (std::size_t k = 0; k + 1 < bounds_.size(); ++k)
            rows.insert(rows.end(), std::size_t(bounds_[k + 1] - bounds_[k]),
                        k % 2 ? bounds_[k] : bounds_[k + 1] - 1);
        equations_.fetch(q_, rows);
    }

    void sort() {
        for (int j = 0; j < n_; ++j) d_[j] = values_[order_[j]];
        if (std::is_sorted(order_.begin(), order_.end())) return;
        std::vector<ColumnMove> moves;
        moves.reserve(std::size_t(n_));
        for (int j = 0; j < n_; ++j) moves.push_back({order_[j], j, 0, n_});
        vectors_.move(moves, q_.data, q_.ld, vectors_.kept, n_);
        LACPY('A', n_, n_, vectors_.kept, n_, q_.data, q_.ld);
    }

    const int n_;
    R *const d_, *const e_;
    const MatrixView<R> q_;
    const cudalib::Workspace<R> matrices_;
    const MatrixOfVectors<R> vectors_;
    SecularEquations<R> equations_;
    std::vector<int> bounds_;
    std::vector<R> values_;   // by columns of Q
    std::vector<int> order_;  // each block's columns, by ascending values
};

}  // namespace

template <class R>
void stedc(int n, R* d, R* e, R* q, int ldq) {
    if (n == 0) return;
    const auto finite = [](R x) { return std::isfinite(x); };
    if (!std::all_of(d, d + n, finite) || !std::all_of(e, e + (n - 1), finite)) {
        std::fill_n(d, n, std::numeric_limits<R>::quiet_NaN());
        throwDataError(n);
    }
    const Scaled<R> scaled(1, n, d, e);  // squares and products stay in range
    DivideAndConquer<R>(n, d, e, q, ldq).run();
    scaled.undo();
}

LUMO_INSTANTIATE_REAL(stedc)

}  // namespace lumo
