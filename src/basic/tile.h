// Square tiles of a matrix in shared memory, for kernels that read a matrix transposed.
#pragma once

#include "cudalib/block.h"

namespace lumo {

// A GPU transposes tiles of 16 x 16 through shared memory; a CPU tiles that fill its first cache.
#ifdef __CUDACC__
template <class T>
constexpr int tileOrder = 16;
#else
template <class T>
constexpr int tileOrder = sizeof(T) <= 4 ? 64 : 32;
#endif

template <class T>
using TileTeam = cudalib::Team<tileOrder<T>, tileOrder<T>>;

template <class T, bool conjugated>
LUMO_DEVICE T maybeConjugate(T value) {
    return conjugated ? conjugate(value) : value;
}

// A tile of the matrix, read by columns and written by rows. One column more than it needs:
// lanes that read a row of the tile would otherwise all want the same memory bank.
template <class T, bool conjugated = false>
struct TileBuffer {
    static constexpr int order = tileOrder<T>;
    T element[order][order + 1];

    // columns x rows elements from `from` on, one column after another.
    LUMO_DEVICE void load(const T* from, std::size_t ld, long rows, long columns) {
        TileTeam<T>::rows(columns, [&](int y) {
            const T* column = from + std::size_t(y) * ld;
            TileTeam<T>::lanes(
                rows, [&](int x) { element[y][x] = maybeConjugate<T, conjugated>(column[x]); });
        });
    }
    // The transposed tile: `rows` columns of `columns` elements.
    LUMO_DEVICE void storeTransposed(T* to, std::size_t ld, long rows, long columns) const {
        TileTeam<T>::rows(rows, [&](int y) {
            T* column = to + std::size_t(y) * ld;
            TileTeam<T>::lanes(columns, [&](int x) { column[x] = element[x][y]; });
        });
    }
};

// The rows x columns elements of op(A) from (i, j) on, a transposed A read through a buffer. The
// team needs a barrier between construction and the first element.
template <class T, bool transposed>
class OperandTile {
  public:
    LUMO_DEVICE OperandTile(TileBuffer<T>&, const T* a, int lda, long i, long j, long /*rows*/,
                            long /*columns*/)
        : from_(a + std::size_t(j) * lda + i), ld_(lda) {}
    LUMO_DEVICE T operator()(int x, int y) const { return from_[std::size_t(y) * ld_ + x]; }

  private:
    const T* from_;
    std::size_t ld_;
};

template <class T>
class OperandTile<T, true> {
  public:
    LUMO_DEVICE OperandTile(TileBuffer<T>& buffer, const T* a, int lda, long i, long j, long rows,
                            long columns)
        : buffer_(buffer) {
        buffer_.load(a + std::size_t(i) * lda + j, std::size_t(lda), columns, rows);
    }
    LUMO_DEVICE T operator()(int x, int y) const { return buffer_.element[x][y]; }

  private:
    TileBuffer<T>& buffer_;
};

}  // namespace lumo
