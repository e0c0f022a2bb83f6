#include "basic/Transpose/Transpose.h"

#include "cudalib/launch.h"

template <class T, bool conjugated>
void Transpose_k(T* dst, unsigned long lddst, const T* src, unsigned long ldsrc, unsigned long rows,
                 unsigned long cols);
template <class T, bool conjugated>
void TransposeInplace_k(T* a, unsigned long lda, unsigned long n);

namespace lumo {

template <class T>
void transpose(T* dst, unsigned long lddst, const T* src, unsigned long ldsrc, unsigned long rows,
               unsigned long cols, bool conjugated) {
    auto kernel = conjugated ? &Transpose_k<T, true> : &Transpose_k<T, false>;
    cudalib::forEachSlab(long(rows), long(cols), [&](const cudalib::Slab& slab) {
        return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns, 16), kernel,
                               slab.of(dst, lddst, true), lddst, slab.of(src, ldsrc), ldsrc,
                               slab.rows, slab.columns);
    });
}

template <class T>
void transposeInplace(T* a, unsigned long lda, unsigned long n, bool conjugated) {
    if (n == 0) return;
    auto kernel = conjugated ? &TransposeInplace_k<T, true> : &TransposeInplace_k<T, false>;
    cudalib::launch(cudalib::Map2D(int(n), int(n), 16), kernel, a, lda, n);
}

LUMO_INSTANTIATE(transpose)
LUMO_INSTANTIATE(transposeInplace)

}  // namespace lumo
