#include "basic/LACPY/LACPY.h"

#include <algorithm>

#include "common/exceptions.h"
#include "common/letters.h"
#include "cudalib/launch.h"

template <class T>
void LACPY_G_Kernel(int m, int n, T* a, int lda, T* b, int ldb);
template <class T>
void LACPY_U_Kernel(int m, int n, T* a, int lda, T* b, int ldb);
template <class T>
void LACPY_L_Kernel(int m, int n, T* a, int lda, T* b, int ldb);

namespace lumo {
namespace {

void check(char& uplo, int m, int n, const void* a, int lda, const void* b, int ldb) {
    uplo = upper(uplo);
    if (!isOneOf(uplo, "ULAF")) throwArgumentError(-1);
    if (m < 0) throwArgumentError(-2);
    if (n < 0) throwArgumentError(-3);
    if (m == 0 || n == 0) return;
    if (!a) throwArgumentError(-4);
    if (lda < std::max(1, m)) throwArgumentError(-5);
    if (!b) throwArgumentError(-6);
    if (ldb < std::max(1, m)) throwArgumentError(-7);
}

}  // namespace

template <class T>
void LACPY(char uplo, int m, int n, const T* a, int lda, T* b, int ldb) {
    check(uplo, m, n, a, lda, b, ldb);
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        const char part = slab.part(uplo);
        if (!part) return cudaSuccess;
        auto kernel = part == 'L'   ? &LACPY_L_Kernel<T>
                      : part == 'U' ? &LACPY_U_Kernel<T>
                                    : &LACPY_G_Kernel<T>;
        return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns), kernel, slab.rows,
                               slab.columns, slab.of(a, lda), lda, slab.of(b, ldb), ldb);
    });
}

LUMO_INSTANTIATE(LACPY)

}  // namespace lumo
