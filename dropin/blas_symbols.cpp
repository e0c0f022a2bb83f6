// The symbols of BLAS, for Fortran and for C.
#include "dropin/blas.h"

namespace lumo::dropin {
namespace {

#define LUMO_EXPORT_BLAS(symbol, ...)                                                              \
    LUMO_EXPORT(symbol##_, Fortran<__VA_ARGS__, std::decay_t<decltype(__VA_ARGS__::lumo)>>::blas); \
    LUMO_EXPORT(cblas_##symbol, Cblas<__VA_ARGS__, std::decay_t<decltype(__VA_ARGS__::lumo)>>::blas)

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT_BLAS(sgemm, Gemm<float>);
    LUMO_EXPORT_BLAS(dgemm, Gemm<double>);
    LUMO_EXPORT_BLAS(cgemm, Gemm<lumoFloatComplex>);
    LUMO_EXPORT_BLAS(zgemm, Gemm<lumoDoubleComplex>);
    LUMO_EXPORT_BLAS(sgemv, Gemv<float>);
    LUMO_EXPORT_BLAS(dgemv, Gemv<double>);
    LUMO_EXPORT_BLAS(cgemv, Gemv<lumoFloatComplex>);
    LUMO_EXPORT_BLAS(zgemv, Gemv<lumoDoubleComplex>);
    LUMO_EXPORT_BLAS(ssymm, Symm<float>);
    LUMO_EXPORT_BLAS(dsymm, Symm<double>);
    LUMO_EXPORT_BLAS(chemm, Symm<lumoFloatComplex>);
    LUMO_EXPORT_BLAS(zhemm, Symm<lumoDoubleComplex>);
    LUMO_EXPORT_BLAS(ssyrk, Syrk<float, false>);
    LUMO_EXPORT_BLAS(dsyrk, Syrk<double, false>);
    LUMO_EXPORT_BLAS(csyrk, Syrk<lumoFloatComplex, false>);
    LUMO_EXPORT_BLAS(zsyrk, Syrk<lumoDoubleComplex, false>);
    LUMO_EXPORT_BLAS(cherk, Syrk<lumoFloatComplex, true>);
    LUMO_EXPORT_BLAS(zherk, Syrk<lumoDoubleComplex, true>);
    LUMO_EXPORT_BLAS(ssyr2k, Syr2k<float>);
    LUMO_EXPORT_BLAS(dsyr2k, Syr2k<double>);
    LUMO_EXPORT_BLAS(cher2k, Syr2k<lumoFloatComplex>);
    LUMO_EXPORT_BLAS(zher2k, Syr2k<lumoDoubleComplex>);
    LUMO_EXPORT_BLAS(strmm, Triangular<float, false>);
    LUMO_EXPORT_BLAS(dtrmm, Triangular<double, false>);
    LUMO_EXPORT_BLAS(ctrmm, Triangular<lumoFloatComplex, false>);
    LUMO_EXPORT_BLAS(ztrmm, Triangular<lumoDoubleComplex, false>);
    LUMO_EXPORT_BLAS(strsm, Triangular<float, true>);
    LUMO_EXPORT_BLAS(dtrsm, Triangular<double, true>);
    LUMO_EXPORT_BLAS(ctrsm, Triangular<lumoFloatComplex, true>);
    LUMO_EXPORT_BLAS(ztrsm, Triangular<lumoDoubleComplex, true>);
}

}  // namespace
}  // namespace lumo::dropin
