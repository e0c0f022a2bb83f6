#include "basic/LASWP/LASWP.h"
#include "cudalib/kernel.h"

using cudalib::Map1D;
using lumo::interchangesPerLaunch;
using lumo::swstruct;
using lumo::swstructWide;

// A lane owns one column and exchanges its elements one after another.
template <class T, class Interchanges>
LUMO_DEVICE void interchangeRows(int n, T* a, int lda, int start, int count,
                                 const Interchanges& piv) {
    cudalib::kernel<interchangesPerLaunch>([&](cudalib::Elements columns) LUMO_INLINED {
        constexpr int columnsAhead = 4;  // half to twice as many do as well
        const std::size_t ahead = std::size_t(columnsAhead) * lda;
        columns.each(n, [&](std::size_t j) {
            T* column = a + j * std::size_t(lda);
            cudalib::prefetch<true>(column + start, ahead);
            for (int r = 0; r < count; ++r) cudalib::prefetch<true>(column + piv.row[r], ahead);
            for (int r = 0; r < count; ++r) {
                const T other = column[piv.row[r]];
                column[piv.row[r]] = column[start + r];
                column[start + r] = other;
            }
        });
    });
}

// A lane owns one row. The interchanges are uniform for the block, so a CPU works on whole
// stretches of two columns at a time.
template <class T, class Interchanges>
LUMO_DEVICE void interchangeColumns(int n, T* a, int lda, int start, int count,
                                    const Interchanges& piv) {
    cudalib::kernel<interchangesPerLaunch>([&](cudalib::Elements rows) LUMO_INLINED {
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
    });
}

template <class Map, class T>
LUMO_KERNEL void KernelLASWP(int n, T* a, int lda, int start, int count,
                             LUMO_GRID_CONSTANT swstruct piv) {
    interchangeRows(n, a, lda, start, count, piv);
}
template <class Map, class T>
LUMO_KERNEL void KernelLASWPWide(int n, T* a, int lda, int start, int count,
                                 LUMO_GRID_CONSTANT swstructWide piv) {
    interchangeRows(n, a, lda, start, count, piv);
}
template <class Map, class T>
LUMO_KERNEL void KernelLASWPCOL(int n, T* a, int lda, int start, int count,
                                LUMO_GRID_CONSTANT swstruct piv) {
    interchangeColumns(n, a, lda, start, count, piv);
}
template <class Map, class T>
LUMO_KERNEL void KernelLASWPCOLWide(int n, T* a, int lda, int start, int count,
                                    LUMO_GRID_CONSTANT swstructWide piv) {
    interchangeColumns(n, a, lda, start, count, piv);
}

// Two elements are read and written for each interchange and each column (or row). Those of a row
// lie alone, but half of them beside those of the next interchange, which waits for this one.
template <class T, bool alone>
struct LaswpCost {
    template <class Interchanges>
    static cudalib::Work of(int n, T*, int lda, int, int count, const Interchanges&) {
        constexpr double one = sizeof(T), other = alone ? cudalib::bytesOfLoneElement<T> : one;
        cudalib::Work w{2. * n * count * (one + other)};
        w.turns = count;
        w.reach = double(n) * lda * sizeof(T);
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&KernelLASWP<Map1D, T>, LaswpCost<T, true>>,
              cudalib::Kernel<&KernelLASWPWide<Map1D, T>, LaswpCost<T, true>>,
              cudalib::Kernel<&KernelLASWPCOL<Map1D, T>, LaswpCost<T, false>>,
              cudalib::Kernel<&KernelLASWPCOLWide<Map1D, T>, LaswpCost<T, false>>)
