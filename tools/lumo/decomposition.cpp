#include "decomposition.h"

#include <algorithm>

#include "platform/cpu/lapack.h"

namespace lumo {
namespace {

using Complex = std::complex<float>;

// The library's complex numbers have the layout of C++'s.
lumoFloatComplex* exported(Complex* z) {
    return reinterpret_cast<lumoFloatComplex*>(z);
}
const lumoFloatComplex* exported(const Complex* z) {
    return reinterpret_cast<const lumoFloatComplex*>(z);
}

lumoStatus gesvd(char job, int m, int n, float* a, float* s, float* u, float* vt, int k) {
    return lumoSgesvd(job, job, m, n, a, m, s, u, m, vt, k);
}
lumoStatus gesvd(char job, int m, int n, Complex* a, float* s, Complex* u, Complex* vt, int k) {
    return lumoCgesvd(job, job, m, n, exported(a), m, s, exported(u), m, exported(vt), k);
}

lumoStatus multiply(int m, int n, int k, const float* a, const float* b, int ldb, float* c) {
    return lumoSgemm('N', 'N', m, n, k, 1, a, m, b, ldb, 0, c, m);
}
lumoStatus multiply(int m, int n, int k, const Complex* a, const Complex* b, int ldb, Complex* c) {
    return lumoCgemm('N', 'N', m, n, k, {1, 0}, exported(a), m, exported(b), ldb, {0, 0},
                     exported(c), m);
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
    return gesvd(d.u.empty() ? 'N' : 'S', d.m, d.n, a.data(), d.s.data(), d.u.data(), d.vt.data(),
                 int(d.s.size()));
}

template <class T>
int decomposeByCpu(std::vector<T>& a, Decomposition<T>& d) {
    std::vector<float> realWork(platform::isComplex<T> ? 5 * d.s.size() : 0);
    return cpu::withWorkspace<T>(1, [&](T* work, int size) {
        const char job = d.u.empty() ? 'N' : 'S';
        const auto call = [&](auto... others) {
            return cpu::gesvd<T>(job, job, d.m, d.n, a.data(), d.m, d.s.data(), d.u.data(), d.m,
                                 d.vt.data(), int(d.s.size()), work, size, others...);
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
    return multiply(d.m, d.n, rank, scaled.data(), d.vt.data(), int(d.s.size()), result.data());
}

#define LUMO_INSTANCES(T)                                              \
    template struct Decomposition<T>;                                  \
    template lumoStatus decompose(std::vector<T>&, Decomposition<T>&); \
    template int decomposeByCpu(std::vector<T>&, Decomposition<T>&);   \
    template lumoStatus approximate(const Decomposition<T>&, int, std::vector<T>&)
LUMO_INSTANCES(float);
LUMO_INSTANCES(Complex);

}  // namespace lumo
