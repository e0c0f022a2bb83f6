// BLAS on arrays: each function is the one of its name in lumo.h, sizes taken from the arrays,
// whose shapes the Python layer has checked.
#include "arrays.h"
#include "bind.h"
#include "call.h"

namespace lumo::python {
namespace {

// The inner size of a product with op(A).
template <class T>
int inner(char trans, const Matrix<T>& a) {
    return trans == 'N' ? a.columns : a.rows;
}

template <class T>
void gemm(char transa, char transb, T alpha, Matrix<T> a, Matrix<T> b, T beta, Matrix<T> c) {
    call(ofType<T>(lumoSgemm, lumoDgemm, lumoCgemm, lumoZgemm), transa, transb, c.rows, c.columns,
         inner(transa, a), raw(alpha), raw(a.data), a.ld, raw(b.data), b.ld, raw(beta), raw(c.data),
         c.ld);
}

template <class T>
void gemv(char trans, T alpha, Matrix<T> a, Vector<T> x, T beta, Vector<T> y) {
    call(ofType<T>(lumoSgemv, lumoDgemv, lumoCgemv, lumoZgemv), trans, a.rows, a.columns,
         raw(alpha), raw(a.data), a.ld, raw(x.data), x.increment, raw(beta), raw(y.data),
         y.increment);
}

// symm for real elements, hemm for complex ones.
template <class T>
void selfAdjointProduct(char side, char uplo, T alpha, Matrix<T> a, Matrix<T> b, T beta,
                        Matrix<T> c) {
    call(ofType<T>(lumoSsymm, lumoDsymm, lumoChemm, lumoZhemm), side, uplo, c.rows, c.columns,
         raw(alpha), raw(a.data), a.ld, raw(b.data), b.ld, raw(beta), raw(c.data), c.ld);
}

template <class T>
void syrk(char uplo, char trans, T alpha, Matrix<T> a, T beta, Matrix<T> c) {
    call(ofType<T>(lumoSsyrk, lumoDsyrk, lumoCsyrk, lumoZsyrk), uplo, trans, c.rows,
         inner(trans, a), raw(alpha), raw(a.data), a.ld, raw(beta), raw(c.data), c.ld);
}

template <class T>
void herk(char uplo, char trans, RealOf<T> alpha, Matrix<T> a, RealOf<T> beta, Matrix<T> c) {
    call(ofType<T>(nullptr, nullptr, lumoCherk, lumoZherk), uplo, trans, c.rows, inner(trans, a),
         alpha, raw(a.data), a.ld, beta, raw(c.data), c.ld);
}

// syr2k for real elements, her2k for complex ones.
template <class T>
void selfAdjointUpdate(char uplo, char trans, T alpha, Matrix<T> a, Matrix<T> b, RealOf<T> beta,
                       Matrix<T> c) {
    call(ofType<T>(lumoSsyr2k, lumoDsyr2k, lumoCher2k, lumoZher2k), uplo, trans, c.rows,
         inner(trans, a), raw(alpha), raw(a.data), a.ld, raw(b.data), b.ld, beta, raw(c.data),
         c.ld);
}

template <class T>
void trmm(char side, char uplo, char trans, char diag, T alpha, Matrix<T> a, Matrix<T> b) {
    call(ofType<T>(lumoStrmm, lumoDtrmm, lumoCtrmm, lumoZtrmm), side, uplo, trans, diag, b.rows,
         b.columns, raw(alpha), raw(a.data), a.ld, raw(b.data), b.ld);
}

template <class T>
void trsm(char side, char uplo, char trans, char diag, T alpha, Matrix<T> a, Matrix<T> b) {
    call(ofType<T>(lumoStrsm, lumoDtrsm, lumoCtrsm, lumoZtrsm), side, uplo, trans, diag, b.rows,
         b.columns, raw(alpha), raw(a.data), a.ld, raw(b.data), b.ld);
}

template <class T>
void bindBlasOf(py::module_& m) {
    m.def("gemm", &gemm<T>, Unlocked());
    m.def("gemv", &gemv<T>, Unlocked());
    m.def("syrk", &syrk<T>, Unlocked());
    m.def("trmm", &trmm<T>, Unlocked());
    m.def("trsm", &trsm<T>, Unlocked());
    constexpr bool real = std::is_floating_point_v<T>;
    m.def(real ? "symm" : "hemm", &selfAdjointProduct<T>, Unlocked());
    m.def(real ? "syr2k" : "her2k", &selfAdjointUpdate<T>, Unlocked());
    if constexpr (!real) m.def("herk", &herk<T>, Unlocked());
}

}  // namespace

void bindBlas(py::module_& m) {
    bindBlasOf<float>(m);
    bindBlasOf<double>(m);
    bindBlasOf<std::complex<float>>(m);
    bindBlasOf<std::complex<double>>(m);
}

}  // namespace lumo::python
