#include "basic/Complement/Complement.h"

#include "cudalib/launch.h"

template <class Map, class T>
void ComplementVector_k(int n, T* x, int incx, T* y, int incy);
template <class T>
void ComplementSingle_k(T* x, T* y);

namespace lumo {

template <class T>
void complementVector(int n, const T* x, int incx, T* y, int incy) {
    using cudalib::Map1D;
    if (n > 0 && incx >= 1 && incy >= 1)
        cudalib::launch(Map1D(n), &ComplementVector_k<Map1D, T>, n, x, incx, y, incy);
}

template <class T>
void complementElement(const T* x, T* y) {
    cudalib::launch(cudalib::OneThread(), &ComplementSingle_k<T>, x, y);
}

LUMO_INSTANTIATE(complementVector)
LUMO_INSTANTIATE(complementElement)

}  // namespace lumo
