#include "basic/PermuteRows/PermuteRows.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "cudalib/launch.h"
#include "cudalib/transfer.h"

template <class T>
void PermuteRows_k(int n, T* a, int lda, lumo::RowMoves moves);
template <class T>
void PermuteRowsThere_k(int n, T* a, int lda, const lumo::RowMoves* moves);
template <class Map, class T>
void GatherRows_k(int m, int n, const T* src, int ldsrc, const int* rows, T* dst, int lddst);

namespace lumo {
namespace {

struct MovesMap {
    int n;
    dim3 blockShape() const { return {movedAtOnce, 1, 1}; }
    dim3 gridShape() const { return {unsigned(cudalib::ceilDiv(n, columnsOfBlock)), 1, 1}; }
};

// What the interchanges of rows first, first + 1, ... (from 0) with rows ipiv[...] - 1 come to.
RowMoves movesOf(int first, int count, const int* ipiv) {
    unsigned rows[movedAtOnce], content[movedAtOnce];
    int touched = count;
    for (int r = 0; r < count; ++r) rows[r] = content[r] = unsigned(first + r);
    for (int r = 0; r < count; ++r) {
        const auto pivot = unsigned(ipiv[r] - 1);
        const unsigned below = pivot - unsigned(first);
        int at = below < unsigned(count)
                     ? int(below)
                     : int(std::find(rows + count, rows + touched, pivot) - rows);
        if (at == touched) {
            rows[at] = content[at] = pivot;
            ++touched;
        }
        std::swap(content[r], content[at]);
    }
    RowMoves moves{};
    for (int r = 0; r < touched; ++r) {
        if (content[r] == rows[r]) continue;
        moves.from[moves.count] = content[r];
        moves.to[moves.count++] = rows[r];
    }
    return moves;
}

// Elements of the copy of right-hand sides that a permutation is read from.
constexpr int stripElements = 1 << 22;

}  // namespace

template <class T>
void permuteRows(int n, T* a, int lda, int k1, int k2, const int* ipiv) {
    if (n < 1) return;
    for (int i = k1; i <= k2; i += interchangesAtOnce) {
        const RowMoves moves =
            movesOf(i - 1, std::min(interchangesAtOnce, k2 - i + 1), ipiv + i - 1);
        if (moves.count > 0) cudalib::launch(MovesMap{n}, &PermuteRows_k<T>, n, a, lda, moves);
    }
}

LUMO_INSTANTIATE(permuteRows)

template <class T>
void permuteRowsThere(int n, T* a, int lda, const RowMoves* moves) {
    if (n > 0) cudalib::launch(MovesMap{n}, &PermuteRowsThere_k<T>, n, a, lda, moves);
}

LUMO_INSTANTIATE(permuteRowsThere)

template <class T>
RowPermutation<T>::RowPermutation(int n, int nrhs)
    : n_(n),
      nrhs_(nrhs),
      strip_(std::min(nrhs, std::max(1, stripElements / std::max(1, n)))),
      rows_(std::size_t(n)),
      copy_(std::size_t(n) * std::size_t(strip_)) {}

template <class T>
void RowPermutation<T>::apply(const int* ipiv, T* b, int ldb, bool undo) const {
    if (n_ == 0 || nrhs_ == 0) return;
    std::vector<int> rows(static_cast<std::size_t>(n_));
    std::iota(rows.begin(), rows.end(), 0);
    for (int k = 0; k < n_; ++k) {
        const int i = undo ? n_ - 1 - k : k;
        std::swap(rows[std::size_t(i)], rows[std::size_t(ipiv[i] - 1)]);
    }
    cudalib::checkCudaError(
        cudaMemcpy(rows_.data(), rows.data(), sizeof(int) * rows.size(), cudaMemcpyHostToDevice));
    const std::size_t width = std::size_t(n_) * sizeof(T), pitch = std::size_t(ldb) * sizeof(T);
    for (int j = 0; j < nrhs_; j += strip_) {
        const int columns = std::min(strip_, nrhs_ - j);
        T* const part = b + std::size_t(j) * std::size_t(ldb);
        cudalib::checkCudaError(cudalib::copy2D(
            copy_.data(), width, part, pitch, width, std::size_t(columns), cudaMemcpyDeviceToDevice,
            cudalib::CopyMode::asynchronous, cudalib::currentStream));
        cudalib::forEachSlab(n_, columns, [&](const cudalib::Slab& slab) {
            return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns),
                                   &GatherRows_k<cudalib::Map2D, T>, slab.rows, slab.columns,
                                   copy_.data() + slab.j * std::size_t(n_), n_,
                                   rows_.data() + slab.i, slab.of(part, std::size_t(ldb)), ldb);
        });
    }
}

template class RowPermutation<float>;
template class RowPermutation<double>;
template class RowPermutation<Complex<float>>;
template class RowPermutation<Complex<double>>;

}  // namespace lumo
