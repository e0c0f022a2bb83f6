// QR, LQ and RQ factorisations, and what is made of their reflectors.
#include "lapack/apply_q.h"
#include "lapack/generate_q.h"
#include "lapack/geqrf.h"
#include "lapack/operands_call.h"
#include "lapack/orthogonal.h"
#include "lapack/orthogonal_factorization.h"

namespace test {
namespace {

using lumo::Reflectors;

// Each diagonal element of R has the sign that LAPACK gives it.
template <class T>
void expectSignsOfLapack(const Matrix<T>& a, const Matrix<T>& factors) {
    WideMatrix reference(a);
    std::vector<Wide> tau(std::min(a.m, a.n));
    cpu::withWorkspace<Wide>(1, [&](Wide* work, int size) {
        return cpu::geqrf<Wide>(a.m, a.n, reference.data.data(), a.m, tau.data(), work, size);
    });
    // The last of a square matrix has no reflector that leaves its sign alone.
    for (int i = 0; i < int(tau.size()) && i < a.m - 1; ++i)
        EXPECT_GT((reference(i, i) * wide(factors(i, i))).real(), 0) << "diagonal element " << i;
}

template <class T>
auto geqrfCall(const Matrix<T>& a, Interface where) {
    auto check = [](auto, auto, const Operand<T>& f, const Operand<T>& tau) {
        EXPECT_LT(factorizationResidual(Reflectors::ofQr, f.before, f.now(), tau.now()), qrBound);
        expectSignsOfLapack(f.before, f.now());
    };
    return routineCall<T>(
        where, [](auto e) { return e.geqrf; }, check, a.m, a.n, a,
        Adjacent<T>{blank<T>(std::min(a.m, a.n))});
}

template <class T>
std::vector<GoodCase> goodCases(const Shapes& shapes, Shrink blocks = nullptr) {
    auto make = [](int m, int n, Interface i) {
        return geqrfCall(Matrix<T>::random(m, n, m + 3), i);
    };
    return casesOf("geqrf", shapes, make, blocks);
}

template <class T>
void failing() {
    auto a = Matrix<T>::random(13, 11);
    a(6, 2) = scalar<T>(std::nan(""));
    auto call = geqrfCall(a, inDevice);
    EXPECT_EQ(lumoNoError, call->run());
    // With panels of 4 in R's last element. Some CPU libraries, whose one panel it is otherwise,
    // tell it by tau alone.
    EXPECT_TRUE(std::isnan(wide(call->template result<2>()(10, 10)).real()) ||
                std::isnan(wide(call->template result<3>()(2, 0)).real()));
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    // Both sides of every switch with panels of 4, then the panels that users get.
    const Shapes small{{1, 1}, {1, 5},  {5, 1},  {4, 4},  {5, 5},  {7, 7},   {8, 8},
                       {9, 9}, {30, 4}, {30, 5}, {4, 30}, {5, 30}, {33, 21}, {21, 33}};
    registerRoutine({letter + "geqrf",
                     goodCases<T>(small, shrinkPanels<T>) +
                         goodCases<T>(small, shrinkPanelsThere<T>) +
                         goodCases<T>({{96, 96}, {97, 97}, {130, 191}, {300, 193}}),
                     failing<T>, goodCases<T>({{4, 4}, {9, 9}, {13, 6}, {6, 13}}), isDouble<T>,
                     shrinkPanelsThere<T>});
});

// A 1 x 1 matrix may have null operands as far as the check goes.
TEST_F(OnMachine, QrOfOneElementWithNullOperands) {
    float one = 1;
    for (auto f : {lumoSgeqrf, lumoDeviceSgeqrf})
        EXPECT_EQ(Outcome(lumoRuntimeError, cudaErrorInvalidValue),
                  outcome(f(1, 1, nullptr, 1, &one)));
    EXPECT_EQ(lumoRuntimeError, lumoSgeqrf(1, 1, &one, 1, nullptr));
}

// --- Reflectors of all three factorisations ---------------------------------------------------

constexpr Reflectors kinds[] = {Reflectors::ofQr, Reflectors::ofLq, Reflectors::ofRq};

template <class F>
F of(Reflectors kind, F qr, F lq, F rq) {
    return kind == Reflectors::ofQr ? qr : kind == Reflectors::ofLq ? lq : rq;
}

template <class T>
class ReflectorTest : public OnMachine {
  protected:
    struct Factors {
        Matrix<T> a, f, tau;
        WideMatrix q;
    };

    Factors factorize(Reflectors kind, int m, int n) {
        const auto a = Matrix<T>::random(m, n, m + 2, 7);
        OnDevice<T> f(a), tau(blank<T>(std::min(m, n)));
        of(kind, lumo::factorizeQr<T>, lumo::factorizeLq<T>, lumo::factorizeRq<T>)(
            m, n, f.data(), f.ld(), tau.data());
        Factors result{a, f.download(), tau.download(), {0, 0}};
        result.q = qOf(kind, result.f, result.tau);
        EXPECT_TRUE(result.f.paddingUntouched());
        return result;
    }

    const std::shared_ptr<void> blocks_ = shrinkPanels<T>();
};
TYPED_TEST_SUITE(ReflectorTest, ElementTypes);

TYPED_TEST(ReflectorTest, Factorizations) {
    for (Reflectors kind : kinds)
        for (auto [m, n] : {std::pair{3, 9}, {4, 9}, {5, 9}, {8, 20}, {9, 9}, {13, 22}, {11, 6}}) {
            const auto r = this->factorize(kind, m, n);
            EXPECT_LT(factorizationResidual(kind, r.a, r.f, r.tau), qrBound)
                << int(kind) << ": " << m << " x " << n;
        }
}

TYPED_TEST(ReflectorTest, ProductsWithQ) {
    using T = TypeParam;
    for (Reflectors kind : kinds)
        for (int k : {1, 4, 5, 11}) {
            const int order = 14;
            const auto r = this->factorize(kind, kind == Reflectors::ofQr ? order : k,
                                           kind == Reflectors::ofQr ? k : order);
            OnDevice<T> f(r.f), tau(r.tau);
            auto apply = of(kind, lumo::ormqr<T>, lumo::ormlq<T>, lumo::ormrq<T>);
            for (char side : {'L', 'R'})
                for (char trans : {'N', 'C'}) {
                    const bool left = side == 'L';
                    const auto c = Matrix<T>::random(left ? order : 3, left ? 3 : order, 17, 5);
                    OnDevice<T> result(c);
                    apply(side, trans, c.m, c.n, k, f.data(), f.ld(), tau.data(), result.data(),
                          c.ld);
                    const WideMatrix q = op(trans, r.q), wideC(c);
                    EXPECT_LT(difference(WideMatrix(result.download()),
                                         left ? q * wideC : wideC * q, norm1(wideC), epsilon<T>),
                              qrBound)
                        << int(kind) << side << trans << k;
                    EXPECT_TRUE(result.download().paddingUntouched());
                }
            EXPECT_TRUE(f.download() == r.f) << "the reflectors are as they were";
        }
}

TYPED_TEST(ReflectorTest, GeneratedQ) {
    using T = TypeParam;
    for (Reflectors kind : {Reflectors::ofQr, Reflectors::ofLq})
        for (auto [lines, k] :
             {std::pair{0, 0}, {3, 0}, {1, 1}, {4, 4}, {9, 9}, {12, 5}, {14, 8}}) {
            const bool columns = kind == Reflectors::ofQr;
            const int length = 14, m = columns ? length : lines, n = columns ? lines : length;
            const auto r = this->factorize(kind, columns ? length : k, columns ? k : length);
            auto a = blank<T>(m, n, m + 1);  // reflectors in its first lines, anything beside
            for (int j = 0; j < r.f.n; ++j) std::copy_n(&r.f(0, j), r.f.m, &a(0, j));
            OnDevice<T> q(a), tau(r.tau);
            (columns ? lumo::orgqr<T> : lumo::orglq<T>)(m, n, k, q.data(), a.ld, tau.data());
            const auto result = q.download();
            EXPECT_TRUE(result.paddingUntouched());
            EXPECT_LT(difference(WideMatrix(result), leading(r.q, m, n), 1, epsilon<T>), qrBound)
                << int(kind) << " " << lines << " " << k;
        }
}

// --- What the trace tells ---------------------------------------------------------------------

class QrPaths : public OnSoftwareDevice {
  protected:
    static std::vector<software::Call> traceOfOne(int n = 20) {
        auto call = geqrfCall(Matrix<float>::random(30, n, 33), inDevice);
        return traceOf([&] { EXPECT_EQ(lumoNoError, call->run()); });
    }
    const std::shared_ptr<void> blocks_ = shrinkPanels<float>();
};

// One panel a step goes down and up, the next one while the rest is updated, and the last block in
// one piece; nothing else leaves the device but the scalar factors.
TEST_F(QrPaths, PanelsOnTheCpuProductsOnTheDevice) {
    const auto trace = traceOfOne();
    EXPECT_EQ(4, count(trace, "cudaMemcpy2DAsync"));  // panels down
    EXPECT_EQ(3 * 5 + 3, count(trace, "cublasSgemm"));
    EXPECT_EQ(1, count(trace, "cudaStreamCreate"));
    std::size_t down = 0;
    for (const auto& call : trace)
        if (call.name.rfind("cudaMemcpy2D", 0) == 0 && call.name != "cudaMemcpy2DAsync" &&
            call.arguments.back() == "2")
            down += std::stoul(call.arguments[4]) * std::stoul(call.arguments[5]);
    EXPECT_EQ(14u * 4 * sizeof(float), down) << "the tail alone";
}

// However many panels there are.
TEST_F(QrPaths, ModernDevicesWaitForNoCopyInTheLoop) {
    start(machine(90));
    for (int n : {12, 20, 28}) {
        const auto trace = traceOfOne(n);
        EXPECT_EQ((n / 4 - 1) * 2, count(trace, "cudaMemcpy2DAsync")) << "panels down and up";
        EXPECT_EQ(2, count(trace, "cudaMemcpy2D")) << "the tail";
        EXPECT_EQ(2, count(trace, "cudaMemcpy")) << "the scalar factors";
    }
}

// Panels of 4 columns by strips of 3 and 1: two products to apply each block of reflectors, to what
// is left of its panel, to the next panel and to the rest, and two to make one of two strips.
TEST_F(QrPaths, DevicesMayFactoriseTheirPanels) {
    start(machine(90));
    const auto there = shrinkPanelsThere<float>();
    const auto trace = traceOfOne();
    EXPECT_EQ(5 * 2, count(trace, "QrPanel_k<"));
    EXPECT_EQ(5 * (2 + 2) + 4 * 2 + 3 * 2, count(trace, "cublasSgemm"));
    for (const char* name : {"cudaMemcpy", "cudaMemcpyAsync", "cudaMemcpy2D", "cudaMemcpy2DAsync"})
        EXPECT_EQ(0, count(trace, name)) << name;
    EXPECT_EQ(2, count(trace, "cudaStreamSynchronize")) << "before the memory goes";
}

TEST_F(QrPaths, WithoutOverlapThereIsNoStream) {
    auto plain = machine();
    plain.devices[0].deviceOverlap = false;
    start(plain);
    const auto trace = traceOfOne();
    EXPECT_EQ(0, count(trace, "cudaStreamCreate") + count(trace, "cudaMemcpy2DAsync"));
}

}  // namespace
}  // namespace test
