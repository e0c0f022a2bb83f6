#include "lapack/stedc.h"

#include <limits>
#include <numeric>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "divide/columns/columns.h"
#include "divide/secular/secular.h"
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
          numbers_(8 * std::size_t(n)),
          values_(d, d + n),
          z_(std::size_t(n)),
          order_(std::size_t(n)) {}

    void run() {
        divide();
        solveBlocks();
        while (bounds_.size() > 2) mergeLevel();
        sort();
    }

  private:
    using Pair = typename Deflation<R>::Eigenpair;

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
        upload(kept(), panel);
        LASET('A', n_, n_, R(0), R(0), q_.data, q_.ld);
        const DeviceList<ColumnMove> list(moves);
        moveColumns(n_, n_, list.data(), kept(), n_, q_.data, q_.ld);
        takeBoundaries();
    }

    void mergeLevel() {
        Level<R> level;
        level.numbers.resize(2 * std::size_t(n_));
        level.rows.resize(std::size_t(n_));
        std::vector<int> bounds{0};
        for (std::size_t k = 0; k + 2 < bounds_.size(); k += 2) {
            plan(bounds_[k], bounds_[k + 1], bounds_[k + 2], level);
            bounds.push_back(bounds_[k + 2]);
        }
        bounds_ = bounds;
        if (!level.merges.empty()) merge(level);
        if (bounds_.size() > 2 || !level.merges.empty()) takeBoundaries();
        for (const Merge<R>& m : level.merges)
            std::copy_n(&roots_[m.first], m.kept, &values_[m.first]);
        for (std::size_t k = 0; k + 1 < bounds_.size(); ++k)
            std::sort(&order_[bounds_[k]], &order_[bounds_[k]] + (bounds_[k + 1] - bounds_[k]),
                      [&](int i, int j) { return values_[i] < values_[j]; });
    }

    // Rows and columns first to end, whose halves meet at `middle`.
    void plan(int first, int middle, int end, Level<R>& level) {
        const R coupling = e_[middle - 1], root = std::sqrt(R(0.5));
        std::vector<Pair> pairs;
        pairs.reserve(std::size_t(end - first));
        for (int j = first; j < middle; ++j)
            pairs.push_back(
                {order_[j], values_[order_[j]], z_[order_[j]] * root, Deflation<R>::upper});
        for (int j = middle; j < end; ++j)
            pairs.push_back({order_[j], values_[order_[j]],
                             z_[order_[j]] * (coupling < 0 ? -root : root), Deflation<R>::lower});
        std::inplace_merge(pairs.begin(), pairs.begin() + (middle - first), pairs.end(),
                           [](const Pair& x, const Pair& y) { return x.d < y.d; });
        const R rho = 2 * std::abs(coupling);
        const Deflation<R> deflation(pairs, rho);
        const int kept = int(deflation.kept().size());
        std::iota(&order_[first], &order_[first] + (end - first), first);
        if (kept == 0) return;  // no column moves
        level.order = std::max(level.order, end - first);
        level.merges.push_back({first, end - first, kept, int(level.rotations.size()),
                                int(deflation.rotations().size()), rho});
        level.products.push_back({middle - first, deflation.count(Deflation<R>::upper),
                                  deflation.count(Deflation<R>::both),
                                  deflation.count(Deflation<R>::lower)});
        level.rotations.insert(level.rotations.end(), deflation.rotations().begin(),
                               deflation.rotations().end());
        for (int j = 0; j < kept; ++j) {
            const int row = deflation.byRows()[j];
            const Pair& pair = deflation.kept()[row];
            level.numbers[first + j] = deflation.kept()[j].d;
            level.numbers[n_ + first + j] = deflation.kept()[j].z;
            level.rows[first + j] = row;
            level.gathered.push_back({pair.column, first + j,
                                      pair.rows == Deflation<R>::lower ? middle : first,
                                      pair.rows == Deflation<R>::upper ? middle : end});
        }
        int to = first + kept;
        for (const Pair& p : deflation.deflated()) {
            level.gathered.push_back({p.column, to, first, end});
            level.putBack.push_back({to, to, first, end});
            values_[to++] = p.d;
        }
    }

    void merge(const Level<R>& level) {
        const int merges = int(level.merges.size());
        const DeviceList<Merge<R>> list(level.merges);
        const DeviceList<ColumnRotation<R>> rotations(level.rotations);
        const DeviceList<ColumnMove> gathered(level.gathered), putBack(level.putBack);
        const DeviceList<int> rows(level.rows);
        upload(numbers(0), level.numbers);
        if (!level.rotations.empty())
            rotateColumns(merges, level.order, list.data(), rotations.data(), q_.data, q_.ld);
        moveColumns(n_, int(level.gathered.size()), gathered.data(), q_.data, q_.ld, kept(), n_);
        moveColumns(n_, int(level.putBack.size()), putBack.data(), kept(), n_, q_.data, q_.ld);

        const SecularProblem<R> problem{merges,     level.order, list.data(), numbers(0),
                                        numbers(1), rows.data(), numbers(5),  numbers(2),
                                        numbers(6), numbers(3),  numbers(4)};
        secularRoots(problem);
        secularWeights(problem);
        secularVectors(problem, vectors(), n_);
        for (int k = 0; k < merges; ++k) multiply(level.merges[k], level.products[k]);
    }

    // Of columns that are zero in one half, that half is left out.
    void multiply(const Merge<R>& m, const typename Level<R>::Products& p) const {
        const int lower = m.order - p.upper, first = m.first;
        product(p.upper, m.kept, p.fromUpper + p.both, first, first, first);
        product(lower, m.kept, p.both + p.fromLower, first + p.upper, first + p.fromUpper, first);
    }
    // So many rows from `row` on of columns `first` on, by `count` columns of kept() and rows of
    // vectors(), both from `from` on.
    void product(int rows, int columns, int count, int row, int from, int first) const {
        R* const result = q_.at(row, first);
        if (count == 0)
            LASET('A', rows, columns, R(0), R(0), result, q_.ld);
        else
            gemm('N', 'N', rows, columns, count, R(1), at(kept(), n_, row, from), n_,
                 at(vectors(), n_, from, first), n_, R(0), result, q_.ld);
    }

    // Brings the roots of this level, and z of the next one: the rows next to a cut.
    void takeBoundaries() {
        std::vector<int> rows;
        for (std::size_t k = 0; k + 1 < bounds_.size(); ++k)
            rows.insert(rows.end(), std::size_t(bounds_[k + 1] - bounds_[k]),
                        k % 2 ? bounds_[k] : bounds_[k + 1] - 1);
        const DeviceList<int> list(rows);
        takeElements(n_, list.data(), q_.data, q_.ld, numbers(7));
        // What failed must not be sorted, for it may be no number.
        cudalib::synchronizeAndCheck();
        std::vector<R> both(2 * std::size_t(n_));
        cudalib::checkCudaError(
            cudaMemcpy(both.data(), numbers(6), both.size() * sizeof(R), cudaMemcpyDeviceToHost));
        roots_.assign(both.begin(), both.begin() + n_);
        z_.assign(both.begin() + n_, both.end());
    }

    void sort() {
        for (int j = 0; j < n_; ++j) d_[j] = values_[order_[j]];
        if (std::is_sorted(order_.begin(), order_.end())) return;
        std::vector<ColumnMove> moves;
        for (int j = 0; j < n_; ++j) moves.push_back({order_[j], j, 0, n_});
        const DeviceList<ColumnMove> list(moves);
        moveColumns(n_, n_, list.data(), q_.data, q_.ld, kept(), n_);
        LACPY('A', n_, n_, kept(), n_, q_.data, q_.ld);
    }

    R* kept() const { return matrices_.data(); }
    R* vectors() const { return matrices_.data() + std::size_t(n_) * std::size_t(n_); }
    R* numbers(int k) const { return numbers_.data() + std::size_t(k) * std::size_t(n_); }

    const int n_;
    R *const d_, *const e_;
    const MatrixView<R> q_;
    const cudalib::Workspace<R> matrices_, numbers_;
    std::vector<int> bounds_;
    std::vector<R> values_, roots_, z_;  // by columns of Q
    std::vector<int> order_;             // each block's columns, by ascending values
};

// Divided by its largest element, squares and products of a matrix stay in range.
template <class R>
class Scaled {
  public:
    Scaled(int n, R* d, R* e) : n_(n), d_(d) {
        for (int i = 0; i < n; ++i) norm_ = std::max(norm_, std::abs(d[i]));
        for (int i = 0; i + 1 < n; ++i) norm_ = std::max(norm_, std::abs(e[i]));
        if (norm_ == 0) return;
        std::transform(d, d + n, d, [this](R x) { return x / norm_; });
        std::transform(e, e + (n - 1), e, [this](R x) { return x / norm_; });
    }
    void undo() const {
        if (norm_ > 0) std::transform(d_, d_ + n_, d_, [this](R x) { return x * norm_; });
    }

  private:
    const int n_;
    R* const d_;
    R norm_ = 0;
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
    const Scaled<R> scaled(n, d, e);
    DivideAndConquer<R>(n, d, e, q, ldq).run();
    scaled.undo();
}

LUMO_INSTANTIATE_REAL(stedc)

}  // namespace lumo
