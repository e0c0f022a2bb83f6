#include "basic/parts.h"
#include "cudalib/launch.h"

namespace lumo {

template <class T>
struct ConjugateVectorBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, T* x, int incx) {
        elements.each(n, [&](std::size_t i) {
            T& element = x[i * std::size_t(incx)];
            element = conjugate(element);
        });
    }
};

template <class T, Part part>
struct ConjugatePartBody : cudalib::KernelBody<cudalib::Tile> {
    LUMO_DEVICE static void run(cudalib::Tile tile, int m, int n, T* a, int lda) {
        tile.columns(n, [&](auto column, int j) {
            T* x = &cudalib::at(a, lda, 0, j);
            column.rows(firstRow<part>(j), endRow<part>(j, m),
                        [&](int i) { x[i] = conjugate(x[i]); });
        });
    }
};

template <class Map, class T>
LUMO_KERNEL void ConjugateVector_k(int n, T* x, int incx) {
    cudalib::kernel<ConjugateVectorBody<T>>(LUMO_STUB(ConjugateVector_k<Map, T>), n, x, incx);
}
template <class Map, class T>
LUMO_KERNEL void ConjugateMatrix_k(int m, int n, T* a, int lda) {
    cudalib::kernel<ConjugatePartBody<T, Part::whole>>(LUMO_STUB(ConjugateMatrix_k<Map, T>), m, n,
                                                       a, lda);
}
template <class Map, class T>
LUMO_KERNEL void ConjugateMatrixLower_k(int m, int n, T* a, int lda) {
    cudalib::kernel<ConjugatePartBody<T, Part::lower>>(LUMO_STUB(ConjugateMatrixLower_k<Map, T>), m,
                                                       n, a, lda);
}

namespace {

using cudalib::Map1D;
using cudalib::Map2D;

template <class T>
std::array<cudalib::Instance, 1> vectors() {
    return {{cudalib::instance<&ConjugateVector_k<Map1D, T>, ConjugateVectorBody<T>>()}};
}

template <class T>
std::array<cudalib::Instance, 2> matrices() {
    return {
        cudalib::instance<&ConjugateMatrix_k<Map2D, T>, ConjugatePartBody<T, Part::whole>>(),
        cudalib::instance<&ConjugateMatrixLower_k<Map2D, T>, ConjugatePartBody<T, Part::lower>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(
    vectors<float>(), vectors<double>(), vectors<Complex<float>>(), vectors<Complex<double>>(),
    matrices<Complex<float>>(), matrices<Complex<double>>())};

}  // namespace
}  // namespace lumo
