#include "basic/parts.h"
#include "cudalib/kernel.h"

namespace lumo {

template <Part part, class T>
LUMO_DEVICE void conjugatePart(int m, int n, T* a, int lda) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            T* x = &cudalib::at(a, lda, 0, j);
            column.rows(firstRow<part>(j), endRow<part>(j, m),
                        [&](int i) { x[i] = conjugate(x[i]); });
        });
    });
}

template <class Map, class T>
LUMO_KERNEL void ConjugateVector_k(int n, T* x, int incx) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) {
            T& element = x[i * std::size_t(incx)];
            element = conjugate(element);
        });
    });
}
template <class Map, class T>
LUMO_KERNEL void ConjugateMatrix_k(int m, int n, T* a, int lda) {
    conjugatePart<Part::whole>(m, n, a, lda);
}
template <class Map, class T>
LUMO_KERNEL void ConjugateMatrixLower_k(int m, int n, T* a, int lda) {
    conjugatePart<Part::lower>(m, n, a, lda);
}

LUMO_REGISTER(ElementTypes,
              cudalib::Kernel<&ConjugateVector_k<cudalib::Map1D, T>, cudalib::OnVector<T>>)
LUMO_REGISTER(ComplexTypes,
              cudalib::Kernel<&ConjugateMatrix_k<cudalib::Map2D, T>, cudalib::OnMatrix<T>>,
              cudalib::Kernel<&ConjugateMatrixLower_k<cudalib::Map2D, T>, cudalib::OnTriangle<T>>)

}  // namespace lumo
