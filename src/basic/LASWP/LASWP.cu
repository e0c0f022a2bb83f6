#include "basic/LASWP/LASWP.h"
#include "cudalib/launch.h"

using cudalib::at;
using lumo::Complex;
using lumo::swstruct;
using lumo::swstructWide;

// A lane owns one column and exchanges its elements one after another.
template <class T>
struct RowsBody : cudalib::KernelBody<cudalib::Elements, lumo::interchangesPerLaunch> {
    template <class Interchanges>
    LUMO_DEVICE static void run(cudalib::Elements columns, int n, T* a, int lda, int start,
                                int count, const Interchanges& piv) {
        constexpr int columnsAhead = 4;  // half to twice as many do as well
        const std::size_t ahead = std::size_t(columnsAhead) * lda;
        columns.each(n, [&](std::size_t j) {
            T* column = a + j * std::size_t(lda);
            cudalib::prefetch(column + start, ahead);
            for (int r = 0; r < count; ++r) cudalib::prefetch(column + piv.row[r], ahead);
            for (int r = 0; r < count; ++r) {
                const T other = column[piv.row[r]];
                column[piv.row[r]] = column[start + r];
                column[start + r] = other;
            }
        });
    }
};

// A lane owns one row. The interchanges are uniform for the block, so a CPU works on whole
// stretches of two columns at a time.
template <class T>
struct ColumnsBody : cudalib::KernelBody<cudalib::Elements, lumo::interchangesPerLaunch> {
    template <class Interchanges>
    LUMO_DEVICE static void run(cudalib::Elements rows, int n, T* a, int lda, int start, int count,
                                const Interchanges& piv) {
        for (int r = 0; r < count; ++r) {
            if (int(piv.row[r]) == start + r) continue;
            T* one = a + std::size_t(start + r) * lda;
            T* two = a + std::size_t(piv.row[r]) * lda;
            rows.each(n, [&](std::size_t i) {
                const T other = two[i];
                two[i] = one[i];
                one[i] = other;
            });
        }
    }
};

template <class Map, class T>
LUMO_KERNEL void KernelLASWP(int n, T* a, int lda, int start, int count,
                             LUMO_GRID_CONSTANT swstruct piv) {
    cudalib::kernel<RowsBody<T>>(LUMO_STUB(KernelLASWP<Map, T>), n, a, lda, start, count, piv);
}
template <class Map, class T>
LUMO_KERNEL void KernelLASWPWide(int n, T* a, int lda, int start, int count,
                                 LUMO_GRID_CONSTANT swstructWide piv) {
    cudalib::kernel<RowsBody<T>>(LUMO_STUB(KernelLASWPWide<Map, T>), n, a, lda, start, count, piv);
}
template <class Map, class T>
LUMO_KERNEL void KernelLASWPCOL(int n, T* a, int lda, int start, int count,
                                LUMO_GRID_CONSTANT swstruct piv) {
    cudalib::kernel<ColumnsBody<T>>(LUMO_STUB(KernelLASWPCOL<Map, T>), n, a, lda, start, count,
                                    piv);
}
template <class Map, class T>
LUMO_KERNEL void KernelLASWPCOLWide(int n, T* a, int lda, int start, int count,
                                    LUMO_GRID_CONSTANT swstructWide piv) {
    cudalib::kernel<ColumnsBody<T>>(LUMO_STUB(KernelLASWPCOLWide<Map, T>), n, a, lda, start, count,
                                    piv);
}

namespace {

using cudalib::Map1D;

template <class T>
std::array<cudalib::Instance, 4> instances() {
    return {cudalib::instance<&KernelLASWP<Map1D, T>, RowsBody<T>>(),
            cudalib::instance<&KernelLASWPWide<Map1D, T>, RowsBody<T>>(),
            cudalib::instance<&KernelLASWPCOL<Map1D, T>, ColumnsBody<T>>(),
            cudalib::instance<&KernelLASWPCOLWide<Map1D, T>, ColumnsBody<T>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
