// The bidiagonal reduction, which is internal: through the harness, in the frame of a device call.
#include "lapack/gebrd.h"

#include "lapack/operands_call.h"
#include "lapack/tuning.h"
#include "platform/cpu/lapack.h"
#include "runtime/frame.h"
#include "support/kernels.h"

namespace test {
namespace {

constexpr double bidiagonalBound = 50;  // LAPACK xBDT01, the testers' standard input file svd.in

template <class T>
std::shared_ptr<void> blocksOf(int nb) {
    return temporarily(lumo::gebrdTuning<T>, {nb, nb});
}

// C := Q C for vect "Q", C P^H for "P", with the reflectors that xGEBRD leaves in an a.m x a.n A.
void applyReflectors(char vect, const WideMatrix& a, const WideMatrix& tau, WideMatrix& c) {
    const char side = vect == 'Q' ? 'L' : 'R', trans = vect == 'Q' ? 'N' : 'C';
    const int k = vect == 'Q' ? a.n : a.m;
    ASSERT_EQ(0, cpu::withWorkspace<Wide>(1, [&](Wide* work, int size) {
                  return cpu::ormbr<Wide>(vect, side, trans, a.m, a.n, k, a.data.data(), a.m,
                                          tau.data.data(), c.data.data(), c.m, work, size);
              }));
}

template <class T>
void checkBidiagonal(const Operand<T>& original, const Operand<RealOf<T>>& diagonal,
                     const Operand<RealOf<T>>& off, const Operand<T>& tauq,
                     const Operand<T>& taup) {
    const auto a = original.now();
    const auto d = diagonal.now(), e = off.now();
    EXPECT_EQ(e.mark(), e(d.m - 1, 0)) << "e has one element less than d";
    const int below = a.m >= a.n ? 0 : 1, right = 1 - below;
    WideMatrix product(a.m, a.n);
    for (int i = 0; i < d.m; ++i) {
        product(i, i) = d(i, 0);
        ASSERT_EQ(T(d(i, 0)), a(i, i)) << i;
        if (i == d.m - 1) break;
        product(i + below, i + right) = e(i, 0);
        ASSERT_EQ(T(e(i, 0)), a(i + below, i + right)) << i;
    }
    applyReflectors('Q', WideMatrix(a), WideMatrix(tauq.now()), product);
    applyReflectors('P', WideMatrix(a), WideMatrix(taup.now()), product);
    const WideMatrix wideA(original.before);
    EXPECT_LT(norm1(wideA - product) / (std::max(a.m, a.n) * norm1(wideA) * epsilon<T>),
              bidiagonalBound);
}

// nb: 0 for the block that users get.
template <class T>
auto gebrdCall(const Matrix<T>& a, int nb) {
    using Real = Adjacent<RealOf<T>>;
    auto run = [nb](auto... passed) {
        const auto blocks = nb ? blocksOf<T>(nb) : nullptr;
        const auto cached = temporarily(lumo::gebrdCachedOnCpu, std::size_t(8000));
        return lumo::computeFrame<T>(lumo::deviceCall, [&] { lumo::gebrd(passed...); });
    };
    auto check = [](auto, auto, const auto&... operands) { checkBidiagonal<T>(operands...); };
    const int k = std::min(a.m, a.n);
    const auto real = blank<RealOf<T>>(k);
    const auto tau = blank<T>(k);
    return operandsCall(inDevice, run, check, a.m, a.n, a, Real{real}, Real{real}, Adjacent<T>{tau},
                        Adjacent<T>{tau});
}

template <class T>
std::vector<GoodCase> gebrdCases(int nb, const Shapes& shapes) {
    std::vector<GoodCase> cases;
    for (auto [m, n] : shapes)
        cases.push_back({label("by " + std::to_string(nb), m, n, inDevice), [=, m = m, n = n] {
                             return gebrdCall(Matrix<T>::random(m, n, m + 3), nb);
                         }});
    return cases;
}

// Products of elements vanish or overflow; in the last, those with a row of ordinary size.
template <class T>
std::vector<GoodCase> extremeCases() {
    using R = RealOf<T>;
    const double least = std::numeric_limits<R>::min() * 1e3,
                 most = std::numeric_limits<R>::max() / 1e3;
    std::vector<GoodCase> cases;
    for (auto [row, rest] :
         {std::pair{least, least}, {most, most}, {std::pow(most, 0.35), std::pow(most, 0.8)}})
        for (auto [m, n] : {Shape{40, 33}, {33, 40}})
            cases.push_back({"of " + std::to_string(std::log10(row)),
                             [=, m = m, n = n, row = row, rest = rest] {
                                 auto a = Matrix<T>::random(m, n);
                                 for (int j = 0; j < n; ++j)
                                     for (int i = 0; i < m; ++i)
                                         a(i, j) = R(i == 0 || j == 0 ? row : rest) *
                                                   (row < rest && i > 0 && j == 0 ? T(0) : a(i, j));
                                 return gebrdCall(a, 8);
                             }});
    return cases;
}

template <class T>
void failing() {
    for (auto [m, n] : {Shape{30, 20}, {20, 30}}) {
        auto a = Matrix<T>::random(m, n);
        a(15, 12) = scalar<T>(std::nan(""));
        auto call = gebrdCall(a, 8);
        EXPECT_EQ(lumoNoError, call->run());
        EXPECT_TRUE(std::isnan(norm1(WideMatrix(call->template result<3>()))));
    }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    // k below, at and above one and two blocks; square, tall, wide.
    const Shapes small{{1, 1},   {1, 6},   {6, 1},   {7, 7},   {8, 8},   {9, 9},   {16, 16},
                       {17, 17}, {30, 16}, {16, 30}, {33, 25}, {25, 33}, {90, 17}, {17, 90}};
    const Shapes large{{96, 96}, {192, 192}, {193, 193}, {230, 150}, {150, 230}, {700, 97}};
    registerRoutine({letter + "gebrd",
                     gebrdCases<T>(8, small) + gebrdCases<T>(1, {{5, 5}}) +
                         gebrdCases<T>(0, large) + extremeCases<T>(),
                     failing<T>, gebrdCases<T>(1, {{3, 2}, {2, 3}}), isDouble<T>,
                     [] { return blocksOf<T>(8); }});
});

class GebrdPaths : public OnSoftwareDevice {
  protected:
    template <class T>
    static std::vector<software::Call> traceOf(int m, int n, int nb) {
        auto call = gebrdCall(Matrix<T>::random(m, n), nb);
        auto trace = test::traceOf([&] { EXPECT_EQ(lumoNoError, call->run()); });
        call->checkResult();
        return trace;
    }
};

// Of 40 columns in blocks of 16 the last 8 are the CPU's, and the host waits for nothing else.
TEST_F(GebrdPaths, OnlyTheLastBlockTravels) {
    for (auto [m, n] : {Shape{50, 40}, {40, 50}}) {
        const auto trace = traceOf<float>(m, n, 16);
        EXPECT_EQ(2 * 32, count(trace, "LARFG_k<"));
        EXPECT_EQ(2 * 2, count(trace, "cublasSgemm"));
        int downloads = 0;
        bool launchedAfter = false, waited = false;
        for (const auto& call : trace) {
            const bool copy = call.name.rfind("cudaMemcpy", 0) == 0;
            if (copy && call.arguments.back() == "2") {
                ++downloads;
                EXPECT_EQ("cudaMemcpy2D", call.name);
            }
            launchedAfter |= downloads > 0 && call.name == "cudaLaunch";
            waited |= downloads == 0 && call.name.find("Synchronize") != std::string::npos;
        }
        EXPECT_EQ(1, downloads);
        EXPECT_FALSE(launchedAfter || waited);
    }
}

TEST_F(GebrdPaths, BlocksByCapability) {
    for (auto [capability, nb, product] :
         {std::tuple{13, 32, "gemvt_k<"}, {20, 96, "gemvt_k<"}, {90, 32, "BothProducts_k<"}}) {
        start(machine(capability));
        EXPECT_EQ(0, count(traceOf<float>(nb, nb, 0), product));
        EXPECT_EQ(nb, count(traceOf<float>(nb + 1, nb + 1, 0), product));
        EXPECT_EQ(nb, count(traceOf<float>(2 * nb, 2 * nb, 0), product));
    }
}

// On recent devices, 6 calls for a column, one less for the first of a panel, and one for a panel;
// a matrix that is not aligned is copied there and back.
TEST_F(GebrdPaths, FewCallsAColumn) {
    start(machine(90));
    const auto trace = traceOf<float>(50, 40, 16);
    EXPECT_EQ(2 * 6 * 16 + 2, count(trace, "cudaLaunch") + count(trace, "cublasSgemm"));
}

TEST_F(GebrdPaths, ArgumentErrorsAndEmptyMatrices) {
    double* null = nullptr;
    expectChecks(&lumo::gebrd<double>, {1, 2, 4}, {-1, -1, null, 1, null, null, null, null},
                 {2, 2, null, 2, null, null, null, null});
    for (auto [expected, m, n, lda] : {std::array{-4, 0, 2, 0}, {0, 0, 2, 1}, {0, 2, 0, 2}})
        EXPECT_EQ(expected, argumentError([&, m = m, n = n, lda = lda] {
                      lumo::gebrd(m, n, null, lda, null, null, null, null);
                  }));
}

}  // namespace
}  // namespace test
