#include "eigensystem.h"

#include "common/residual.h"
#include "exported.h"
#include "linear_system.h"
#include "lumo_extended.h"
#include "platform/cpu/lapack.h"

namespace lumo {
namespace {

template <class T>
char job(const Eigensystem<T>& e) {
    return e.vectors ? 'V' : 'N';
}

// c := op(A) B + beta c, of order n.
template <class T>
void multiply(char op, int n, const T* a, const T* b, T beta, T* c) {
    constexpr auto gemm = platform::ofType<T>(lumoSgemm, lumoDgemm, lumoCgemm, lumoZgemm);
    succeed(gemm(op, 'N', n, n, n, exported(T(1)), exported(a), n, exported(b), n, exported(beta),
                 exported(c), n));
}

}  // namespace

template <class T>
lumoStatus decompose(const std::vector<T>& a, Eigensystem<T>& e) {
    constexpr auto syevd = platform::ofType<T>(lumoSsyevd, lumoDsyevd, lumoCheevd, lumoZheevd);
    e.v = a;
    return syevd(job(e), 'L', e.n, exported(e.v.data()), e.n, e.w.data());
}

template <class T>
int decomposeByCpu(const std::vector<T>& a, Eigensystem<T>& e) {
    e.v = a;
    // As LAPACK says, for vectors, which take more.
    const std::size_t n = std::size_t(e.n), reals = 1 + 5 * n + 2 * n * n, integers = 3 + 5 * n;
    std::vector<platform::RealOf<T>> realWork(platform::isComplex<T> ? reals : 0);
    std::vector<int> integerWork(integers);
    return cpu::withWorkspace<T>(1, [&](T* work, int size) {
        const auto call = [&](auto... others) {
            return cpu::syevd<T>(job(e), 'L', e.n, e.v.data(), e.n, e.w.data(), work, size,
                                 others..., integerWork.data(), int(integers));
        };
        if constexpr (platform::isComplex<T>)
            return call(realWork.data(), int(reals));
        else
            return call();
    });
}

template <class T>
Errors errorsOf(const std::vector<T>& a, const Eigensystem<T>& e) {
    const std::size_t n = std::size_t(e.n);
    std::vector<T> r = e.v, gram(n * n);
    for (std::size_t k = 0; k < r.size(); ++k) r[k] *= e.w[k / n];
    multiply('N', e.n, a.data(), e.v.data(), T(-1), r.data());
    for (std::size_t i = 0; i < n; ++i) gram[i * (n + 1)] = 1;
    multiply('C', e.n, e.v.data(), e.v.data(), T(-1), gram.data());
    return {euclideanNorm(r.size(), r.data()), euclideanNorm(gram.size(), gram.data())};
}

#define LUMO_INSTANCES(T)                                                  \
    template lumoStatus decompose(const std::vector<T>&, Eigensystem<T>&); \
    template int decomposeByCpu(const std::vector<T>&, Eigensystem<T>&);   \
    template Errors errorsOf(const std::vector<T>&, const Eigensystem<T>&)
LUMO_INSTANCES(float);
LUMO_INSTANCES(double);
LUMO_INSTANCES(std::complex<float>);
LUMO_INSTANCES(std::complex<double>);

}  // namespace lumo
