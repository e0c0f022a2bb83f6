#include "decomposition.h"

#include <algorithm>

extern "C" {
void sgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, float* a,
             const int* lda, float* s, float* u, const int* ldu, float* vt, const int* ldvt,
             float* work, const int* lwork, int* info);
void cgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n,
             std::complex<float>* a, const int* lda, float* s, std::complex<float>* u,
             const int* ldu, std::complex<float>* vt, const int* ldvt, std::complex<float>* work,
             const int* lwork, float* rwork, int* info);
}

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

void cpuGesvd(char job, int m, int n, float* a, float* s, float* u, float* vt, int k,
              std::vector<float>& work, int lwork, int& info) {
    sgesvd_(&job, &job, &m, &n, a, &m, s, u, &m, vt, &k, work.data(), &lwork, &info);
}
void cpuGesvd(char job, int m, int n, Complex* a, float* s, Complex* u, Complex* vt, int k,
              std::vector<Complex>& work, int lwork, int& info) {
    std::vector<float> rwork(5 * std::size_t(k));
    cgesvd_(&job, &job, &m, &n, a, &m, s, u, &m, vt, &k, work.data(), &lwork, rwork.data(), &info);
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
    const auto call = [&](std::vector<T>& work, int lwork) {
        int info = 0;
        cpuGesvd(d.u.empty() ? 'N' : 'S', d.m, d.n, a.data(), d.s.data(), d.u.data(), d.vt.data(),
                 int(d.s.size()), work, lwork, info);
        return info;
    };
    std::vector<T> work(1);
    if (const int info = call(work, -1)) return info;  // tells the workspace
    work.resize(std::size_t(std::real(work[0])));
    return call(work, int(work.size()));
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
