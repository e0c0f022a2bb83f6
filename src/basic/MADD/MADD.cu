#include "basic/tile.h"
#include "cudalib/launch.h"

using lumo::Complex;
using lumo::OperandTile;
using lumo::RealOf;
using lumo::TileBuffer;
using lumo::TileTeam;

template <class T, bool transposedA, bool transposedB>
struct MaddBody : cudalib::KernelBody<TileTeam<T>> {
    using R = RealOf<T>;
    LUMO_DEVICE static void run(TileTeam<T> team, int m, int n, R alpha, const T* a, int lda,
                                R beta, const T* b, int ldb, T* c, int ldc) {
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
    }
};

template <class T, class R>
LUMO_KERNEL void MADD_NN_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    cudalib::kernel<MaddBody<T, false, false>>(LUMO_STUB(MADD_NN_k<T, R>), m, n, alpha, a, lda,
                                               beta, b, ldb, c, ldc);
}
template <class T, class R>
LUMO_KERNEL void MADD_NT_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    cudalib::kernel<MaddBody<T, false, true>>(LUMO_STUB(MADD_NT_k<T, R>), m, n, alpha, a, lda, beta,
                                              b, ldb, c, ldc);
}
template <class T, class R>
LUMO_KERNEL void MADD_TN_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    cudalib::kernel<MaddBody<T, true, false>>(LUMO_STUB(MADD_TN_k<T, R>), m, n, alpha, a, lda, beta,
                                              b, ldb, c, ldc);
}
template <class T, class R>
LUMO_KERNEL void MADD_TT_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb,
                           T* c, int ldc) {
    cudalib::kernel<MaddBody<T, true, true>>(LUMO_STUB(MADD_TT_k<T, R>), m, n, alpha, a, lda, beta,
                                             b, ldb, c, ldc);
}

namespace {

template <class T, class R = RealOf<T>>
std::array<cudalib::Instance, 4> instances() {
    return {cudalib::instance<&MADD_NN_k<T, R>, MaddBody<T, false, false>>(),
            cudalib::instance<&MADD_NT_k<T, R>, MaddBody<T, false, true>>(),
            cudalib::instance<&MADD_TN_k<T, R>, MaddBody<T, true, false>>(),
            cudalib::instance<&MADD_TT_k<T, R>, MaddBody<T, true, true>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
