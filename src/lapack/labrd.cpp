#include "lapack/labrd.h"

#include "basic/Conjugate/Conjugate.h"
#include "basic/Copy/Copy.h"
#include "basic/Scale/Scale.h"
#include "basic/larfg/larfg.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "blas/gemv/gemv.h"
#include "brd/brd/TakeHead.h"
#include "common/matrix.h"

namespace lumo {
namespace {

template <class T>
void conjugateIfComplex(int n, T* x, int incx) {
    if constexpr (isComplex<T>) conjugateVector(n, x, incx);
}

// The products with what is left of A go through the library's own kernel, made for long columns;
// those with the panel's few columns or rows are CUBLAS's.

// y := y - op(A) x.
template <class T>
void subtractProduct(char op, int m, int n, const T* a, int lda, const T* x, int incx, T* y) {
    cublas::gemv(op, m, n, T(-1), a, lda, x, incx, T(1), y, 1);
}
// y := op(A) x.
template <class T>
void panelProduct(char op, int m, int n, const T* a, int lda, const T* x, T* y) {
    cublas::gemv(op, m, n, T(1), a, lda, x, 1, T(0), y, 1);
}
template <class T>
void product(char op, int m, int n, const T* a, int lda, const T* x, T* y) {
    gemv(op, m, n, T(1), a, lda, x, 1, T(0), y, 1);
}

}  // namespace

template <class T>
void Labrd<T>::run() const {
    for (int i = 0; i < nb; ++i) {
        if (m >= n) {
            reduceColumn(i, i, d + i);
            reduceRow(i, i + 1, e + i);
        } else {
            reduceRow(i, i, d + i);
            reduceColumn(i, i + 1, e + i);
        }
    }
}

// Brings column i up to date, from row `head` on, as many rows as have been reduced before;
// generates its reflector and column i of Y.
template <class T>
void Labrd<T>::reduceColumn(int i, int head, RealOf<T>* value) const {
    const int rows = m - head, right = n - i - 1;
    T* const v = at(a, lda, head, i);
    conjugateIfComplex(i, y + i, ldy);
    subtractProduct('N', rows, i, a + head, lda, y + i, ldy, v);
    conjugateIfComplex(i, y + i, ldy);
    subtractProduct('N', rows, head, x + head, ldx, at(a, lda, 0, i), 1, v);
    larfg(rows, v, v + 1, 1, tauq + i);
    takeHead(v, value);

    // One product with all columns of A gives A22^H v and, above, the V^H v that it is corrected
    // by; element i between them is nobody's.
    T* const yi = at(y, ldy, 0, i);
    T* const below = yi + i + 1;
    product(adjointLetter<T>, rows, n, a + head, lda, v, yi);
    subtractProduct('N', right, i, y + i + 1, ldy, yi, 1, below);
    panelProduct(adjointLetter<T>, rows, head, x + head, ldx, v, yi);
    subtractProduct(adjointLetter<T>, head, right, at(a, lda, 0, i + 1), lda, yi, 1, below);
    scale(right, below, tauq + i, 1, 1);
}

// The same for row i and column i of X, from column `head` on. The row is worked on as a vector of
// adjacent elements, conjugated.
template <class T>
void Labrd<T>::reduceRow(int i, int head, RealOf<T>* value) const {
    const int columns = n - head, down = m - i - 1;
    T* const rest = at(a, lda, 0, head);
    copyVector(columns, rest + i, lda, row, 1);
    conjugateIfComplex(columns, row, 1);
    conjugateIfComplex(head, a + i, lda);
    subtractProduct('N', columns, head, y + head, ldy, a + i, lda, row);
    conjugateIfComplex(head, a + i, lda);
    conjugateIfComplex(i, x + i, ldx);
    subtractProduct(adjointLetter<T>, i, columns, rest, lda, x + i, ldx, row);
    conjugateIfComplex(i, x + i, ldx);
    larfg(columns, row, row + 1, 1, taup + i);
    takeHead(row, value);

    T* const xi = at(x, ldx, 0, i);
    T* const below = xi + i + 1;
    product('N', m, columns, rest, lda, row, xi);
    subtractProduct('N', down, i, x + i + 1, ldx, xi, 1, below);
    panelProduct(adjointLetter<T>, columns, head, y + head, ldy, row, xi);
    subtractProduct('N', down, head, a + i + 1, lda, xi, 1, below);
    scale(down, below, taup + i, 1, 1);
    conjugateIfComplex(columns, row, 1);
    copyVector(columns, row, 1, rest + i, lda);
}

template struct Labrd<float>;
template struct Labrd<double>;
template struct Labrd<Complex<float>>;
template struct Labrd<Complex<double>>;

}  // namespace lumo
