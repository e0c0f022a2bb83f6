// The symbols of LAPACK, for Fortran and for C.
#include "dropin/lapack.h"

namespace lumo::dropin {
namespace {

#define LUMO_EXPORT_LAPACK_AS(symbol, Its, prefix, suffix)                               \
    LUMO_EXPORT(prefix##symbol##_##suffix, LapackInFortran<served_##symbol, Its>::call); \
    LUMO_EXPORT(prefix##LAPACKE_##symbol##suffix, Lapacke<served_##symbol, Its>::call)
#define LUMO_EXPORT_LAPACK(symbol, Routine, function) \
    LUMO_SERVED(symbol, Routine, function);           \
    LUMO_UNDER_ALL_NAMES(LUMO_EXPORT_LAPACK_AS, symbol)

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT_LAPACK(sgetrf, Getrf<float>, lumoSgetrf);
    LUMO_EXPORT_LAPACK(cgetrf, Getrf<Complex<float>>, lumoCgetrf);
    LUMO_EXPORT_LAPACK(sgesv, Gesv<float>, lumoSgesv);
    LUMO_EXPORT_LAPACK(cgesv, Gesv<Complex<float>>, lumoCgesv);
    LUMO_EXPORT_LAPACK(sgeqrf, Geqrf<float>, lumoSgeqrf);
    LUMO_EXPORT_LAPACK(cgeqrf, Geqrf<Complex<float>>, lumoCgeqrf);
    LUMO_EXPORT_LAPACK(sgels, Gels<float>, lumoSgels);
    LUMO_EXPORT_LAPACK(cgels, Gels<Complex<float>>, lumoCgels);
    LUMO_EXPORT_LAPACK(sgglse, Gglse<float>, lumoSgglse);
    LUMO_EXPORT_LAPACK(cgglse, Gglse<Complex<float>>, lumoCgglse);
    LUMO_EXPORT_LAPACK(sgesvd, Gesvd<float>, lumoSgesvd);
    LUMO_EXPORT_LAPACK(cgesvd, Gesvd<Complex<float>>, lumoCgesvd);
}

}  // namespace
}  // namespace lumo::dropin
