// The symbols of the singular value decomposition, for Fortran and for C.
#include "dropin/lapack.h"

namespace lumo::dropin {
namespace {

using S = float;
using C = lumoFloatComplex;

template <class T>
struct Gesvd {
    using Type = T;
    static constexpr const char* name = "gesvd";
    static constexpr auto lumo = pick<T>(lumoSgesvd, nullptr, lumoCgesvd, nullptr);
    char jobu, jobvt;
    int m, n;
    T* a;
    int lda;
    RealOf<T>* s;
    T* u;
    int ldu;
    T* vt;
    int ldvt;

    int least() const { return std::min(m, n); }
    bool servable() const {
        const bool columns = isOneOf(jobu, "AS"), rows = isOneOf(jobvt, "AS");
        return isOneOf(jobu, "ASON") && isOneOf(jobvt, "ASON") && !(jobu == 'O' && jobvt == 'O') &&
               m > 0 && n > 0 && lda >= m && ldu >= (columns ? m : 1) &&
               ldvt >= (jobvt == 'A' ? n
                        : rows       ? least()
                                     : 1);
    }
    // Enough for every path of xGESVD; with less, some paths still work, and it knows which.
    int leastWork() const {
        const int most = std::max(m, n);
        return isComplex<T> ? 2 * least() + most : std::max(3 * least() + most, 5 * least());
    }
    double size() const { return geometricMean(m, n, least()); }
    lumoStatus run() const { return lumo(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt); }
    void results(Results& r) const {
        r.overwrites(a, m, n, lda, jobu == 'O' || jobvt == 'O');
        r.writes(s, least(), 1, least());
        if (isOneOf(jobu, "AS")) r.writes(u, m, jobu == 'A' ? m : least(), ldu);
        if (isOneOf(jobvt, "AS")) r.writes(vt, jobvt == 'A' ? n : least(), n, ldvt);
    }
    // LAPACKE hands out the superdiagonal of the bidiagonal matrix: zeros once it has converged.
    void clear(RealOf<T>* superdiagonal) const {
        std::fill(superdiagonal, superdiagonal + least() - 1, RealOf<T>(0));
    }
};
// xGESVD scales from sqrt(SAFMIN) / EPS on, but not a matrix of zeros.
template <class T>
bool dataSuit(const Gesvd<T>& r) {
    using Limits = std::numeric_limits<RealOf<T>>;
    const RealOf<T> small = std::sqrt(Limits::min()) / Limits::epsilon();
    const auto a = largest(r.a, r.m, r.n, r.lda);
    return a == 0 || needsNoScaling(a, small);
}

template <class T>
using Function = std::decay_t<decltype(Gesvd<T>::lumo)>;

[[gnu::used, gnu::noinline]] void exports() {
    LUMO_EXPORT(sgesvd_, Fortran<Gesvd<S>, Function<S>>::lapack<S*, const int*>);
    LUMO_EXPORT(cgesvd_, Fortran<Gesvd<C>, Function<C>>::lapack<C*, const int*, float*>);
    LUMO_EXPORT(LAPACKE_sgesvd, Lapacke<Gesvd<S>, Function<S>>::lapack<float*>);
    LUMO_EXPORT(LAPACKE_cgesvd, Lapacke<Gesvd<C>, Function<C>>::lapack<float*>);
}

}  // namespace
}  // namespace lumo::dropin
