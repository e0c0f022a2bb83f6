#include "trd/companion/companion.h"

#include "cudalib/launch.h"
#include "trd/companion/shape.h"

template <class T>
void Companion_k(int n, const T* tau, const T* v, T* w, int count, const T* p, int ldp, T* row);

namespace lumo {

template <class T>
void companion(int n, const T* tau, const T* v, T* w, int count, const T* p, int ldp, T* row) {
    cudalib::launch(CompanionMap(), &Companion_k<T>, n, tau, v, w, count, p, ldp, row);
}

LUMO_INSTANTIATE(companion)

}  // namespace lumo
