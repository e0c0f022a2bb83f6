// What the launchers launch, by which names and with which arguments, and what they refuse.
#include <cxxabi.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <set>

#include "basic/Complement/Complement.h"
#include "basic/Conjugate/Conjugate.h"
#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "basic/LASWP/LASWP.h"
#include "basic/MADD/MADD.h"
#include "basic/Scale/Scale.h"
#include "basic/Set/Set.h"
#include "basic/Subtract/Subtract.h"
#include "basic/lar2v/lar2v.h"
#include "basic/larfg/larfg.h"
#include "basic/largv/largv.h"
#include "basic/lartv/lartv.h"
#include "basic/lasr/lasr.h"
#include "blas/gemv/gemv.h"
#include "blas/symv/symv.h"
#include "cudalib/Algorithm/Memset.h"
#include "platform/registry.h"
#include "support/kernels.h"

namespace test {
namespace {

using C = lumo::Complex<float>;
class Launches : public OnSoftwareDevice {};

// Row r (from 1) stays in place.
const std::vector<int> inPlace{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};

TEST_F(Launches, SixteenInterchangesEachAndNoneForASingleOne) {
    const std::string kernel = "KernelLASWP<cudalib::Map1D, float>";
    const OnDevice<float> a(40, 2, 0);
    for (auto [k1, k2, count] : {std::array{5, 5, 0}, {6, 5, 0}, {1, 16, 1}, {1, 17, 2}}) {
        auto interchange = [&, k1 = k1, k2 = k2] {
            lumo::LASWP(2, a.data(), a.ld(), k1, k2, inPlace.data(), 1);
        };
        EXPECT_EQ(Names(std::size_t(count), kernel), launchedBy(interchange));
    }
    expectElements(a, a);
}

TEST_F(Launches, ArgumentBlocks) {
    const OnDevice<C> device(4, 4, 0);
    C* p = device.data();
    EXPECT_EQ((Names{"4@0", "8@8", "4@16", "4@20", "4@24", "32@28"}),
              argumentsPushedBy([&] { lumo::LASWP(2, p, 2, 1, 2, inPlace.data(), 1); }));
    EXPECT_EQ((Names{"4@0", "4@4", "4@8", "8@16", "8@24", "4@32", "8@40", "8@48", "4@56", "8@64",
                     "4@72"}),
              argumentsPushedBy([&] { lumo::gemv('C', 3, 3, C(1), p, 3, p, 1, C(0), p + 12, 1); }));
}

// The launches and CUBLAS calls that f makes, with a launch's grid and block.
template <class F>
Names multipliersOf(F f) {
    return callsBy(f, [](const software::Call& call) {
        const auto& a = call.arguments;
        return call.name == "cudaLaunch"           ? a.at(0) + a.at(1) + a.at(2)
               : call.name.rfind("cublas", 0) == 0 ? call.name
                                                   : "";
    });
}

TEST_F(Launches, WhoMultiplies) {
    const OnDevice<float> a(65, 65, 0), x(1, 65, 0), y(1, 65, 0);
    auto calls = [&](char trans, int m, int n, float alpha = 1, int incx = 1, float beta = 0,
                     int incy = 1) {
        return multipliersOf([&] {
            lumo::gemv(trans, m, n, alpha, a.data(), 65, x.data(), incx, beta, y.data(), incy);
        });
    };
    EXPECT_EQ(Names{"gemvt_k<float, 16, 8, false>(3,1,1)(32,16,1)"}, calls('t', 65, 65));
    EXPECT_EQ(Names{"gemvt_k<float, 16, 8, true>(1,1,1)(32,16,1)"}, calls('C', 65, 32));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('N', 65, 65));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('T', 65, 65, 1, -1));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('T', 65, 65, 1, 1, 0, -1));
    EXPECT_EQ(Names{}, calls('T', 65, 65, 0, 1, 1));
    EXPECT_EQ(Names{}, calls('N', 0, 65));
    EXPECT_EQ(Names{}, calls('T', 65, 0));
}

TEST_F(Launches, WhoMultipliesSymmetricMatrices) {
    auto calls = [](char uplo, int n) {
        const OnDevice<float> a(n, n, 0), x(1, n, 0), y(1, n, 0);
        return multipliersOf(
            [&] { lumo::symv(uplo, n, 1.f, a.data(), n, x.data(), 1, 0.f, y.data(), 1); });
    };
    auto own = [](const char* triangle, const char* bounds, const std::string& blocks) {
        return Names{"symv_init_k<float>(" + blocks + ",1,1)(256,1,1)",
                     std::string("symv_k<float, (uploType)") + triangle + ", (boundsType)" +
                         bounds + ", 64>(" + blocks + ",1,1)(64,1,1)"};
    };
    EXPECT_EQ(Names{"cublasSsymv"}, calls('L', 1023));
    EXPECT_EQ(own("0", "0", "16"), calls('L', 1024));
    EXPECT_EQ(own("0", "1", "17"), calls('l', 1025));
    EXPECT_EQ(own("1", "0", "16"), calls('U', 1024));
    EXPECT_EQ(own("1", "1", "17"), calls('U', 1025));
    start(machine(13));
    EXPECT_EQ(Names{"cublasSsymv"}, calls('L', 1024));
}

// The eight types, on memory that ends with one element more.
template <class T>
void fills(T value, const std::string& name, const std::string& valueAndCount) {
    for (std::size_t count : {std::size_t(1), std::size_t(255), std::size_t(1025)}) {
        cudalib::ManagedMemory<T, cudalib::CudaAllocator> memory({unsigned(count) + 1, 1});
        std::vector<T> expected(count + 1), result = expected;
        memory.copyFromHost(expected.data(), count + 1);
        auto fill = [&] { cudalib::memset(memory.data(), count, value); };
        EXPECT_EQ(Names{"CudaMemsetTypeKernel<cudalib::Map1D, " + name + ">"}, launchedBy(fill));
        const Names pushed = argumentsPushedBy(fill);
        EXPECT_EQ("8@0 " + valueAndCount, pushed[0] + " " + pushed[1] + " " + pushed[2]);
        memory.copyToHost(result.data(), count + 1);
        std::fill_n(expected.begin(), count, value);
        EXPECT_EQ(0, std::memcmp(expected.data(), result.data(), (count + 1) * sizeof value))
            << name << ", " << count;
    }
}

TEST_F(Launches, MemsetFillsMemoryOfAnyType) {
    fills<unsigned char>(200, "unsigned char", "1@8 8@16");
    fills<char>('x', "char", "1@8 8@16");
    fills<unsigned>(4000000000u, "unsigned int", "4@8 8@16");
    fills<int>(-7, "int", "4@8 8@16");
    fills<float>(1.5f, "float", "4@8 8@16");
    fills<double>(2.5, "double", "8@8 8@16");
    fills<float2>({1, 2}, "float2", "8@8 8@16");
    fills<double2>({3, 4}, "double2", "16@16 8@32");
}

// --- Nothing at all ------------------------------------------------------------------------------

TEST_F(Launches, NothingForGuardedArguments) {
    const OnDevice<C> device(2, 2, 0);
    C *p = device.data(), *null = nullptr;
    float *real = reinterpret_cast<float*>(p), *noReal = nullptr;
    const Names launched = launchedBy([&] {
        for (auto [n, incx, incy] : {std::array{0, 1, 1}, {-1, 1, 1}, {2, 0, 1}, {2, 1, 0}}) {
            lumo::complementVector(n, p, incx, p, incy);
            lumo::copyVector(n, p, incx, p, incy);
        }
        for (auto [n, inc] : {std::pair{0, 1}, {-1, 1}, {2, 0}}) {
            lumo::conjugateVector(n, p, inc);
            lumo::scale(n, p, p, inc, 1);
            lumo::setVector<0>(n, p, inc);
        }
        for (auto [m, n, lda] : {std::array{0, 2, 2}, {2, -1, 2}, {2, 0, 2}, {2, 2, 0}}) {
            lumo::conjugateMatrix(m, n, p, lda);
            lumo::conjugateMatrixLower(m, n, p, lda);
            lumo::setMatrix<0>(m, n, p, lda);
        }
        for (auto [m, n] : {std::pair{0, 2}, {2, 0}}) {
            EXPECT_EQ(cudaSuccess, lumo::MADD('N', 'N', m, n, p, 2, p, 2, p, 2, 1.f, 1.f));
            EXPECT_EQ(cudaSuccess, lumo::subtractMatrix('T', 'N', m, n, p, 2, p, 2));
            lumo::copyMatrix(m, n, p, 2, p, 2);
            lumo::setTriangle<0>('U', 'U', m, n, p, 2);
            lumo::LACPY('A', m, n, null, 0, null, 0);
            lumo::LASET('A', m, n, C(1), C(1), null, 0);
            lumo::LASR('L', 'V', 'F', m, n, noReal, noReal, null, 0);
            lumo::LASR('R', 'V', 'F', m, n, noReal, noReal, null, 0);
        }
        lumo::LASR('L', 'V', 'F', 1, -3, noReal, noReal, null, 0);  // no check sees this one
        // Other pivots are known, and do nothing.
        for (char pivot : {'T', 'b'}) lumo::LASR('R', pivot, 'F', 2, 2, real, real, p, 2);
        lumo::LASWP(0, null, -1, -1, -1, nullptr, 1);
        lumo::LASWPCOL(0, null, -1, -1, -1, nullptr, 1);
        lumo::lar2v(0, null, null, null, 0, noReal, null, 0);
        lumo::lartv(0, null, 0, null, 0, noReal, null, 0);
        lumo::largv(0, null, 0, null, 0, noReal, 0);
        lumo::larfg(0, null, null, -1, p);
        cudalib::memset(noReal, 0, 1.0f);
    });
    EXPECT_EQ(Names{}, launched);
}

TEST_F(Launches, ChecksInOrder) {
    float x = 0, *noReal = nullptr;
    expectChecks(&lumo::LACPY<float>, {1, 2, 3, 4, 5, 6, 7}, {'x', -1, -1, noReal, 1, noReal, 1},
                 {'f', 2, 2, &x, 2, &x, 2});
    EXPECT_EQ(-1, argumentError([&] { lumo::LACPY('\0', 1, 1, noReal, 0, noReal, 0); }));
    EXPECT_EQ(-3, argumentError([&] { lumo::LACPY('f', 0, -1, noReal, 0, noReal, 0); }));
    expectChecks(&lumo::LASET<float>, {1, 2, 3, 6, 7}, {'x', -1, -1, 0, 1, noReal, 1},
                 {'u', 2, 1, 0, 1, &x, 2});
    for (auto launcher : {&lumo::LASWP<float>, &lumo::LASWPCOL<float>}) {
        expectChecks(launcher, {1, 2, 3, 4, 5, 6}, {-1, noReal, -1, -1, -1, nullptr, 1},
                     {2, &x, 2, 1, 1, inPlace.data(), 1});
        EXPECT_EQ(0, argumentError([&] { launcher(2, &x, 2, 1, 1, inPlace.data(), 1); }));
    }
    // Columns need a leading dimension that holds the rows; for rows any will do.
    EXPECT_EQ(-3, argumentError([&] { lumo::LASWPCOL(2, &x, 1, 1, 1, inPlace.data(), 1); }));
    EXPECT_EQ(0, argumentError([&] { lumo::LASWP(2, &x, 0, 1, 1, inPlace.data(), 1); }));
    expectChecks(&lumo::LASR<float>, {1, 2, 3, 4, 5, 6, 7, 8, 9},
                 {'X', 'X', 'X', -1, -1, noReal, noReal, noReal, 1},
                 {'L', 'T', 'F', 2, 2, &x, &x, &x, 2});
    expectChecks(&lumo::larfg<float>, {1, 5, 2, 3, 4}, {-1, noReal, noReal, -1, noReal},
                 {2, &x, &x, 1, &x});
    EXPECT_EQ(-5, argumentError([&] { lumo::larfg(0, noReal, noReal, -1, noReal); }));
    EXPECT_EQ(Outcome(lumoArgumentError, -5),
              outcome(lumo::deviceLarfg(0, noReal, noReal, 1, noReal)));
    expectChecks(&lumo::gemv<float>, {1, 2, 3, 6, 8, 11}, {'X', -1, -1, 1, &x, 1, &x, 0, 0, &x, 0},
                 {'N', 2, 2, 1, &x, 2, &x, 1, 0, &x, 1});
    expectChecks(&lumo::symv<float>, {1, 5, 7, 10}, {'X', 1024, 1, &x, 1, &x, 0, 0, &x, 0},
                 {'L', 1024, 1, &x, 1024, &x, 1, 0, &x, 1});
    const OnDevice device(vectorOf<float>(3, 1));
    EXPECT_EQ(lumoNoError,
              lumo::deviceLarfg(2, device.data(), device.data() + 1, 0, device.data() + 2));
    C z, *null = nullptr;
    expectChecks(&lumo::lar2v<C>, {1, 2, 3, 4, 5, 6, 7, 8},
                 {-1, null, null, null, 0, noReal, null, 0}, {1, &z, &z, &z, 1, &x, &z, 1});
    expectChecks(&lumo::lartv<C>, {1, 2, 3, 4, 5, 6, 7, 8}, {-1, null, 0, null, 0, noReal, null, 0},
                 {1, &z, 1, &z, 1, &x, &z, 1});
    expectChecks(&lumo::largv<C>, {1, 2, 3, 4, 5, 6, 7}, {-1, null, 0, null, 0, noReal, 0},
                 {1, &z, 1, &z, 1, &x, 1});
}

// Sums and differences tell their caller when a launch could not be configured; nobody else does.
TEST_F(Launches, AFailedConfigurationLaunchesNothing) {
    const OnDevice<float> device(2, 2, 0), other(2, 2, 1);
    float *a = device.data(), *b = other.data();
    const std::function<int()> calls[] = {
        [&] { return lumo::MADD('N', 'T', 2, 2, a, 2, a, 2, b, 2, 1.f, 1.f); },
        [&] { return lumo::subtractMatrix('N', 'N', 2, 2, a, 2, b, 2); },
        [&] { return lumo::subtractMatrix('T', 'N', 2, 2, a, 2, b, 2); },
        [&] { return lumo::conjugateVector(2, a, 1), 9; },
    };
    for (const auto& call : calls) {
        software::inject({1, "cudaConfigureCall", 9, 14});
        EXPECT_EQ(Names{}, launchedBy([&] { EXPECT_EQ(9, call()); }));
        EXPECT_EQ("cudaConfigureCall", software::removeFault());
        EXPECT_EQ(9, cudaGetLastError());
    }
}

// --- Names ---------------------------------------------------------------------------------------

std::string demangled(const char* name) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

TEST(KernelNames, AreTheDemangledFunctions) {
    std::set<std::string> names;
    for (const platform::Kernel* kernel : platform::registeredKernels())
        EXPECT_TRUE(names.insert(demangled(kernel->name)).second)
            << kernel->name << " is registered twice";
    for (const char* name : {
             "void CudaMemsetTypeKernel<cudalib::Map1D, double2>(double2*, double2, unsigned long)",
             "void KernelLASWP<cudalib::Map1D, float>(int, float*, int, int, int, lumo::swstruct)",
             "void KernelLASWPCOL<cudalib::Map1D, lumo::Complex<double> >(int, "
             "lumo::Complex<double>*, int, int, int, lumo::swstruct)",
             "void LACPY_L_Kernel<float>(int, int, float*, int, float*, int)",
             "void LASET_k<double>(char, int, int, double, double, double*, int)",
             "void CopyVector_k<cudalib::Map1D, float>(int, float*, int, float*, int)",
             "void CopyVectorRealToComplex_k<cudalib::Map1D, lumo::Complex<float> >(int, "
             "lumo::Complex<float>*, int, lumo::ScalarTraits<lumo::Complex<float> >::Real*, int)",
             "void SetMatrix_k<cudalib::Map2D, 0, float>(int, int, float*, int)",
             "void SetVector_k<cudalib::Map1D, 1, double>(int, double*, int)",
             "void SetTriangularMatrix_k<1, float>(bool, bool, int, int, float*, int, float)",
             "void Transpose_k<double, true>(double*, unsigned long, double const*, unsigned long, "
             "unsigned long, unsigned long)",
             "void TransposeInplace_k<float, false>(float*, unsigned long, unsigned long)",
             "void MADD_NT_k<lumo::Complex<float>, float>(int, int, float, lumo::Complex<float> "
             "const*, int, float, lumo::Complex<float> const*, int, lumo::Complex<float>*, int)",
             "void SubtractMatrix_TN_k<float>(int, int, float*, int, float*, int)",
             "void lumo::ConjugateVector_k<cudalib::Map1D, float>(int, float*, int)",
             "void lumo::ConjugateMatrixLower_k<cudalib::Map2D, lumo::Complex<float> >(int, int, "
             "lumo::Complex<float>*, int)",
             "void Scale_k<cudalib::Map1D, double, true>(int, double*, double*, int)",
             "void LARFG_k<cudalib::StaticOneBlockMap1D<32u>, float>(int, float*, float*, int, "
             "float*)",
             "void gemvt_k<double, 16, 8, true>(int, int, int, double, double const*, int, double, "
             "double const*, int, double*, int)",
             "void symv_k<float, (uploType)1, (boundsType)0, 64>(int, float, float const*, int, "
             "float const*, int, float, float*, int)",
         })
        EXPECT_EQ(1u, names.count(name)) << name;
    // Those whose parameters are nobody's business but their launchers'.
    for (const std::string begin :
         {"void PrecisionConvertTriangular_k<cudalib::TriangularMap2D, float, double>(",
          "void LAR2V_k<lumo::Complex<float>, float>(", "void LARGV_k<float>(",
          "void LARTV_k<lumo::Complex<float> >(",
          "void LASR_k<cudalib::StaticMap1D<64u>, (char)82, (char)86, (char)70, float>(",
          "void LASR_k<cudalib::StaticMap1D<128u>, (char)76, (char)86, (char)66, float>("})
        EXPECT_EQ(begin, names.lower_bound(begin)->substr(0, begin.size()));
}

}  // namespace
}  // namespace test
