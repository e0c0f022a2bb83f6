#include "common/routines.h"

#include <dlfcn.h>

#include <stdexcept>

#include "blas/gemm.h"
#include "blas/gemv.h"
#include "blas/symm.h"
#include "blas/syr2k.h"
#include "blas/syrk.h"
#include "blas/triangular.h"
#include "common/described_problem.h"
#include "common/planned_call.h"
#include "lapack/gesv.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/posv.h"
#include "lapack/potrf.h"
#include "lapack/potrs.h"
#include "lapack/syevd.h"
#include "lapack/sygvd.h"

namespace lumo {
namespace {

// Descriptions without operands, which a problem provides; alpha is 1, beta 0. A name each, for
// that of the export.
template <class T>
Gemm<T> gemm(Shape s) {
    return {'N', 'N', s.m, s.n, s.k, T(1), nullptr, 0, nullptr, 0, T(0), nullptr, 0};
}
template <class T>
Gemv<T> gemv(Shape s) {
    return {'N', s.m, s.n, T(1), nullptr, 0, nullptr, 1, T(0), nullptr, 1};
}
template <class T>
Symm<T> symm(Shape s) {
    return {'L', 'L', s.m, s.n, T(1), nullptr, 0, nullptr, 0, T(0), nullptr, 0};
}
template <class T>
Symm<T> hemm(Shape s) {
    return symm<T>(s);
}
template <class T>
Syrk<T> syrk(Shape s) {
    return {'L', 'N', s.n, s.k, T(1), nullptr, 0, T(0), nullptr, 0};
}
template <class T>
Herk<T> herk(Shape s) {
    return {'L', 'N', s.n, s.k, 1, nullptr, 0, 0, nullptr, 0};
}
template <class T>
Syr2k<T> syr2k(Shape s) {
    return {'L', 'N', s.n, s.k, T(1), nullptr, 0, nullptr, 0, T(0), nullptr, 0};
}
template <class T>
Her2k<T> her2k(Shape s) {
    return {'L', 'N', s.n, s.k, T(1), nullptr, 0, nullptr, 0, 0, nullptr, 0};
}
template <class T>
Trmm<T> trmm(Shape s) {
    return {'L', 'L', 'N', 'N', s.m, s.n, T(1), nullptr, 0, nullptr, 0};
}
template <class T>
Trsm<T> trsm(Shape s) {
    return {'L', 'L', 'N', 'N', s.m, s.n, T(1), nullptr, 0, nullptr, 0};
}
template <class T>
Getrf<T> getrf(Shape s) {
    return {s.m, s.n, nullptr, 0, nullptr};
}
template <class T>
Gesv<T> gesv(Shape s) {
    return {s.n, s.k, nullptr, 0, nullptr, nullptr, 0};
}
template <class T>
Geqrf<T> geqrf(Shape s) {
    return {s.m, s.n, nullptr, 0, nullptr};
}
template <class T>
Gels<T> gels(Shape s) {
    return {'N', s.m, s.n, s.k, nullptr, 0, nullptr, 0};
}
template <class T>
Gelsd<T> gelsd(Shape s) {
    return {s.m, s.n, s.k, nullptr, 0, nullptr, 0, nullptr, RealOf<T>(-1), nullptr};
}
template <class T>
Gglse<T> gglse(Shape s) {
    return {s.m, s.n, s.k, nullptr, 0, nullptr, 0, nullptr, nullptr, nullptr};
}
template <class T>
Potrf<T> potrf(Shape s) {
    return {'L', s.n, nullptr, 0};
}
template <class T>
Posv<T> posv(Shape s) {
    return {'L', s.n, s.k, nullptr, 0, nullptr, 0};
}
template <class T>
Getrs<T> getrs(Shape s) {
    return {'N', s.n, s.k, nullptr, 0, nullptr, nullptr, 0};
}
template <class T>
Potrs<T> potrs(Shape s) {
    return {'L', s.n, s.k, nullptr, 0, nullptr, 0};
}
template <class T>
Orgqr<T> orgqr(Shape s) {
    return {s.m, s.n, s.n, nullptr, 0, nullptr};
}
template <class T>
Orgqr<T> ungqr(Shape s) {
    return orgqr<T>(s);
}
template <class T>
Ormqr<T> ormqr(Shape s) {
    return {'L', 'N', s.m, s.n, s.k, nullptr, 0, nullptr, nullptr, 0};
}
template <class T>
Ormqr<T> unmqr(Shape s) {
    return ormqr<T>(s);
}
template <class T>
Gesvd<T> gesvd(Shape s) {
    const char job = s.k > 0 ? 'S' : 'N';
    return {job, job, s.m, s.n, nullptr, 0, nullptr, nullptr, 1, nullptr, 1};
}
template <class T>
Gesdd<T> gesdd(Shape s) {
    return {s.k > 0 ? 'S' : 'N', s.m, s.n, nullptr, 0, nullptr, nullptr, 1, nullptr, 1};
}

template <class T>
Syevd<T> syevd(Shape s) {
    return {s.k > 0 ? 'V' : 'N', 'L', s.n, nullptr, 0, nullptr};
}
template <class T>
Syevd<T> heevd(Shape s) {
    return syevd<T>(s);
}
template <class T>
Sygvd<T> sygvd(Shape s) {
    return {1, s.k > 0 ? 'V' : 'N', 'L', s.n, nullptr, 0, nullptr, 0, nullptr};
}
template <class T>
Sygvd<T> hegvd(Shape s) {
    return sygvd<T>(s);
}

Shape square(int n) {
    return {n, n, n};
}
Shape oneRightHandSide(int n) {
    return {n, n, 1};
}
Shape quarterConstrained(int n) {
    return {n - n / 4, n, n / 4};
}

template <class Routine, class Function>
MeasuredRoutine measured(const char* name, double flops, Routine (*describe)(Shape), Function host,
                         Function device, Shape (*shapeOf)(int)) {
    const double perElement = isComplex<typename Routine::Element> ? 4 : 1;
    const auto make = [=](Shape s) -> std::unique_ptr<Problem> {
        return std::make_unique<DescribedProblem<Routine, Function>>(describe(s), host);
    };
    const auto plan = [=](Function function) {
        return [=](Shape s, const Reserve& reserve) {
            return plannedCall(describe(s), function, reserve);
        };
    };
    return {name,    perElement * flops, make,        [=](int n) { return make(shapeOf(n)); },
            shapeOf, plan(host),         plan(device)};
}

#define LUMO_MEASURED(letter, LETTER, T, name, flops, shape) \
    measured(#letter #name, flops, &name<T>, &lumo##LETTER##name, &lumoDevice##LETTER##name, shape)
#define LUMO_MEASURED_S_D(name, flops, shape) \
    LUMO_MEASURED(s, S, float, name, flops, shape), LUMO_MEASURED(d, D, double, name, flops, shape)
#define LUMO_MEASURED_C_Z(name, flops, shape)                \
    LUMO_MEASURED(c, C, Complex<float>, name, flops, shape), \
        LUMO_MEASURED(z, Z, Complex<double>, name, flops, shape)
#define LUMO_MEASURED_S_D_C_Z(name, flops, shape) \
    LUMO_MEASURED_S_D(name, flops, shape), LUMO_MEASURED_C_Z(name, flops, shape)

}  // namespace

const std::vector<MeasuredRoutine>& measuredRoutines() {
    // gesvd with both sets of vectors: Golub and Van Loan's 4 m^2 n + 8 m n^2 + 9 n^3.
    // Eigenvectors: 4/3 n^3 for the reduction, as much for the merges if nothing is deflated, 2 n^3
    // to go back. gesdd: all of that twice, there being two sides.
    static const std::vector<MeasuredRoutine> all{
        LUMO_MEASURED_S_D_C_Z(gemm, 2, square),
        LUMO_MEASURED_S_D_C_Z(syrk, 1, square),
        LUMO_MEASURED_S_D_C_Z(getrf, 2. / 3, square),
        LUMO_MEASURED_S_D_C_Z(gesv, 2. / 3, oneRightHandSide),
        LUMO_MEASURED_S_D_C_Z(potrf, 1. / 3, square),
        LUMO_MEASURED_S_D_C_Z(posv, 1. / 3, oneRightHandSide),
        LUMO_MEASURED_S_D_C_Z(geqrf, 4. / 3, square),
        LUMO_MEASURED_S_D(orgqr, 4. / 3, square),
        LUMO_MEASURED_C_Z(ungqr, 4. / 3, square),
        LUMO_MEASURED_S_D(ormqr, 2, square),
        LUMO_MEASURED_C_Z(unmqr, 2, square),
        LUMO_MEASURED_S_D_C_Z(gels, 4. / 3, oneRightHandSide),
        LUMO_MEASURED_S_D_C_Z(gelsd, 16. / 3, oneRightHandSide),
        LUMO_MEASURED_S_D_C_Z(gesvd, 21, square),
        LUMO_MEASURED_S_D_C_Z(gesdd, 28. / 3, square),
        LUMO_MEASURED_S_D(syevd, 14. / 3, square),
        LUMO_MEASURED_C_Z(heevd, 14. / 3, square),
        LUMO_MEASURED_S_D_C_Z(gglse, 0, quarterConstrained),
        LUMO_MEASURED_S_D_C_Z(getrs, 2, square),
        LUMO_MEASURED_S_D_C_Z(potrs, 2, square),
        LUMO_MEASURED_S_D_C_Z(gemv, 0, square),
        LUMO_MEASURED_S_D_C_Z(trmm, 0, square),
        LUMO_MEASURED_S_D_C_Z(trsm, 0, square),
        LUMO_MEASURED_S_D(symm, 0, square),
        LUMO_MEASURED_S_D(syr2k, 0, square),
        LUMO_MEASURED_C_Z(hemm, 0, square),
        LUMO_MEASURED_C_Z(herk, 0, square),
        LUMO_MEASURED_C_Z(her2k, 0, square)};
    return all;
}

// Complex symm and syr2k compute the Hermitian products, under names that are others' in the BLAS;
// and sygvd is none of the drop-in library's. To syevd's operations it adds 1/3 n^3 for B's factor,
// n^3 for the reduction, n^3 to go back.
std::vector<MeasuredRoutine> allRoutines() {
    std::vector<MeasuredRoutine> all = measuredRoutines();
    for (MeasuredRoutine& routine : std::vector<MeasuredRoutine>{
             LUMO_MEASURED_C_Z(symm, 0, square), LUMO_MEASURED_C_Z(syr2k, 0, square),
             LUMO_MEASURED_S_D(sygvd, 7, square), LUMO_MEASURED_C_Z(hegvd, 7, square)})
        all.push_back(std::move(routine));
    return all;
}

const MeasuredRoutine& measuredRoutine(const std::string& name) {
    for (const MeasuredRoutine& routine : measuredRoutines())
        if (routine.name == name) return routine;
    throw std::invalid_argument(name + " is not measured");
}

void* cpuRoutine(const std::string& name) {
    void* const routine = dlsym(RTLD_DEFAULT, (name + "_").c_str());
    if (!routine) throw std::runtime_error(name + ": the CPU library has none");
    return routine;
}

}  // namespace lumo
