#include "cudalib/launch.h"

using cudalib::at;
using lumo::Complex;

template <class T>
struct LasetBody : cudalib::KernelBody<cudalib::Tile> {
    LUMO_DEVICE static void run(cudalib::Tile tile, char uplo, int m, int n, T alpha, T beta, T* a,
                                int lda) {
        tile.columns(n, [&](auto column, int j) {
            T* to = &at(a, lda, 0, j);
            const int diagonal = j < m ? j : m, below = j < m ? j + 1 : m;
            if (uplo != 'L') column.rows(0, diagonal, [&](int i) { to[i] = alpha; });
            column.rows(diagonal, below, [&](int i) { to[i] = beta; });
            if (uplo != 'U') column.rows(below, m, [&](int i) { to[i] = alpha; });
        });
    }
};

template <class T>
LUMO_KERNEL void LASET_k(char uplo, int m, int n, T alpha, T beta, T* a, int lda) {
    cudalib::kernel<LasetBody<T>>(LUMO_STUB(LASET_k<T>), uplo, m, n, alpha, beta, a, lda);
}

namespace {

template <class T>
std::array<cudalib::Instance, 1> instances() {
    return {{cudalib::instance<&LASET_k<T>, LasetBody<T>>()}};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
