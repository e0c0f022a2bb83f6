#include "cudalib/launch.h"

using cudalib::at;
using lumo::Complex;

template <int K, class T>
struct SetMatrixBody : cudalib::KernelBody<cudalib::Tile> {
    LUMO_DEVICE static void run(cudalib::Tile tile, int m, int n, T* a, int lda) {
        tile.columns(n, [&](auto column, int j) {
            T* to = &at(a, lda, 0, j);
            column.rows(0, m, [&](int i) { to[i] = T(K); });
        });
    }
};

template <int K, class T>
struct SetVectorBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, T* x, int incx) {
        elements.each(n, [&](std::size_t i) { x[i * std::size_t(incx)] = T(K); });
    }
};

template <int K, class T>
struct SetSingleBody : cudalib::KernelBody<cudalib::Single> {
    LUMO_DEVICE static void run(cudalib::Single single, T* p) {
        single.once([&] { *p = T(K); });
    }
};

// `upper`, `unitDiag`: of the triangle that remains.
template <int K, class T>
struct SetTriangularMatrixBody : cudalib::KernelBody<cudalib::Tile> {
    LUMO_DEVICE static void run(cudalib::Tile tile, bool upper, bool unitDiag, int m, int n, T* a,
                                int lda, T diagValue) {
        tile.columns(n, [&](auto column, int j) {
            T* to = &at(a, lda, 0, j);
            const int diagonal = j < m ? j : m, below = j < m ? j + 1 : m;
            column.rows(upper ? below : 0, upper ? m : diagonal, [&](int i) { to[i] = T(K); });
            if (unitDiag) column.rows(diagonal, below, [&](int i) { to[i] = diagValue; });
        });
    }
};

template <class Map, int K, class T>
LUMO_KERNEL void SetMatrix_k(int m, int n, T* a, int lda) {
    cudalib::kernel<SetMatrixBody<K, T>>(LUMO_STUB(SetMatrix_k<Map, K, T>), m, n, a, lda);
}
template <class Map, int K, class T>
LUMO_KERNEL void SetVector_k(int n, T* x, int incx) {
    cudalib::kernel<SetVectorBody<K, T>>(LUMO_STUB(SetVector_k<Map, K, T>), n, x, incx);
}
template <int K, class T>
LUMO_KERNEL void SetSingle_k(T* p) {
    cudalib::kernel<SetSingleBody<K, T>>(LUMO_STUB(SetSingle_k<K, T>), p);
}
template <int K, class T>
LUMO_KERNEL void SetTriangularMatrix_k(bool upper, bool unitDiag, int m, int n, T* a, int lda,
                                       T diagValue) {
    cudalib::kernel<SetTriangularMatrixBody<K, T>>(LUMO_STUB(SetTriangularMatrix_k<K, T>), upper,
                                                   unitDiag, m, n, a, lda, diagValue);
}

namespace {

template <int K, class T>
std::array<cudalib::Instance, 4> setters() {
    return {cudalib::instance<&SetMatrix_k<cudalib::Map2D, K, T>, SetMatrixBody<K, T>>(),
            cudalib::instance<&SetVector_k<cudalib::Map1D, K, T>, SetVectorBody<K, T>>(),
            cudalib::instance<&SetSingle_k<K, T>, SetSingleBody<K, T>>(),
            cudalib::instance<&SetTriangularMatrix_k<K, T>, SetTriangularMatrixBody<K, T>>()};
}

template <class T>
std::array<cudalib::Instance, 8> instances() {
    return cudalib::join(setters<0, T>(), setters<1, T>());
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
