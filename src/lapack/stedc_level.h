// What the host prepares of a level of divide and conquer, and what becomes of the columns of a
// matrix of vectors.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "basic/LASET/LASET.h"
#include "blas/gemm.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "divide/columns/columns.h"
#include "divide/secular/secular.h"
#include "lapack/stedc_deflation.h"
#include "platform/cuda3.h"

namespace lumo {

// A copy in device memory.
template <class V>
void upload(V* device, const std::vector<V>& host) {
    if (!host.empty())
        cudalib::checkCudaError(
            cudaMemcpy(device, host.data(), host.size() * sizeof(V), cudaMemcpyHostToDevice));
}

// A list in device memory.
template <class V>
class DeviceList {
  public:
    explicit DeviceList(const std::vector<V>& host) : values_(host.size()) {
        upload(values_.data(), host);
    }
    const V* data() const { return values_.data(); }

  private:
    cudalib::Workspace<V> values_;
};

// A tridiagonal or bidiagonal matrix whose largest element is made `size`, until undo().
template <class R>
class Scaled {
  public:
    Scaled(R size, int n, R* d, R* e) : n_(n), d_(d) {
        R largest = 0;
        for (int i = 0; i < n; ++i) largest = std::max(largest, std::abs(d[i]));
        for (int i = 0; i + 1 < n; ++i) largest = std::max(largest, std::abs(e[i]));
        norm_ = largest / size;
        if (isZero()) return;
        std::transform(d, d + n, d, [this](R x) { return x / norm_; });
        std::transform(e, e + (n - 1), e, [this](R x) { return x / norm_; });
    }
    bool isZero() const { return norm_ == 0; }
    void undo() const {
        if (!isZero()) std::transform(d_, d_ + n_, d_, [this](R x) { return x * norm_; });
    }

  private:
    const int n_;
    R* const d_;
    R norm_;
};

// What a level's merges do to the columns of one matrix of vectors. Merges of which all has been
// deflated are none.
template <class R>
struct ColumnsOfLevel {
    // What belongs to one of `merges`.
    struct Products {
        int upper, lower, fromUpper, both, fromLower;  // rows, and columns by their rows
    };

    std::vector<Merge<R>> merges;
    std::vector<Products> products;
    std::vector<ColumnRotation<R>> rotations;
    std::vector<ColumnMove> gathered, putBack;
    int order = 0;  // the largest merge's

    // A merge of rows first to end, whose halves meet at `middle`, after rotations[rotationsFrom],
    // ... of its own.
    void add(const Deflation<R>& deflation, int first, int middle, int end, R rho,
             int rotationsFrom) {
        rotations.insert(rotations.end(), deflation.rotations().begin(),
                         deflation.rotations().end());
        order = std::max(order, end - first);
        merges.push_back({first, end - first, int(deflation.kept().size()), rotationsFrom,
                          int(rotations.size()) - rotationsFrom, rho});
        products.push_back({middle - first, end - middle, deflation.count(Deflation<R>::upper),
                            deflation.count(Deflation<R>::both),
                            deflation.count(Deflation<R>::lower)});
        int to = first;
        for (int row : deflation.byRows()) {
            const auto& pair = deflation.kept()[row];
            gathered.push_back({pair.column, to++,
                                pair.rows == Deflation<R>::lower ? middle : first,
                                pair.rows == Deflation<R>::upper ? middle : end});
        }
        for (const auto& pair : deflation.deflated()) {
            gathered.push_back({pair.column, to, first, end});
            putBack.push_back({to, to, first, end});
            ++to;
        }
    }
};

// The kept values of a level's merges: of each, in its place, its first ones.
template <class R>
struct ValuesOfLevel {
    std::vector<R> numbers;  // d and, behind all of them, z
    std::vector<int> rows;   // by rows

    explicit ValuesOfLevel(int n) : numbers(2 * std::size_t(n)), rows(std::size_t(n)) {}

    // z divided by `length`, of a merge whose place begins at `first`.
    void add(const Deflation<R>& deflation, int first, R length) {
        const auto& kept = deflation.kept();
        for (std::size_t j = 0; j < kept.size(); ++j) {
            numbers[first + j] = kept[j].d;
            numbers[rows.size() + first + j] = kept[j].z / length;
            rows[first + j] = deflation.byRows()[j];
        }
    }
};

// What the device knows of a level's secular equations.
template <class R>
class SecularEquations {
  public:
    explicit SecularEquations(int n) : n_(n), numbers_(8 * std::size_t(n)) {}

    // f(problem), with the roots and weights that it needs to make vectors.
    template <class Of, class F>
    void solve(const ColumnsOfLevel<R>& columns, const ValuesOfLevel<R>& values, F f) const {
        const DeviceList<Merge<R>> merges(columns.merges);
        const DeviceList<int> rows(values.rows);
        upload(array(0), values.numbers);
        const SecularProblem<R> problem{int(columns.merges.size()),
                                        columns.order,
                                        merges.data(),
                                        array(0),
                                        array(1),
                                        rows.data(),
                                        array(5),
                                        array(2),
                                        array(6),
                                        array(3),
                                        array(4)};
        secularRoots<Of>(problem);
        secularWeights<Of>(problem);
        f(problem);
    }

    // Brings the roots, and z of the next level: elements (rows[j], j) of the vectors.
    void fetch(const MatrixView<R>& q, const std::vector<int>& rows) {
        const DeviceList<int> list(rows);
        takeElements(n_, list.data(), q.data, q.ld, array(7));
        // What failed must not be sorted, for it may be no number.
        cudalib::synchronizeAndCheck();
        std::vector<R> both(2 * std::size_t(n_));
        cudalib::checkCudaError(
            cudaMemcpy(both.data(), array(6), both.size() * sizeof(R), cudaMemcpyDeviceToHost));
        roots.assign(both.begin(), both.begin() + n_);
        z.assign(both.begin() + n_, both.end());
    }

    std::vector<R> roots, z;  // by columns

  private:
    R* array(int k) const { return numbers_.data() + std::size_t(k) * std::size_t(n_); }

    const int n_;
    const cudalib::Workspace<R> numbers_;
};

// A matrix of vectors of order n, and two that it shares with others: of the columns that a level
// keeps, and of what they are multiplied by.
template <class R>
struct MatrixOfVectors {
    int n;
    MatrixView<R> q;
    R *kept, *factors;

    // What is not deflated goes to `kept`, by rows; what is, behind it.
    void separate(const ColumnsOfLevel<R>& level) const {
        const DeviceList<Merge<R>> merges(level.merges);
        const DeviceList<ColumnRotation<R>> rotations(level.rotations);
        if (!level.rotations.empty())
            rotateColumns(int(level.merges.size()), level.order, merges.data(), rotations.data(),
                          q.data, q.ld);
        move(level.gathered, q.data, q.ld, kept, n);
        move(level.putBack, kept, n, q.data, q.ld);
    }

    // Of columns that are zero in one half, that half is left out.
    void multiply(const ColumnsOfLevel<R>& level) const {
        for (std::size_t k = 0; k < level.merges.size(); ++k) {
            const Merge<R>& m = level.merges[k];
            const auto& p = level.products[k];
            const int first = m.first;
            product(p.upper, m.kept, p.fromUpper + p.both, first, first, first);
            product(p.lower, m.kept, p.both + p.fromLower, first + p.upper, first + p.fromUpper,
                    first);
        }
    }

    void move(const std::vector<ColumnMove>& moves, const R* from, int ldFrom, R* to,
              int ldTo) const {
        const DeviceList<ColumnMove> list(moves);
        moveColumns(n, int(moves.size()), list.data(), from, ldFrom, to, ldTo);
    }

  private:
    // So many rows from `row` on of columns `first` on, by `count` columns of `kept` and rows of
    // `factors`, both from `from` on.
    void product(int rows, int columns, int count, int row, int from, int first) const {
        R* const result = q.at(row, first);
        if (count == 0)
            LASET('A', rows, columns, R(0), R(0), result, q.ld);
        else
            gemm('N', 'N', rows, columns, count, R(1), at(kept, n, row, from), n,
                 at(factors, n, from, first), n, R(0), result, q.ld);
    }
};

}  // namespace lumo
