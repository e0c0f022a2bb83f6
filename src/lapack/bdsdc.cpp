#include "lapack/bdsdc.h"

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

// What the largest element is made. Of the least value that deflation leaves, which is about the
// norm times the square of the rounding unit, the equations know the fourth power.
template <class R>
constexpr R usedNorm = 1024;

// Rows between blocks are set aside: what is left are blocks of a row less than columns, but for
// the last one, which is square. The column to spare is that of the row behind the block, in whose
// place of V stands the vector that the block takes to zero. U begins with unit vectors there. So
// each merge has a value for each of its columns, of U as of V: 0 for the row between its halves.
template <class R>
class DivideAndConquer {
  public:
    DivideAndConquer(int n, R* d, R* e, R* u, int ldu, R* v, int ldv)
        : n_(n),
          d_(d),
          e_(e),
          matrices_(2 * std::size_t(n) * std::size_t(n)),
          u_{n, {u, ldu}, matrices_.data(), at(matrices_.data(), n, 0, n)},
          v_{n, {v, ldv}, matrices_.data(), at(matrices_.data(), n, 0, n)},
          equations_(n),
          values_(std::size_t(n)),
          order_(std::size_t(n)) {}

    void run() {
        divide();
        solveBlocks();
        while (cuts_.size() > 2) mergeLevel();
        sort();
    }

  private:
    using Pair = typename Deflation<R>::Pair;
    struct Level {
        ColumnsOfLevel<R> left, right;
        ValuesOfLevel<R> values;
    };

    // Block k has the rows between cuts_[k] and cuts_[k + 1].
    int begin(std::size_t k) const { return cuts_[k] + 1; }
    int end(std::size_t k) const { return cuts_[k + 1]; }
    // Whether it has a column to spare, at its end.
    int extra(std::size_t k) const { return end(k) < n_; }

    void divide() {
        cuts_ = {-1, n_};
        while (n_ > (stedcLeaf + 1) * int(cuts_.size() - 1)) {  // a half has a row at least
            std::vector<int> halves{-1};
            for (std::size_t k = 0; k + 1 < cuts_.size(); ++k) {
                halves.push_back((begin(k) + end(k)) / 2);
                halves.push_back(end(k));
            }
            cuts_ = halves;
        }
    }

    // Panels have the blocks' vectors, one below the other.
    void solveBlocks() {
        int widest = 0;
        for (std::size_t k = 0; k + 1 < cuts_.size(); ++k)
            widest = std::max(widest, end(k) + extra(k) - begin(k));
        const std::size_t size = std::size_t(n_) * std::size_t(widest), ld = std::size_t(widest);
        std::vector<R> u(size), v(size), d(d_, d_ + n_), e(e_, e_ + n_ - 1), vt(ld * ld),
            work(4 * ld);
        e.push_back(0);
        std::vector<ColumnMove> ofU, ofV;
        for (std::size_t k = 0; k + 1 < cuts_.size(); ++k) {
            const int first = begin(k), rows = end(k) - first, columns = rows + extra(k);
            std::fill(vt.begin(), vt.end(), R(0));
            for (int i = 0; i < columns; ++i) vt[std::size_t(i) * (ld + 1)] = 1;
            for (int i = 0; i < rows; ++i) *at(&u[first], n_, i, i) = 1;
            const int info = host::lasdq(extra(k), rows, &d[first], &e[first], vt.data(), widest,
                                         &u[first], n_, work.data());
            if (info > 0) throwDataError((first + 1) * (n_ + 1) + end(k));
            checkReturnedInfo(info);
            for (int j = 0; j < columns; ++j)
                for (int i = 0; i < columns; ++i)
                    *at(&v[first], n_, i, j) = vt[std::size_t(i) * ld + std::size_t(j)];
            for (int j = 0; j < rows; ++j) ofU.push_back({j, first + j, first, end(k)});
            for (int j = 0; j < columns; ++j) ofV.push_back({j, first + j, first, first + columns});
            std::copy_n(&d[first], rows, &values_[first]);
            std::iota(&order_[first], &order_[first] + rows, first);
        }
        sortBlocks();
        start(u_, u, ofU, 1);
        start(v_, v, ofV, 0);
        takeBoundaries();
    }
    void start(const MatrixOfVectors<R>& to, const std::vector<R>& panel,
               const std::vector<ColumnMove>& moves, R diagonal) const {
        upload(to.kept, panel);
        LASET('A', n_, n_, R(0), diagonal, to.q.data, to.q.ld);
        to.move(moves, to.kept, n_, to.q.data, to.q.ld);
    }

    void mergeLevel() {
        Level level{{}, {}, ValuesOfLevel<R>(n_)};
        std::vector<int> cuts{-1};
        for (std::size_t k = 0; k + 2 < cuts_.size(); k += 2) {
            plan(begin(k), end(k), end(k + 1), extra(k + 1), level);
            cuts.push_back(end(k + 1));
        }
        cuts_ = cuts;
        merge(level);
        takeBoundaries();
        for (const Merge<R>& m : level.left.merges)
            std::copy_n(&equations_.roots[m.first], m.kept, &values_[m.first]);
        sortBlocks();
    }
    void sortBlocks() {
        for (std::size_t k = 0; k + 1 < cuts_.size(); ++k)
            std::sort(&order_[begin(k)], &order_[begin(k)] + (end(k) - begin(k)),
                      [&](int i, int j) { return values_[i] < values_[j]; });
    }

    // Rows first to end, whose halves are apart by row `middle`.
    void plan(int first, int middle, int end, int extra, Level& level) {
        const R alpha = d_[middle], beta = e_[middle];
        const int spare = int(level.right.rotations.size());
        // The halves' vectors to spare: one takes part, the other is the merged matrix's.
        R z = alpha * equations_.z[middle];
        if (extra) {
            const R other = beta * equations_.z[end], length = std::hypot(z, other);
            level.right.rotations.push_back(
                {middle, end, length > 0 ? z / length : R(1), length > 0 ? other / length : R(0)});
            z = length;
        }
        std::vector<Pair> pairs{{middle, 0, z, Deflation<R>::both}};
        pairs.reserve(std::size_t(end - first));
        for (int j = first; j < middle; ++j)
            pairs.push_back({order_[j], values_[order_[j]], alpha * equations_.z[order_[j]],
                             Deflation<R>::upper});
        for (int j = middle + 1; j < end; ++j)
            pairs.push_back({order_[j], values_[order_[j]], beta * equations_.z[order_[j]],
                             Deflation<R>::lower});
        std::inplace_merge(pairs.begin() + 1, pairs.begin() + 1 + (middle - first), pairs.end(),
                           [](const Pair& x, const Pair& y) { return x.d < y.d; });
        // What is far below the whole matrix's norm is none of its values.
        const R norm =
            std::max({std::abs(alpha), std::abs(beta), values_[order_[middle - 1]],
                      middle + 1 < end ? values_[order_[end - 1]] : R(0), usedNorm<R> / 128});
        const auto deflation =
            Deflation<R>::ofSingularValues(std::move(pairs), 8 * roundingUnit<R> * norm);
        const auto& kept = deflation.kept();
        R rho = 0;
        for (const Pair& p : kept) rho += p.z * p.z;
        level.left.add(deflation, first, middle + 1, end, rho, int(level.left.rotations.size()));
        level.right.add(deflation, first, middle + 1, end + extra, rho, spare);
        level.values.add(deflation, first, std::sqrt(rho));
        std::iota(&order_[first], &order_[first] + (end - first), first);
        int to = first + int(kept.size());
        for (const Pair& p : deflation.deflated()) values_[to++] = p.d;
    }

    void merge(const Level& level) const {
        equations_.template solve<SingularValues>(
            level.left, level.values, [&](const SecularProblem<R>& problem) {
                u_.separate(level.left);
                secularVectors<SingularValues, true>(problem, u_.factors, n_);
                u_.multiply(level.left);
                v_.separate(level.right);
                secularVectors<SingularValues>(problem, v_.factors, n_);
                v_.multiply(level.right);
            });
    }

    // V's rows next to a cut.
    void takeBoundaries() {
        std::vector<int> rows;
        for (std::size_t k = 0; k + 1 < cuts_.size(); ++k)
            rows.insert(rows.end(), std::size_t(end(k) + extra(k) - begin(k)),
                        k % 2 ? begin(k) : std::min(end(k), n_ - 1));
        equations_.fetch(v_.q, rows);
    }

    void sort() {
        std::reverse(order_.begin(), order_.end());
        for (int j = 0; j < n_; ++j) d_[j] = values_[order_[j]];
        std::vector<ColumnMove> moves;
        moves.reserve(std::size_t(n_));
        for (int j = 0; j < n_; ++j) moves.push_back({order_[j], j, 0, n_});
        for (const MatrixOfVectors<R>& vectors : {u_, v_}) {
            vectors.move(moves, vectors.q.data, vectors.q.ld, vectors.kept, n_);
            LACPY('A', n_, n_, vectors.kept, n_, vectors.q.data, vectors.q.ld);
        }
    }

    const int n_;
    R *const d_, *const e_;
    const cudalib::Workspace<R> matrices_;
    const MatrixOfVectors<R> u_, v_;
    SecularEquations<R> equations_;
    std::vector<int> cuts_;
    std::vector<R> values_;   // by columns
    std::vector<int> order_;  // each block's columns, by ascending values
};

}  // namespace

template <class R>
void bdsdc(int n, R* d, R* e, R* u, int ldu, R* v, int ldv) {
    if (n == 0) return;
    const auto finite = [](R x) { return std::isfinite(x); };
    if (!std::all_of(d, d + n, finite) || !std::all_of(e, e + (n - 1), finite)) {
        std::fill_n(d, n, std::numeric_limits<R>::quiet_NaN());
        throwDataError(n);
    }
    const Scaled<R> scaled(usedNorm<R>, n, d, e);
    if (scaled.isZero()) {
        std::fill_n(d, n, R(0));
        LASET('A', n, n, R(0), R(1), u, ldu);
        LASET('A', n, n, R(0), R(1), v, ldv);
        return;
    }
    DivideAndConquer<R>(n, d, e, u, ldu, v, ldv).run();
    scaled.undo();
}

LUMO_INSTANTIATE_REAL(bdsdc)

}  // namespace lumo
