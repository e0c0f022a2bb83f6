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

#define LUMO_EXPORT_MIXED_AS(symbol, Its, prefix, suffix)                               \
    LUMO_EXPORT(prefix##symbol##_##suffix, MixedInFortran<served_##symbol, Its>::call); \
    LUMO_EXPORT(prefix##LAPACKE_##symbol##suffix, Lapacke<served_##symbol, Its>::call)
#define LUMO_EXPORT_MIXED(symbol, Routine, function) \
    LUMO_SERVED(symbol, Routine, function);          \
    LUMO_UNDER_ALL_NAMES(LUMO_EXPORT_MIXED_AS, symbol)

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT_LAPACK(sgetrf, Getrf<float>, lumoSgetrf);
    LUMO_EXPORT_LAPACK(dgetrf, Getrf<double>, lumoDgetrf);
    LUMO_EXPORT_LAPACK(cgetrf, Getrf<Complex<float>>, lumoCgetrf);
    LUMO_EXPORT_LAPACK(zgetrf, Getrf<Complex<double>>, lumoZgetrf);
    LUMO_EXPORT_LAPACK(sgesv, Gesv<float>, lumoSgesv);
    LUMO_EXPORT_LAPACK(dgesv, Gesv<double>, lumoDgesv);
    LUMO_EXPORT_LAPACK(cgesv, Gesv<Complex<float>>, lumoCgesv);
    LUMO_EXPORT_LAPACK(zgesv, Gesv<Complex<double>>, lumoZgesv);
    LUMO_EXPORT_LAPACK(sgetrs, Getrs<float>, lumoSgetrs);
    LUMO_EXPORT_LAPACK(dgetrs, Getrs<double>, lumoDgetrs);
    LUMO_EXPORT_LAPACK(cgetrs, Getrs<Complex<float>>, lumoCgetrs);
    LUMO_EXPORT_LAPACK(zgetrs, Getrs<Complex<double>>, lumoZgetrs);
    LUMO_EXPORT_LAPACK(sgecon, Gecon<float>, lumoSgecon);
    LUMO_EXPORT_LAPACK(dgecon, Gecon<double>, lumoDgecon);
    LUMO_EXPORT_LAPACK(cgecon, Gecon<Complex<float>>, lumoCgecon);
    LUMO_EXPORT_LAPACK(zgecon, Gecon<Complex<double>>, lumoZgecon);
    LUMO_EXPORT_LAPACK(spotrf, Potrf<float>, lumoSpotrf);
    LUMO_EXPORT_LAPACK(dpotrf, Potrf<double>, lumoDpotrf);
    LUMO_EXPORT_LAPACK(cpotrf, Potrf<Complex<float>>, lumoCpotrf);
    LUMO_EXPORT_LAPACK(zpotrf, Potrf<Complex<double>>, lumoZpotrf);
    LUMO_EXPORT_LAPACK(spotrs, Potrs<float>, lumoSpotrs);
    LUMO_EXPORT_LAPACK(dpotrs, Potrs<double>, lumoDpotrs);
    LUMO_EXPORT_LAPACK(cpotrs, Potrs<Complex<float>>, lumoCpotrs);
    LUMO_EXPORT_LAPACK(zpotrs, Potrs<Complex<double>>, lumoZpotrs);
    LUMO_EXPORT_LAPACK(sposv, Posv<float>, lumoSposv);
    LUMO_EXPORT_LAPACK(dposv, Posv<double>, lumoDposv);
    LUMO_EXPORT_LAPACK(cposv, Posv<Complex<float>>, lumoCposv);
    LUMO_EXPORT_LAPACK(zposv, Posv<Complex<double>>, lumoZposv);
    LUMO_EXPORT_LAPACK(spocon, Pocon<float>, lumoSpocon);
    LUMO_EXPORT_LAPACK(dpocon, Pocon<double>, lumoDpocon);
    LUMO_EXPORT_LAPACK(cpocon, Pocon<Complex<float>>, lumoCpocon);
    LUMO_EXPORT_LAPACK(zpocon, Pocon<Complex<double>>, lumoZpocon);
    LUMO_EXPORT_LAPACK(sgeqrf, Geqrf<float>, lumoSgeqrf);
    LUMO_EXPORT_LAPACK(dgeqrf, Geqrf<double>, lumoDgeqrf);
    LUMO_EXPORT_LAPACK(cgeqrf, Geqrf<Complex<float>>, lumoCgeqrf);
    LUMO_EXPORT_LAPACK(zgeqrf, Geqrf<Complex<double>>, lumoZgeqrf);
    LUMO_EXPORT_LAPACK(sorgqr, Orgqr<float>, lumoSorgqr);
    LUMO_EXPORT_LAPACK(dorgqr, Orgqr<double>, lumoDorgqr);
    LUMO_EXPORT_LAPACK(cungqr, Orgqr<Complex<float>>, lumoCungqr);
    LUMO_EXPORT_LAPACK(zungqr, Orgqr<Complex<double>>, lumoZungqr);
    LUMO_EXPORT_LAPACK(sormqr, Ormqr<float>, lumoSormqr);
    LUMO_EXPORT_LAPACK(dormqr, Ormqr<double>, lumoDormqr);
    LUMO_EXPORT_LAPACK(cunmqr, Ormqr<Complex<float>>, lumoCunmqr);
    LUMO_EXPORT_LAPACK(zunmqr, Ormqr<Complex<double>>, lumoZunmqr);
    LUMO_EXPORT_LAPACK(sgels, Gels<float>, lumoSgels);
    LUMO_EXPORT_LAPACK(dgels, Gels<double>, lumoDgels);
    LUMO_EXPORT_LAPACK(cgels, Gels<Complex<float>>, lumoCgels);
    LUMO_EXPORT_LAPACK(zgels, Gels<Complex<double>>, lumoZgels);
    LUMO_EXPORT_LAPACK(sgelsd, Gelsd<float>, lumoSgelsd);
    LUMO_EXPORT_LAPACK(dgelsd, Gelsd<double>, lumoDgelsd);
    LUMO_EXPORT_LAPACK(cgelsd, Gelsd<Complex<float>>, lumoCgelsd);
    LUMO_EXPORT_LAPACK(zgelsd, Gelsd<Complex<double>>, lumoZgelsd);
    LUMO_EXPORT_LAPACK(sgglse, Gglse<float>, lumoSgglse);
    LUMO_EXPORT_LAPACK(dgglse, Gglse<double>, lumoDgglse);
    LUMO_EXPORT_LAPACK(cgglse, Gglse<Complex<float>>, lumoCgglse);
    LUMO_EXPORT_LAPACK(zgglse, Gglse<Complex<double>>, lumoZgglse);
    LUMO_EXPORT_LAPACK(sgesvd, Gesvd<float>, lumoSgesvd);
    LUMO_EXPORT_LAPACK(dgesvd, Gesvd<double>, lumoDgesvd);
    LUMO_EXPORT_LAPACK(cgesvd, Gesvd<Complex<float>>, lumoCgesvd);
    LUMO_EXPORT_LAPACK(zgesvd, Gesvd<Complex<double>>, lumoZgesvd);
    LUMO_EXPORT_LAPACK(sgesdd, Gesdd<float>, lumoSgesdd);
    LUMO_EXPORT_LAPACK(dgesdd, Gesdd<double>, lumoDgesdd);
    LUMO_EXPORT_LAPACK(cgesdd, Gesdd<Complex<float>>, lumoCgesdd);
    LUMO_EXPORT_LAPACK(zgesdd, Gesdd<Complex<double>>, lumoZgesdd);
    LUMO_EXPORT_LAPACK(ssyevd, Syevd<float>, lumoSsyevd);
    LUMO_EXPORT_LAPACK(dsyevd, Syevd<double>, lumoDsyevd);
    LUMO_EXPORT_LAPACK(cheevd, Syevd<Complex<float>>, lumoCheevd);
    LUMO_EXPORT_LAPACK(zheevd, Syevd<Complex<double>>, lumoZheevd);
    LUMO_EXPORT_LAPACK(ssyev, Syev<float>, lumoSsyevd);
    LUMO_EXPORT_LAPACK(dsyev, Syev<double>, lumoDsyevd);
    LUMO_EXPORT_LAPACK(cheev, Syev<Complex<float>>, lumoCheevd);
    LUMO_EXPORT_LAPACK(zheev, Syev<Complex<double>>, lumoZheevd);
    LUMO_EXPORT_LAPACK(ssyevr, Syevr<float>, syevr<float>);
    LUMO_EXPORT_LAPACK(dsyevr, Syevr<double>, syevr<double>);
    LUMO_EXPORT_LAPACK(cheevr, Syevr<Complex<float>>, syevr<Complex<float>>);
    LUMO_EXPORT_LAPACK(zheevr, Syevr<Complex<double>>, syevr<Complex<double>>);
    LUMO_EXPORT_MIXED(dsgesv, Dsgesv<double>, lumoDsgesv);
    LUMO_EXPORT_MIXED(zcgesv, Dsgesv<Complex<double>>, lumoZcgesv);
}

}  // namespace
}  // namespace lumo::dropin
