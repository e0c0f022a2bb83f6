// LAPACK on arrays, overwritten in place: each function is the one of its name in lumo.h or
// lumo_extended.h, sizes taken from the arrays, whose shapes the Python layer has checked. They
// return the info of a data error, 0 without one.
#include <cmath>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bind.h"
#include "call.h"
#include "norm.h"

namespace lumo::python {
namespace {

// An info, and the reciprocal condition number of the matrix, estimated: 0 for a data error, not a
// number if it is not known.
using InfoAndCondition = std::pair<int, double>;

// `estimate` stores 1 / (norm ||inverse of A||) for the norm that it is given.
template <class T, class Estimate>
InfoAndCondition withCondition(int info, double norm, Estimate estimate) {
    if (info != 0) return {info, 0};
    if (!std::isfinite(norm)) return {0, std::nan("")};
    // The norm of A may overflow in single precision: it is divided by here.
    RealOf<T> ofInverse = 0;
    estimate(RealOf<T>(1), &ofInverse);
    return {0, norm > 0 ? ofInverse / norm : 1};
}

template <class T>
InfoAndCondition withCondition(int info, double norm, const Matrix<T>& lu) {
    return withCondition<T>(info, norm, [&](RealOf<T> one, RealOf<T>* rcond) {
        call(ofType<T>(lumoSgecon, lumoDgecon, lumoCgecon, lumoZgecon), '1', lu.rows, raw(lu.data),
             lu.ld, one, rcond);
    });
}

template <class T>
int getrf(Matrix<T> a, Vector<int> ipiv) {
    return call(ofType<T>(lumoSgetrf, lumoDgetrf, lumoCgetrf, lumoZgetrf), a.rows, a.columns,
                raw(a.data), a.ld, ipiv.data);
}

template <class T>
void getrs(char trans, Matrix<T> lu, Vector<int> ipiv, Matrix<T> b) {
    call(ofType<T>(lumoSgetrs, lumoDgetrs, lumoCgetrs, lumoZgetrs), trans, lu.rows, b.columns,
         raw(lu.data), lu.ld, ipiv.data, raw(b.data), b.ld);
}

template <class T>
InfoAndCondition gesv(Matrix<T> a, Vector<int> ipiv, Matrix<T> b) {
    const double norm = oneNorm(a);
    const int info = call(ofType<T>(lumoSgesv, lumoDgesv, lumoCgesv, lumoZgesv), a.rows, b.columns,
                          raw(a.data), a.ld, ipiv.data, raw(b.data), b.ld);
    return withCondition(info, norm, a);
}

// gesv in mixed precision, for double-precision elements, with its solution in x. Where refinement
// has converged, there are no factors to estimate the condition from; a matrix that is singular to
// working precision prevents that for most right-hand sides.
template <class T>
InfoAndCondition dsgesv(Matrix<T> a, Vector<int> ipiv, Matrix<T> b, Matrix<T> x) {
    const double norm = oneNorm(a);
    int steps = 0;
    const int info =
        call(ofType<T>(nullptr, lumoDsgesv, nullptr, lumoZcgesv), a.rows, b.columns, raw(a.data),
             a.ld, ipiv.data, raw(b.data), b.ld, raw(x.data), x.ld, &steps);
    if (info == 0 && steps >= 0) return {0, std::nan("")};
    return withCondition(info, norm, a);
}

template <class T>
int potrf(char uplo, Matrix<T> a) {
    return call(ofType<T>(lumoSpotrf, lumoDpotrf, lumoCpotrf, lumoZpotrf), uplo, a.rows,
                raw(a.data), a.ld);
}

template <class T>
void potrs(char uplo, Matrix<T> factor, Matrix<T> b) {
    call(ofType<T>(lumoSpotrs, lumoDpotrs, lumoCpotrs, lumoZpotrs), uplo, factor.rows, b.columns,
         raw(factor.data), factor.ld, raw(b.data), b.ld);
}

template <class T>
InfoAndCondition posv(char uplo, Matrix<T> a, Matrix<T> b) {
    const double norm = oneNorm(uplo, a);
    const int info = call(ofType<T>(lumoSposv, lumoDposv, lumoCposv, lumoZposv), uplo, a.rows,
                          b.columns, raw(a.data), a.ld, raw(b.data), b.ld);
    return withCondition<T>(info, norm, [&](RealOf<T> one, RealOf<T>* rcond) {
        call(ofType<T>(lumoSpocon, lumoDpocon, lumoCpocon, lumoZpocon), uplo, a.rows, raw(a.data),
             a.ld, one, rcond);
    });
}

template <class T>
int geqrf(Matrix<T> a, Vector<T> tau) {
    return call(ofType<T>(lumoSgeqrf, lumoDgeqrf, lumoCgeqrf, lumoZgeqrf), a.rows, a.columns,
                raw(a.data), a.ld, raw(tau.data));
}

// The first a.columns columns of Q from its reflectors: ungqr for complex elements.
template <class T>
void orgqr(Matrix<T> a, Vector<T> tau) {
    call(ofType<T>(lumoSorgqr, lumoDorgqr, lumoCungqr, lumoZungqr), a.rows, a.columns, tau.size,
         raw(a.data), a.ld, raw(tau.data));
}

template <class T>
int gels(char trans, int m, int n, Matrix<T> a, Matrix<T> b) {
    return call(ofType<T>(lumoSgels, lumoDgels, lumoCgels, lumoZgels), trans, m, n, b.columns,
                raw(a.data), a.ld, raw(b.data), b.ld);
}

// Info, and the rank.
template <class T>
std::pair<int, int> gelsd(Matrix<T> a, Matrix<T> b, Vector<RealOf<T>> s, double rcond) {
    int rank = 0;
    const int info =
        call(ofType<T>(lumoSgelsd, lumoDgelsd, lumoCgelsd, lumoZgelsd), a.rows, a.columns,
             b.columns, raw(a.data), a.ld, raw(b.data), b.ld, s.data, RealOf<T>(rcond), &rank);
    return {info, rank};
}

template <class T>
int gglse(Matrix<T> a, Matrix<T> b, Vector<T> c, Vector<T> d, Vector<T> x) {
    return call(ofType<T>(lumoSgglse, lumoDgglse, lumoCgglse, lumoZgglse), a.rows, a.columns,
                b.rows, raw(a.data), a.ld, raw(b.data), b.ld, raw(c.data), raw(d.data),
                raw(x.data));
}

template <class T>
int gesvd(char job, Matrix<T> a, Vector<RealOf<T>> s, Matrix<T> u, Matrix<T> vt) {
    return call(ofType<T>(lumoSgesvd, lumoDgesvd, lumoCgesvd, lumoZgesvd), job, job, a.rows,
                a.columns, raw(a.data), a.ld, s.data, raw(u.data), u.ld, raw(vt.data), vt.ld);
}

template <class T>
int gesdd(char job, Matrix<T> a, Vector<RealOf<T>> s, Matrix<T> u, Matrix<T> vt) {
    return call(ofType<T>(lumoSgesdd, lumoDgesdd, lumoCgesdd, lumoZgesdd), job, a.rows, a.columns,
                raw(a.data), a.ld, s.data, raw(u.data), u.ld, raw(vt.data), vt.ld);
}

template <class T>
int syevd(char job, char uplo, Matrix<T> a, Vector<RealOf<T>> w) {
    return call(ofType<T>(lumoSsyevd, lumoDsyevd, lumoCheevd, lumoZheevd), job, uplo, a.rows,
                raw(a.data), a.ld, w.data);
}

template <class T>
int sygvd(int type, char job, char uplo, Matrix<T> a, Matrix<T> b, Vector<RealOf<T>> w) {
    return call(ofType<T>(lumoSsygvd, lumoDsygvd, lumoChegvd, lumoZhegvd), type, job, uplo, a.rows,
                raw(a.data), a.ld, raw(b.data), b.ld, w.data);
}

template <class T>
void bindLapackOf(py::module_& m) {
    m.def("getrf", &getrf<T>, Unlocked());
    m.def("getrs", &getrs<T>, Unlocked());
    m.def("gesv", &gesv<T>, Unlocked());
    m.def("potrf", &potrf<T>, Unlocked());
    m.def("potrs", &potrs<T>, Unlocked());
    m.def("posv", &posv<T>, Unlocked());
    m.def("geqrf", &geqrf<T>, Unlocked());
    m.def("orgqr", &orgqr<T>, Unlocked());
    m.def("gels", &gels<T>, Unlocked());
    m.def("gelsd", &gelsd<T>, Unlocked());
    m.def("gglse", &gglse<T>, Unlocked());
    m.def("gesvd", &gesvd<T>, Unlocked());
    m.def("gesdd", &gesdd<T>, Unlocked());
    m.def("syevd", &syevd<T>, Unlocked());
    m.def("sygvd", &sygvd<T>, Unlocked());
    if constexpr (platform::isDouble<T>) m.def("dsgesv", &dsgesv<T>, Unlocked());
}

}  // namespace

void bindLapack(py::module_& m) {
    bindLapackOf<float>(m);
    bindLapackOf<double>(m);
    bindLapackOf<std::complex<float>>(m);
    bindLapackOf<std::complex<double>>(m);
}

}  // namespace lumo::python
