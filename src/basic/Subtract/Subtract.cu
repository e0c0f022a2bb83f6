#include "basic/tile.h"
#include "cudalib/kernel.h"

using lumo::OperandTile;
using lumo::TileBuffer;
using lumo::tileOrder;
using lumo::TileTeam;

// rows x columns elements of A from (i, j) on := those of opA - opB.
template <class T, class TileA, class TileB>
LUMO_DEVICE void storeDifference(TileTeam<T> team, T* a, int lda, long i, long j, long rows,
                                 long columns, const TileA& opA, const TileB& opB) {
    team.rows(columns, [&](int y) {
        T* column = a + std::size_t(j + y) * lda + i;
        team.lanes(rows, [&](int x) { column[x] = opA(x, y) - opB(x, y); });
    });
}

template <bool transposedB, class T>
LUMO_DEVICE void subtract(int m, int n, T* a, int lda, const T* b, int ldb) {
    cudalib::kernel([&](TileTeam<T> team) LUMO_INLINED {
        LUMO_SHARED TileBuffer<T> bufferA, bufferB;
        const long i = team.x() * tileOrder<T>, j = team.y() * tileOrder<T>;
        const OperandTile<T, false> opA(bufferA, a, lda, i, j, m - i, n - j);
        const OperandTile<T, transposedB> opB(bufferB, b, ldb, i, j, m - i, n - j);
        if (transposedB) team.barrier();
        storeDifference(team, a, lda, i, j, m - i, n - j, opA, opB);
    });
}

// A is read transposed and written in place, so the two tiles that mirror each other belong to
// one block, which reads both before it writes either. In a matrix that is not square a tile's
// mirror image may lie outside of the grid: it is read, but nobody writes it.
template <bool transposedB, class T>
LUMO_DEVICE void subtractFromTransposed(int m, int n, T* a, int lda, const T* b, int ldb) {
    cudalib::kernel([&](TileTeam<T> team) LUMO_INLINED {
        const long i = team.x() * tileOrder<T>, j = team.y() * tileOrder<T>;
        const bool mirrored = j < m && i < n && i != j;
        if (mirrored && i < j) return;
        const long height = m - i, width = n - j;
        const long mirrorHeight = mirrored ? m - j : 0, mirrorWidth = mirrored ? n - i : 0;

        LUMO_SHARED TileBuffer<T> bufferA, bufferB, mirrorA, mirrorB;
        const OperandTile<T, true> opA(bufferA, a, lda, i, j, height, width);
        const OperandTile<T, transposedB> opB(bufferB, b, ldb, i, j, height, width);
        const OperandTile<T, true> opA2(mirrorA, a, lda, j, i, mirrorHeight, mirrorWidth);
        const OperandTile<T, transposedB> opB2(mirrorB, b, ldb, j, i, mirrorHeight, mirrorWidth);
        team.barrier();
        storeDifference(team, a, lda, i, j, height, width, opA, opB);
        storeDifference(team, a, lda, j, i, mirrorHeight, mirrorWidth, opA2, opB2);
    });
}

template <class T>
LUMO_KERNEL void SubtractMatrix_NN_k(int m, int n, T* a, int lda, T* b, int ldb) {
    subtract<false>(m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void SubtractMatrix_NT_k(int m, int n, T* a, int lda, T* b, int ldb) {
    subtract<true>(m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void SubtractMatrix_TN_k(int m, int n, T* a, int lda, T* b, int ldb) {
    subtractFromTransposed<false>(m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void SubtractMatrix_TT_k(int m, int n, T* a, int lda, T* b, int ldb) {
    subtractFromTransposed<true>(m, n, a, lda, b, ldb);
}

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&SubtractMatrix_NN_k<T>, cudalib::OnMatrix<T, 3>>,
              cudalib::Kernel<&SubtractMatrix_NT_k<T>, cudalib::OnMatrix<T, 3>>,
              cudalib::Kernel<&SubtractMatrix_TN_k<T>, cudalib::OnMatrix<T, 3>>,
              cudalib::Kernel<&SubtractMatrix_TT_k<T>, cudalib::OnMatrix<T, 3>>)
