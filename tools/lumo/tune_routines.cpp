#include "tune_routines.h"

#include <algorithm>
#include <complex>

#include "common/measure.h"

namespace lumo {
namespace {

// The operands of a problem of order n, as they were and as a routine gets and overwrites them.
// `a` has a heavy diagonal, so that its triangles are well-conditioned.
template <class T>
struct Operands {
    int n;
    std::vector<T> a0, b0, a, b, c, work;
    std::vector<float> real;
    std::vector<int> ipiv;

    explicit Operands(int order)
        : n(order),
          a0(std::size_t(n) * n),
          b0(a0.size()),
          work(std::size_t(100) * n),
          real(std::size_t(6) * n),
          ipiv(std::size_t(n)) {
        unsigned seed = 1;
        const auto fill = [&](T& x) {
            seed = seed * 1664525u + 1013904223u;
            x = T(float(seed >> 8) / (1 << 23) - 1);
        };
        std::for_each(a0.begin(), a0.end(), fill);
        std::for_each(b0.begin(), b0.end(), fill);
        for (int i = 0; i < n; ++i) a0[std::size_t(i) * (n + 1)] += T(float(n));
        restore();
    }
    void restore() {
        a = a0;
        b = c = b0;
    }
};

// Calls a Fortran routine: its arguments, then the lengths of the strings.
template <class... Argument>
void call(void* routine, Argument... argument) {
    constexpr std::size_t one = 1;
    reinterpret_cast<void (*)(Argument..., std::size_t, std::size_t, std::size_t, std::size_t)>(
        routine)(argument..., one, one, one, one);
}

template <class T>
struct Routine {
    const char* family;
    void (*call)(void* routine, Operands<T>& o);
};

// alpha = 1, beta = 0.
template <class T>
constexpr T one{1};
template <class T>
constexpr T zero{0};
constexpr int step = 1;

template <class T>
const std::vector<Routine<T>>& blas() {
    static const std::vector<Routine<T>> all{
        {"gemm",
         [](void* f, Operands<T>& o) {
             call(f, "N", "N", &o.n, &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n,
                  &zero<T>, o.c.data(), &o.n);
         }},
        {"gemv",
         [](void* f, Operands<T>& o) {
             call(f, "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &step, &zero<T>,
                  o.c.data(), &step);
         }},
        {"trmm",
         [](void* f, Operands<T>& o) {
             call(f, "L", "U", "N", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n);
         }},
        {"trsm",
         [](void* f, Operands<T>& o) {
             call(f, "L", "U", "N", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n);
         }},
        {"syrk", [](void* f, Operands<T>& o) {
             call(f, "U", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, &zero<T>, o.c.data(), &o.n);
         }}};
    return all;
}

// Those that have different names for real and complex elements.
template <class T>
void symmetric(void* f, Operands<T>& o) {
    call(f, "L", "U", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n, &zero<T>, o.c.data(),
         &o.n);
}
template <class T>
void rankTwoUpdate(void* f, Operands<T>& o) {
    call(f, "U", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n, &zero<T>, o.c.data(),
         &o.n);
}
template <class T>
std::vector<Routine<T>> realBlas() {
    return {{"symm", symmetric<T>}, {"syr2k", rankTwoUpdate<T>}};
}
template <class T>
std::vector<Routine<T>> complexBlas() {
    return {
        {"hemm", symmetric<T>}, {"her2k", rankTwoUpdate<T>}, {"herk", [](void* f, Operands<T>& o) {
                                                                  call(f, "U", "N", &o.n, &o.n,
                                                                       &one<T>, o.a.data(), &o.n,
                                                                       &zero<T>, o.c.data(), &o.n);
                                                              }}};
}

template <class T>
const std::vector<Routine<T>>& lapack() {
    static int info;
    static const std::vector<Routine<T>> all{
        {"getrf",
         [](void* f, Operands<T>& o) {
             call(f, &o.n, &o.n, o.b.data(), &o.n, o.ipiv.data(), &info);
         }},
        {"gesv",
         [](void* f, Operands<T>& o) {
             call(f, &o.n, &step, o.b.data(), &o.n, o.ipiv.data(), o.c.data(), &o.n, &info);
         }},
        {"geqrf",
         [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size());
             call(f, &o.n, &o.n, o.b.data(), &o.n, o.c.data(), o.work.data(), &lwork, &info);
         }},
        {"gels",
         [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size());
             call(f, "N", &o.n, &o.n, &step, o.b.data(), &o.n, o.a.data(), &o.n, o.work.data(),
                  &lwork, &info);
         }},
        {"gglse",
         [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size()), p = o.n / 4, m = o.n - p;
             T* c = o.c.data();
             call(f, &m, &o.n, &p, o.a.data(), &o.n, o.b.data(), &o.n, c, c + m, c + 2 * o.n,
                  o.work.data(), &lwork, &info);
         }},
        {"gesvd", [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size());
             std::vector<T> u(o.a.size());
             if (std::is_same_v<T, float>)
                 call(f, "S", "S", &o.n, &o.n, o.b.data(), &o.n, o.real.data(), o.c.data(), &o.n,
                      u.data(), &o.n, o.work.data(), &lwork, &info);
             else
                 call(f, "S", "S", &o.n, &o.n, o.b.data(), &o.n, o.real.data(), o.c.data(), &o.n,
                      u.data(), &o.n, o.work.data(), &lwork, o.real.data() + o.n, &info);
         }}};
    return all;
}

template <class T>
void add(std::vector<TuneRoutine>& all, char letter, const std::vector<Routine<T>>& routines) {
    for (const Routine<T>& routine : routines)
        all.push_back({letter + std::string(routine.family),
                       [call = routine.call](void* one, void* other, int n) {
                           Operands<T> operands(n);
                           return pairedMedians(
                               3, 0.1, [&] { operands.restore(); }, [&] { call(one, operands); },
                               [&] { call(other, operands); });
                       }});
}

}  // namespace

const std::vector<TuneRoutine>& tuneRoutines() {
    using Complex = std::complex<float>;
    using WideComplex = std::complex<double>;
    static const std::vector<TuneRoutine> routines = [] {
        std::vector<TuneRoutine> all;
        add(all, 's', lapack<float>());
        add(all, 'c', lapack<Complex>());
        add(all, 's', blas<float>());
        add(all, 's', realBlas<float>());
        add(all, 'd', blas<double>());
        add(all, 'd', realBlas<double>());
        add(all, 'c', blas<Complex>());
        add(all, 'c', complexBlas<Complex>());
        add(all, 'z', blas<WideComplex>());
        add(all, 'z', complexBlas<WideComplex>());
        return all;
    }();
    return routines;
}

}  // namespace lumo
