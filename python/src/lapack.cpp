// LAPACK on arrays, overwritten in place: each function is the one of its name in lumo.h, sizes
// taken from the arrays, whose shapes the Python layer has checked. They return the info of a data
// error, 0 without one.
#include <utility>
#include <vector>

#include "arrays.h"
#include "bind.h"
#include "call.h"
#include "common/condition.h"
#include "platform/cpu/lapack.h"

namespace lumo::python {
namespace {

template <class T>
int getrf(Matrix<T> a, Vector<int> ipiv) {
    return call(ofType<T>(lumoSgetrf, lumoCgetrf), a.rows, a.columns, raw(a.data), a.ld, ipiv.data);
}

// With the reciprocal condition number of `a`, estimated; 0 for a data error.
template <class T>
std::pair<int, double> gesv(Matrix<T> a, Vector<int> ipiv, Matrix<T> b) {
    const double norm = oneNorm(a.rows, a.data, a.ld);
    const int info = call(ofType<T>(lumoSgesv, lumoCgesv), a.rows, b.columns, raw(a.data), a.ld,
                          ipiv.data, raw(b.data), b.ld);
    return {info, info ? 0 : reciprocalCondition(a.rows, a.data, a.ld, norm)};
}

template <class T>
int geqrf(Matrix<T> a, Vector<T> tau) {
    return call(ofType<T>(lumoSgeqrf, lumoCgeqrf), a.rows, a.columns, raw(a.data), a.ld,
                raw(tau.data));
}

template <class T>
int gels(char trans, int m, int n, Matrix<T> a, Matrix<T> b) {
    return call(ofType<T>(lumoSgels, lumoCgels), trans, m, n, b.columns, raw(a.data), a.ld,
                raw(b.data), b.ld);
}

template <class T>
int gglse(Matrix<T> a, Matrix<T> b, Vector<T> c, Vector<T> d, Vector<T> x) {
    return call(ofType<T>(lumoSgglse, lumoCgglse), a.rows, a.columns, b.rows, raw(a.data), a.ld,
                raw(b.data), b.ld, raw(c.data), raw(d.data), raw(x.data));
}

// The first a.columns columns of Q from its reflectors, by the CPU LAPACK (xORGQR, xUNGQR).
template <class T>
void orgqr(Matrix<T> a, Vector<T> tau) {
    const int info = cpu::withWorkspace<T>(a.columns, [&](T* work, int size) {
        return cpu::orgqr<T>(a.rows, a.columns, tau.size, a.data, a.ld, tau.data, work, size);
    });
    if (info != 0) throw std::runtime_error("the CPU LAPACK's orgqr refused its arguments");
}

template <class T>
int gesvd(char job, Matrix<T> a, Vector<RealOf<T>> s, Matrix<T> u, Matrix<T> vt) {
    return call(ofType<T>(lumoSgesvd, lumoCgesvd), job, job, a.rows, a.columns, raw(a.data), a.ld,
                s.data, raw(u.data), u.ld, raw(vt.data), vt.ld);
}

template <class T>
void bindLapackOf(py::module_& m) {
    m.def("getrf", &getrf<T>, Unlocked());
    m.def("gesv", &gesv<T>, Unlocked());
    m.def("geqrf", &geqrf<T>, Unlocked());
    m.def("gels", &gels<T>, Unlocked());
    m.def("gglse", &gglse<T>, Unlocked());
    m.def("orgqr", &orgqr<T>, Unlocked());
    m.def("gesvd", &gesvd<T>, Unlocked());
}

}  // namespace

void bindLapack(py::module_& m) {
    bindLapackOf<float>(m);
    bindLapackOf<std::complex<float>>(m);
}

}  // namespace lumo::python
