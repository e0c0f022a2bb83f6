// The symbols of BLAS, for Fortran and for C.
#include "dropin/blas.h"

namespace lumo::dropin {
namespace {

#define LUMO_EXPORT_BLAS_AS(symbol, Its, prefix, suffix)                               \
    LUMO_EXPORT(prefix##symbol##_##suffix, BlasInFortran<served_##symbol, Its>::call); \
    LUMO_EXPORT(prefix##cblas_##symbol##suffix, Cblas<served_##symbol, Its>::call)
#define LUMO_EXPORT_BLAS(symbol, Routine, function) \
    LUMO_SERVED(symbol, Routine, function);         \
    LUMO_UNDER_ALL_NAMES(LUMO_EXPORT_BLAS_AS, symbol)

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT_BLAS(sgemm, Gemm<float>, lumoSgemm);
    LUMO_EXPORT_BLAS(dgemm, Gemm<double>, lumoDgemm);
    LUMO_EXPORT_BLAS(cgemm, Gemm<Complex<float>>, lumoCgemm);
    LUMO_EXPORT_BLAS(zgemm, Gemm<Complex<double>>, lumoZgemm);
    LUMO_EXPORT_BLAS(sgemv, Gemv<float>, lumoSgemv);
    LUMO_EXPORT_BLAS(dgemv, Gemv<double>, lumoDgemv);
    LUMO_EXPORT_BLAS(cgemv, Gemv<Complex<float>>, lumoCgemv);
    LUMO_EXPORT_BLAS(zgemv, Gemv<Complex<double>>, lumoZgemv);
    LUMO_EXPORT_BLAS(ssymm, Symm<float>, lumoSsymm);
    LUMO_EXPORT_BLAS(dsymm, Symm<double>, lumoDsymm);
    LUMO_EXPORT_BLAS(chemm, Symm<Complex<float>>, lumoChemm);
    LUMO_EXPORT_BLAS(zhemm, Symm<Complex<double>>, lumoZhemm);
    LUMO_EXPORT_BLAS(ssyrk, Syrk<float>, lumoSsyrk);
    LUMO_EXPORT_BLAS(dsyrk, Syrk<double>, lumoDsyrk);
    LUMO_EXPORT_BLAS(csyrk, Syrk<Complex<float>>, lumoCsyrk);
    LUMO_EXPORT_BLAS(zsyrk, Syrk<Complex<double>>, lumoZsyrk);
    LUMO_EXPORT_BLAS(cherk, Herk<Complex<float>>, lumoCherk);
    LUMO_EXPORT_BLAS(zherk, Herk<Complex<double>>, lumoZherk);
    LUMO_EXPORT_BLAS(ssyr2k, Syr2k<float>, lumoSsyr2k);
    LUMO_EXPORT_BLAS(dsyr2k, Syr2k<double>, lumoDsyr2k);
    LUMO_EXPORT_BLAS(cher2k, Her2k<Complex<float>>, lumoCher2k);
    LUMO_EXPORT_BLAS(zher2k, Her2k<Complex<double>>, lumoZher2k);
    LUMO_EXPORT_BLAS(strmm, Trmm<float>, lumoStrmm);
    LUMO_EXPORT_BLAS(dtrmm, Trmm<double>, lumoDtrmm);
    LUMO_EXPORT_BLAS(ctrmm, Trmm<Complex<float>>, lumoCtrmm);
    LUMO_EXPORT_BLAS(ztrmm, Trmm<Complex<double>>, lumoZtrmm);
    LUMO_EXPORT_BLAS(strsm, Trsm<float>, lumoStrsm);
    LUMO_EXPORT_BLAS(dtrsm, Trsm<double>, lumoDtrsm);
    LUMO_EXPORT_BLAS(ctrsm, Trsm<Complex<float>>, lumoCtrsm);
    LUMO_EXPORT_BLAS(ztrsm, Trsm<Complex<double>>, lumoZtrsm);
}

}  // namespace
}  // namespace lumo::dropin
