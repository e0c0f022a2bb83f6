#include "bench_routines.h"

#include <algorithm>
#include <stdexcept>

#include "common/measure.h"
#include "platform/fortran_blas.h"
#include "session.h"

extern "C" {
void sgetrf_(const int* m, const int* n, void* a, const int* lda, int* ipiv, int* info);
void sgesv_(const int* n, const int* nrhs, void* a, const int* lda, int* ipiv, void* b,
            const int* ldb, int* info);
void sgeqrf_(const int* m, const int* n, void* a, const int* lda, void* tau, void* work,
             const int* lwork, int* info);
void sgels_(const char* trans, const int* m, const int* n, const int* nrhs, void* a, const int* lda,
            void* b, const int* ldb, void* work, const int* lwork, int* info, std::size_t);
void sgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, void* a,
             const int* lda, float* s, void* u, const int* ldu, void* vt, const int* ldvt,
             void* work, const int* lwork, int* info, std::size_t, std::size_t);
// Complex elements need a real workspace besides.
void cgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, void* a,
             const int* lda, float* s, void* u, const int* ldu, void* vt, const int* ldvt,
             void* work, const int* lwork, float* rwork, int* info, std::size_t, std::size_t);
decltype(sgetrf_) cgetrf_;
decltype(sgesv_) cgesv_;
decltype(sgeqrf_) cgeqrf_;
decltype(sgels_) cgels_;
}

namespace lumo {
namespace {

using C = lumoFloatComplex;
using Z = lumoDoubleComplex;

// A problem of order n: what a call gets and overwrites, and what that was.
template <class T>
struct Operands {
    int n;
    std::vector<T> a0, b0, a, b, c, work;
    std::vector<float> real;
    std::vector<int> ipiv;
    int lwork, info = 0;

    explicit Operands(int order)
        : n(order),
          a0(randomElements<T>(std::size_t(n) * n)),
          b0(a0.rbegin(), a0.rend()),
          c(a0.size()),
          work(std::size_t(100) * n),
          real(std::size_t(6) * n),
          ipiv(std::size_t(n)),
          lwork(int(work.size())) {}
    void restore() {
        a = a0;
        b = b0;
    }
};

// The routine of the element type, of those that there are.
template <class T, class S, class D, class SingleComplex, class DoubleComplex>
constexpr auto select(S s, D d, SingleComplex c, DoubleComplex z) {
    if constexpr (std::is_same_v<T, float>)
        return s;
    else if constexpr (std::is_same_v<T, double>)
        return d;
    else if constexpr (std::is_same_v<T, C>)
        return c;
    else
        return z;
}
template <class T, class S, class SingleComplex>
constexpr auto select(S s, SingleComplex c) {
    return select<T>(s, nullptr, c, nullptr);
}

constexpr int one = 1;
template <class T>
constexpr T unity = select<T>(1.f, 1., C{1, 0}, Z{1, 0});
template <class T>
constexpr T zero{};

// A routine by Lumo and by the CPU library; both return 0, or what went wrong.
template <class T>
struct Entry {
    const char* family;
    double flops;  // of real arithmetic, as LAPACK's timing programs count them
    int (*lumo)(Operands<T>& o);
    int (*cpu)(Operands<T>& o);
};

template <class T>
const std::vector<Entry<T>> blas{
    {"gemm", 2,
     [](Operands<T>& o) {
         return int(select<T>(lumoSgemm, lumoDgemm, lumoCgemm, lumoZgemm)(
             'N', 'N', o.n, o.n, o.n, unity<T>, o.a.data(), o.n, o.b.data(), o.n, zero<T>,
             o.c.data(), o.n));
     },
     [](Operands<T>& o) {
         select<T>(::blas::sgemm_, ::blas::dgemm_, ::blas::cgemm_, ::blas::zgemm_)(
             "N", "N", &o.n, &o.n, &o.n, &unity<T>, o.a.data(), &o.n, o.b.data(), &o.n, &zero<T>,
             o.c.data(), &o.n, 1, 1);
         return 0;
     }},
    {"syrk", 1,
     [](Operands<T>& o) {
         return int(select<T>(lumoSsyrk, lumoDsyrk, lumoCsyrk, lumoZsyrk)(
             'L', 'N', o.n, o.n, unity<T>, o.a.data(), o.n, zero<T>, o.c.data(), o.n));
     },
     [](Operands<T>& o) {
         select<T>(::blas::ssyrk_, ::blas::dsyrk_, ::blas::csyrk_, ::blas::zsyrk_)(
             "L", "N", &o.n, &o.n, &unity<T>, o.a.data(), &o.n, &zero<T>, o.c.data(), &o.n, 1, 1);
         return 0;
     }},
};

template <class T>
int cpuGesvd(Operands<T>& o) {
    const auto call = [&](auto routine, auto... rest) {
        routine("S", "S", &o.n, &o.n, o.a.data(), &o.n, o.real.data(), o.c.data(), &o.n, o.b.data(),
                &o.n, o.work.data(), &o.lwork, rest..., 1, 1);
        return o.info;
    };
    if constexpr (std::is_same_v<T, float>)
        return call(sgesvd_, &o.info);
    else
        return call(cgesvd_, o.real.data() + o.n, &o.info);
}

template <class T>
const std::vector<Entry<T>> lapack{
    {"getrf", 2. / 3,
     [](Operands<T>& o) {
         return int(select<T>(lumoSgetrf, lumoCgetrf)(o.n, o.n, o.a.data(), o.n, o.ipiv.data()));
     },
     [](Operands<T>& o) {
         select<T>(sgetrf_, cgetrf_)(&o.n, &o.n, o.a.data(), &o.n, o.ipiv.data(), &o.info);
         return o.info;
     }},
    {"gesv", 2. / 3,
     [](Operands<T>& o) {
         return int(select<T>(lumoSgesv, lumoCgesv)(o.n, 1, o.a.data(), o.n, o.ipiv.data(),
                                                    o.b.data(), o.n));
     },
     [](Operands<T>& o) {
         select<T>(sgesv_, cgesv_)(&o.n, &one, o.a.data(), &o.n, o.ipiv.data(), o.b.data(), &o.n,
                                   &o.info);
         return o.info;
     }},
    {"geqrf", 4. / 3,
     [](Operands<T>& o) {
         return int(select<T>(lumoSgeqrf, lumoCgeqrf)(o.n, o.n, o.a.data(), o.n, o.c.data()));
     },
     [](Operands<T>& o) {
         select<T>(sgeqrf_, cgeqrf_)(&o.n, &o.n, o.a.data(), &o.n, o.c.data(), o.work.data(),
                                     &o.lwork, &o.info);
         return o.info;
     }},
    {"gels", 4. / 3,
     [](Operands<T>& o) {
         return int(
             select<T>(lumoSgels, lumoCgels)('N', o.n, o.n, 1, o.a.data(), o.n, o.b.data(), o.n));
     },
     [](Operands<T>& o) {
         select<T>(sgels_, cgels_)("N", &o.n, &o.n, &one, o.a.data(), &o.n, o.b.data(), &o.n,
                                   o.work.data(), &o.lwork, &o.info, 1);
         return o.info;
     }},
    {"gesvd", 21,  // with both sets of vectors: Golub and Van Loan's 4 m^2 n + 8 m n^2 + 9 n^3
     [](Operands<T>& o) {
         return int(select<T>(lumoSgesvd, lumoCgesvd)(
             'S', 'S', o.n, o.n, o.a.data(), o.n, o.real.data(), o.c.data(), o.n, o.b.data(), o.n));
     },
     cpuGesvd<T>},
};

template <class T>
Times measure(const Entry<T>& entry, const std::string& name, int n) {
    Operands<T> operands(n);
    const auto failure = [&](const std::string& who, const std::string& what) {
        return std::runtime_error(who + "'s " + name + " fails, n = " + std::to_string(n) + ": " +
                                  what);
    };
    const auto [lumo, cpu] = pairedMedians(
        5, 0.5, [&] { operands.restore(); },
        [&] {
            if (const int status = entry.lumo(operands))
                throw failure("Lumo", describe(lumoStatus(status), lumoGetThreadErrorInfo()));
        },
        [&] {
            if (const int info = entry.cpu(operands))
                throw failure("the CPU library", "info " + std::to_string(info));
        });
    return {lumo, cpu};
}

template <class T>
void add(std::vector<BenchRoutine>& all, char letter, const std::vector<Entry<T>>& entries) {
    constexpr double realFlops = std::is_floating_point_v<T> ? 1 : 4;
    for (const Entry<T>& entry : entries) {
        const std::string name = letter + std::string(entry.family);
        all.push_back({name, realFlops * entry.flops,
                       [&entry, name](int n) { return measure(entry, name, n); }});
    }
}

}  // namespace

const std::vector<BenchRoutine>& benchRoutines() {
    static const std::vector<BenchRoutine> routines = [] {
        std::vector<BenchRoutine> all;
        add(all, 's', blas<float>);
        add(all, 'd', blas<double>);
        add(all, 'c', blas<C>);
        add(all, 'z', blas<Z>);
        add(all, 's', lapack<float>);
        add(all, 'c', lapack<C>);
        return all;
    }();
    return routines;
}

}  // namespace lumo
