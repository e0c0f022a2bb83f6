#include "basic/tile.h"
#include "cudalib/kernel.h"

using lumo::OperandTile;
using lumo::RealOf;
using lumo::TileBuffer;
using lumo::TileTeam;

template <bool transposedA, bool transposedB, class T, class R>
LUMO_DEVICE void add(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb, T* c,
                     int ldc) {
    cudalib::kernel([&](TileTeam<T> team) LUMO_INLINED {
        LUMO_SHARED TileBuffer<T> bufferA, bufferB;
        const long i = team.x() * lumo::tileOrder<T>, j = team.y() * lumo::tileOrder<T>;
        const long height = m - i, width = n - j;
        const OperandTile<T, transposedA> opA(bufferA, a, lda, i, j, height, width);
        const OperandTile<T, transposedB> opB(bufferB, b, ldb, i, j, height, width);
        if (transposedA || transposedB) team.barrier();
        team.rows(width, [&](int y) {
            T* column = c + std::size_t(j + y) * ldc + i;
            team.lanes(height, [&](int x) { column[x] = alpha * opA(x, y) + beta * opB(x, y); });
        });
    });
}

template <class T, class R>
LUMO_KERNEL void MADD_NN_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    add<false, false>(m, n, alpha, a, lda, beta, b, ldb, c, ldc);
}
template <class T, class R>
LUMO_KERNEL void MADD_NT_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    add<false, true>(m, n, alpha, a, lda, beta, b, ldb, c, ldc);
}
template <class T, class R>
LUMO_KERNEL void MADD_TN_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    add<true, false>(m, n, alpha, a, lda, beta, b, ldb, c, ldc);
}
template <class T, class R>
LUMO_KERNEL void MADD_TT_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    add<true, true>(m, n, alpha, a, lda, beta, b, ldb, c, ldc);
}

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&MADD_NN_k<T, RealOf<T>>, cudalib::OnMatrix<T, 3>>,
              cudalib::Kernel<&MADD_NT_k<T, RealOf<T>>, cudalib::OnMatrix<T, 3>>,
              cudalib::Kernel<&MADD_TN_k<T, RealOf<T>>, cudalib::OnMatrix<T, 3>>,
              cudalib::Kernel<&MADD_TT_k<T, RealOf<T>>, cudalib::OnMatrix<T, 3>>)
