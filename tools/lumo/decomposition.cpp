#include "decomposition.h"

#include <algorithm>

#include "exported.h"
#include "lumo_extended.h"
#include "platform/cpu/lapack.h"

namespace lumo {
namespace {

template <class T>
char job(const Decomposition<T>& d) {
    return d.u.empty() ? 'N' : 'S';
}

}  // namespace

template <class T>
Decomposition<T>::Decomposition(int m, int n, bool vectors)
    : m(m), n(n), s(std::size_t(std::min(m, n))) {
    if (vectors) u.resize(m * s.size());
    if (vectors) vt.resize(n * s.size());
}

template <class T>
lumoStatus decompose(std::vector<T>& a, Decomposition<T>& d) {
    constexpr auto gesdd = platform::ofType<T>(lumoSgesdd, lumoDgesdd, lumoCgesdd, lumoZgesdd);
    return gesdd(job(d), d.m, d.n, exported(a.data()), d.m, d.s.data(), exported(d.u.data()), d.m,
                 exported(d.vt.data()), int(d.s.size()));
}

template <class T>
int decomposeByCpu(std::vector<T>& a, Decomposition<T>& d) {
    // As LAPACK says, for vectors, which take more.
    const std::size_t k = d.s.size(), most = std::size_t(std::max(d.m, d.n));
    const std::size_t reals = k * std::max(5 * k + 7, 2 * most + 2 * k + 1);
    std::vector<platform::RealOf<T>> realWork(platform::isComplex<T> ? reals : 0);
    std::vector<int> integerWork(8 * k);
    return cpu::withWorkspace<T>(1, [&](T* work, int size) {
        const auto call = [&](auto... others) {
            return cpu::gesdd<T>(job(d), d.m, d.n, a.data(), d.m, d.s.data(), d.u.data(), d.m,
                                 d.vt.data(), int(k), work, size, others..., integerWork.data());
        };
        if constexpr (platform::isComplex<T>)
            return call(realWork.data());
        else
            return call();
    });
}

template <class T>
lumoStatus approximate(const Decomposition<T>& d, int rank, std::vector<T>& result) {
    std::vector<T> scaled(d.u.begin(), d.u.begin() + std::ptrdiff_t(d.m) * rank);
    for (std::size_t i = 0; i < scaled.size(); ++i) scaled[i] *= d.s[i / std::size_t(d.m)];
    result.resize(std::size_t(d.m) * std::size_t(d.n));
    constexpr auto gemm = platform::ofType<T>(lumoSgemm, lumoDgemm, lumoCgemm, lumoZgemm);
    return gemm('N', 'N', d.m, d.n, rank, exported(T(1)), exported(scaled.data()), d.m,
                exported(d.vt.data()), int(d.s.size()), exported(T(0)), exported(result.data()),
                d.m);
}

#define LUMO_INSTANCES(T)                                              \
    template struct Decomposition<T>;                                  \
    template lumoStatus decompose(std::vector<T>&, Decomposition<T>&); \
    template int decomposeByCpu(std::vector<T>&, Decomposition<T>&);   \
    template lumoStatus approximate(const Decomposition<T>&, int, std::vector<T>&)
LUMO_INSTANCES(float);
LUMO_INSTANCES(double);
LUMO_INSTANCES(std::complex<float>);
LUMO_INSTANCES(std::complex<double>);

}  // namespace lumo
