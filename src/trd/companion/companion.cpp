#include "trd/companion/companion.h"

#include "cudalib/launch.h"
#include "trd/companion/shape.h"

template <class T>
void Companion_k(int n, const T* tau, const T* v, T* w, T* conjugatedW, T* conjugatedV);

namespace lumo {

template <class T>
void companion(int n, const T* tau, const T* v, T* w, T* conjugatedW, T* conjugatedV) {
    cudalib::launch(CompanionMap(), &Companion_k<T>, n, tau, v, w, conjugatedW, conjugatedV);
}

LUMO_INSTANTIATE(companion)

}  // namespace lumo
