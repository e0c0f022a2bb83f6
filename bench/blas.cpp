// The BLAS exports against the CPU BLAS: whole calls of the host interface, on the same data, in
// turn in one run. Columns: `Time` is Lumo's, `cpu` the CPU BLAS's median, `ratio` Lumo's median
// over it.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_blas [--benchmark_filter=...]
#include "contest.h"
#include "platform/fortran_blas.h"

namespace {

// Square operands. trsm and trmm work in b, which would soon be denormal, or infinite, if it were
// not restored.
template <class T>
struct Operands {
    int n;
    std::vector<T> a, b0, b, c;
    explicit Operands(int order)
        : n(order),
          a(bench::randomElements<T>(std::size_t(n) * n)),
          b0(a),
          b(a),
          c(std::size_t(n) * n) {
        for (int i = 0; i < n; ++i) a[std::size_t(i) * n + i] = T(n);
    }
    void restore() { b = b0; }
};

using Real = Operands<float>;
using Double = Operands<double>;
using Complex = Operands<blas::FloatComplex>;
using DoubleComplex = Operands<blas::DoubleComplex>;

float* exported(float* p) {
    return p;
}
double* exported(double* p) {
    return p;
}
lumoFloatComplex* exported(blas::FloatComplex* p) {
    return reinterpret_cast<lumoFloatComplex*>(p);
}
lumoDoubleComplex* exported(blas::DoubleComplex* p) {
    return reinterpret_cast<lumoDoubleComplex*>(p);
}

const bench::Rounds rounds{{256, 101}, {512, 61}, {1024, 21}, {2048, 9}};

// C := A B.
template <class T, class Scalar, class Gemm>
void addGemm(const char* name, Scalar one, Scalar zero, Gemm lumoGemm) {
    bench::add<Operands<T>>(
        {name,
         [=](Operands<T>& o) {
             return int(lumoGemm('N', 'N', o.n, o.n, o.n, one, exported(o.a.data()), o.n,
                                 exported(o.b.data()), o.n, zero, exported(o.c.data()), o.n));
         },
         [=](Operands<T>& o) {
             blas::Routines<T>::gemm('N', 'N', o.n, o.n, o.n, &one, o.a.data(), o.n, o.b.data(),
                                     o.n, &zero, o.c.data(), o.n);
             return 0;
         }},
        rounds);
}

}  // namespace

int main(int argc, char** argv) {
    static const float one = 1, zero = 0;
    static const lumoFloatComplex complexOne{1, 0}, complexZero{0, 0};
    addGemm<float>("lumoSgemm", 1.0f, 0.0f, lumoSgemm);
    addGemm<double>("lumoDgemm", 1.0, 0.0, lumoDgemm);
    addGemm<blas::FloatComplex>("lumoCgemm", complexOne, complexZero, lumoCgemm);
    addGemm<blas::DoubleComplex>("lumoZgemm", lumoDoubleComplex{1, 0}, lumoDoubleComplex{0, 0},
                                 lumoZgemm);
    bench::add<Real>(
        {"lumoSsyrk",
         [](Real& o) {
             return int(lumoSsyrk('L', 'N', o.n, o.n, one, o.a.data(), o.n, zero, o.c.data(), o.n));
         },
         [](Real& o) {
             blas::Routines<float>::syrk('L', 'N', o.n, o.n, &one, o.a.data(), o.n, &zero,
                                         o.c.data(), o.n);
             return 0;
         }},
        rounds);
    bench::add<Real>({"lumoStrsm",
                      [](Real& o) {
                          return int(lumoStrsm('L', 'L', 'N', 'N', o.n, o.n, one, o.a.data(), o.n,
                                               o.b.data(), o.n));
                      },
                      [](Real& o) {
                          blas::Routines<float>::trsm('L', 'L', 'N', 'N', o.n, o.n, &one,
                                                      o.a.data(), o.n, o.b.data(), o.n);
                          return 0;
                      }},
                     rounds);
    bench::add<Real>({"lumoStrmm",
                      [](Real& o) {
                          return int(lumoStrmm('L', 'L', 'N', 'N', o.n, o.n, one, o.a.data(), o.n,
                                               o.b.data(), o.n));
                      },
                      [](Real& o) {
                          blas::Routines<float>::trmm('L', 'L', 'N', 'N', o.n, o.n, &one,
                                                      o.a.data(), o.n, o.b.data(), o.n);
                          return 0;
                      }},
                     rounds);
    bench::add<Complex>({"lumoChemm",
                         [](Complex& o) {
                             return int(lumoChemm('L', 'L', o.n, o.n, complexOne,
                                                  exported(o.a.data()), o.n, exported(o.b.data()),
                                                  o.n, complexZero, exported(o.c.data()), o.n));
                         },
                         [](Complex& o) {
                             blas::Routines<blas::FloatComplex>::symm(
                                 'L', 'L', o.n, o.n, &complexOne, o.a.data(), o.n, o.b.data(), o.n,
                                 &complexZero, o.c.data(), o.n);
                             return 0;
                         }},
                        rounds);
    return bench::runAll(argc, argv);
}
