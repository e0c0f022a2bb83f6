// The symbols of LAPACK, for Fortran and for C.
#include "dropin/lapack.h"

namespace lumo::dropin {
namespace {

// Behind the function: what Fortran takes between its arguments and info.
#define LUMO_EXPORT_LAPACK(symbol, Routine, function, ...)                 \
    LUMO_SERVED(symbol, Routine, function);                                \
    LUMO_EXPORT(symbol##_, Fortran<served_##symbol>::lapack<__VA_ARGS__>); \
    LUMO_EXPORT(LAPACKE_##symbol, Lapacke<served_##symbol>::lapack<>)

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT_LAPACK(sgetrf, Getrf<float>, lumoSgetrf);
    LUMO_EXPORT_LAPACK(cgetrf, Getrf<Complex<float>>, lumoCgetrf);
    LUMO_EXPORT_LAPACK(sgesv, Gesv<float>, lumoSgesv);
    LUMO_EXPORT_LAPACK(cgesv, Gesv<Complex<float>>, lumoCgesv);
    LUMO_EXPORT_LAPACK(sgeqrf, Geqrf<float>, lumoSgeqrf, float*, const int*);
    LUMO_EXPORT_LAPACK(cgeqrf, Geqrf<Complex<float>>, lumoCgeqrf, lumoFloatComplex*, const int*);
    LUMO_EXPORT_LAPACK(sgels, Gels<float>, lumoSgels, float*, const int*);
    LUMO_EXPORT_LAPACK(cgels, Gels<Complex<float>>, lumoCgels, lumoFloatComplex*, const int*);
    LUMO_EXPORT_LAPACK(sgglse, Gglse<float>, lumoSgglse, float*, const int*);
    LUMO_EXPORT_LAPACK(cgglse, Gglse<Complex<float>>, lumoCgglse, lumoFloatComplex*, const int*);
    LUMO_SERVED(sgesvd, Gesvd<float>, lumoSgesvd);
    LUMO_SERVED(cgesvd, Gesvd<Complex<float>>, lumoCgesvd);
    LUMO_EXPORT(sgesvd_, Fortran<served_sgesvd>::lapack<float*, const int*>);
    LUMO_EXPORT(cgesvd_, Fortran<served_cgesvd>::lapack<lumoFloatComplex*, const int*, float*>);
    LUMO_EXPORT(LAPACKE_sgesvd, Lapacke<served_sgesvd>::lapack<float*>);
    LUMO_EXPORT(LAPACKE_cgesvd, Lapacke<served_cgesvd>::lapack<float*>);
}

}  // namespace
}  // namespace lumo::dropin
