// The symbols of LAPACK, for Fortran and for C, but those of gesvd.cpp.
#include "dropin/lapack.h"

namespace lumo::dropin {
namespace {

using S = float;
using C = lumoFloatComplex;

#define LUMO_EXPORT_LAPACK(symbol, Routine, ...)                                               \
    LUMO_EXPORT(symbol##_,                                                                     \
                Fortran<Routine, std::decay_t<decltype(Routine::lumo)>>::lapack<__VA_ARGS__>); \
    LUMO_EXPORT(LAPACKE_##symbol, Lapacke<Routine, std::decay_t<decltype(Routine::lumo)>>::lapack<>)

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT_LAPACK(sgetrf, Getrf<S>);
    LUMO_EXPORT_LAPACK(cgetrf, Getrf<C>);
    LUMO_EXPORT_LAPACK(sgesv, Gesv<S>);
    LUMO_EXPORT_LAPACK(cgesv, Gesv<C>);
    LUMO_EXPORT_LAPACK(sgeqrf, Geqrf<S>, S*, const int*);
    LUMO_EXPORT_LAPACK(cgeqrf, Geqrf<C>, C*, const int*);
    LUMO_EXPORT_LAPACK(sgels, Gels<S>, S*, const int*);
    LUMO_EXPORT_LAPACK(cgels, Gels<C>, C*, const int*);
    LUMO_EXPORT_LAPACK(sgglse, Gglse<S>, S*, const int*);
    LUMO_EXPORT_LAPACK(cgglse, Gglse<C>, C*, const int*);
}

}  // namespace
}  // namespace lumo::dropin
