#include "basic/TriangularFactor/TriangularFactor.h"

#include "basic/TriangularFactor/shape.h"
#include "cudalib/launch.h"

template <class T, bool forward>
void TriangularFactor_k(int count, const T* gram, int ldgram, const T* tau, T* t, int ldt);

namespace lumo {

template <class T>
void triangularFactor(bool forward, int count, const T* gram, int ldgram, const T* tau, T* t,
                      int ldt) {
    if (count < 1) return;
    cudalib::launch(FactorMap(count),
                    forward ? &TriangularFactor_k<T, true> : &TriangularFactor_k<T, false>, count,
                    gram, ldgram, tau, t, ldt);
}

LUMO_INSTANTIATE(triangularFactor)

}  // namespace lumo
