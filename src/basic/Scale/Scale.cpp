#include "basic/Scale/Scale.h"

#include "cudalib/launch.h"

template <class Map, class T, bool multiplies>
void Scale_k(int n, T* x, T* alpha, int incx);

namespace lumo {

template <class T>
void scale(int n, T* x, const T* alpha, int incx, int flag) {
    using cudalib::Map1D;
    if (n <= 0 || incx < 1) return;
    auto kernel = flag ? &Scale_k<Map1D, T, true> : &Scale_k<Map1D, T, false>;
    cudalib::launch(Map1D(n), kernel, n, x, alpha, incx);
}

LUMO_INSTANTIATE(scale)

}  // namespace lumo
