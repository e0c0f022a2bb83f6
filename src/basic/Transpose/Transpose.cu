#include "basic/tile.h"
#include "cudalib/launch.h"

using lumo::Complex;
using lumo::TileBuffer;
using lumo::tileOrder;
using lumo::TileTeam;

template <class T, bool conjugated>
struct TransposeBody : cudalib::KernelBody<TileTeam<T>> {
    LUMO_DEVICE static void run(TileTeam<T> team, T* dst, unsigned long lddst, const T* src,
                                unsigned long ldsrc, unsigned long rows, unsigned long cols) {
        LUMO_SHARED TileBuffer<T, conjugated> tile;
        constexpr long order = tileOrder<T>;
        const long i = team.x() * order, j = team.y() * order;
        const long height = long(rows) - i, width = long(cols) - j;
        tile.load(src + i + j * ldsrc, ldsrc, height, width);
        team.barrier();
        tile.storeTransposed(dst + j + i * lddst, lddst, height, width);
    }
};

// Blocks on and below the diagonal exchange their tile with its mirror image.
template <class T, bool conjugated>
struct TransposeInplaceBody : cudalib::KernelBody<TileTeam<T>> {
    LUMO_DEVICE static void run(TileTeam<T> team, T* a, unsigned long lda, unsigned long n) {
        if (team.x() < team.y()) return;
        LUMO_SHARED TileBuffer<T, conjugated> lower, upper;
        constexpr long order = tileOrder<T>;
        const long i = team.x() * order, j = team.y() * order;
        const long height = long(n) - i, width = long(n) - j;
        lower.load(a + i + j * lda, lda, height, width);
        upper.load(a + j + i * lda, lda, width, height);
        team.barrier();
        lower.storeTransposed(a + j + i * lda, lda, height, width);
        upper.storeTransposed(a + i + j * lda, lda, width, height);
    }
};

template <class T, bool conjugated>
LUMO_KERNEL void Transpose_k(T* dst, unsigned long lddst, const T* src, unsigned long ldsrc,
                             unsigned long rows, unsigned long cols) {
    cudalib::kernel<TransposeBody<T, conjugated>>(LUMO_STUB(Transpose_k<T, conjugated>), dst, lddst,
                                                  src, ldsrc, rows, cols);
}
template <class T, bool conjugated>
LUMO_KERNEL void TransposeInplace_k(T* a, unsigned long lda, unsigned long n) {
    cudalib::kernel<TransposeInplaceBody<T, conjugated>>(
        LUMO_STUB(TransposeInplace_k<T, conjugated>), a, lda, n);
}

namespace {

template <class T>
std::array<cudalib::Instance, 4> instances() {
    return {cudalib::instance<&Transpose_k<T, false>, TransposeBody<T, false>>(),
            cudalib::instance<&Transpose_k<T, true>, TransposeBody<T, true>>(),
            cudalib::instance<&TransposeInplace_k<T, false>, TransposeInplaceBody<T, false>>(),
            cudalib::instance<&TransposeInplace_k<T, true>, TransposeInplaceBody<T, true>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
