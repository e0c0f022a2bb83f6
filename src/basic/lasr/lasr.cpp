#include "basic/lasr/lasr.h"

#include <algorithm>

#include "basic/lasr/shape.h"
#include "common/exceptions.h"
#include "common/letters.h"
#include "cudalib/launch.h"

template <class Map, char side, char pivot, char direct, class T>
void LASR_k(int m, int n, const lumo::RealOf<T>* c, const lumo::RealOf<T>* s, T* a, int lda);

namespace lumo {
namespace {

template <class Real>
void check(char side, char pivot, char direct, int m, int n, const Real* c, const Real* s,
           const void* a, int lda) {
    if (!isOneOf(side, "LR")) throwArgumentError(-1);
    if (!isOneOf(pivot, "VTB")) throwArgumentError(-2);
    if (!isOneOf(direct, "FB")) throwArgumentError(-3);
    if (m == 0 || m == 1 || n == 0 || n == 1) return;
    if (m < 0) throwArgumentError(-4);
    if (n < 0) throwArgumentError(-5);
    if (!c) throwArgumentError(-6);
    if (!s) throwArgumentError(-7);
    if (!a) throwArgumentError(-8);
    if (lda < std::max(1, m)) throwArgumentError(-9);
}

}  // namespace

template <class T>
void LASR(char side, char pivot, char direct, int m, int n, const RealOf<T>* c, const RealOf<T>* s,
          T* a, int lda) {
    side = upper(side);
    pivot = upper(pivot);
    direct = upper(direct);
    check(side, pivot, direct, m, n, c, s, a, lda);
    // The check lets a negative size pass where the other one is 0 or 1.
    if (m <= 0 || n <= 0 || pivot != 'V') return;
    const bool forward = direct == 'F';
    if (side == 'L')
        cudalib::launch(
            ColumnMap(n),
            forward ? &LASR_k<ColumnMap, 'L', 'V', 'F', T> : &LASR_k<ColumnMap, 'L', 'V', 'B', T>,
            m, n, c, s, a, lda);
    else
        cudalib::launch(
            RowMap(m),
            forward ? &LASR_k<RowMap, 'R', 'V', 'F', T> : &LASR_k<RowMap, 'R', 'V', 'B', T>, m, n,
            c, s, a, lda);
}

LUMO_INSTANTIATE(LASR)

}  // namespace lumo
