// What the harness does not see of the BLAS: which pieces an operation is split into, what is
// transferred, and the odd corners.
#include <sys/mman.h>
#include <unistd.h>

#include "blas/blas_call.h"
#include "routine/blas_allocator.h"

namespace test {
namespace {

using software::Call;
using ComplexF = lumo::Complex<float>;
using ComplexD = lumo::Complex<double>;

std::vector<Call> run(test::Call& call) {
    return traceOf([&] { EXPECT_EQ(lumoNoError, call.run()); });
}

// "m n k" of the products in a trace, in order.
std::string products(const std::vector<Call>& trace) {
    std::string sizes;
    for (const auto& [name, arguments] : trace)
        if (name.size() == 11 && name.rfind("gemm") == 7)
            sizes += "(" + arguments[2] + " " + arguments[3] + " " + arguments[4] + ")";
    return sizes;
}

class BlasPaths : public OnSoftwareDevice {
  protected:
    void TearDown() override {
        lumo::blasTuning = {};
        OnSoftwareDevice::TearDown();
    }
};
template <class T>
class BlasPathsOf : public BlasPaths {};
TYPED_TEST_SUITE(BlasPathsOf, ElementTypes);

// A product of operands that are not numbers themselves, or have extent k = 0, of a size at which
// CPU libraries have kernels of their own: f(c) for every element of the result.
template <class T, class F>
void forEachResult(const Operation<T>& operation, int k, Wide alpha, Wide beta, bool nanOperands,
                   F f) {
    const std::string letters = operation.firstLetters();
    const Shapes s = operation.shapes(letters, 4, 4, k);
    auto a = Matrix<T>::random(s.a.m, s.a.n), b = Matrix<T>::random(s.b.m, s.b.n);
    auto c = Matrix<T>::random(s.c.m, s.c.n);
    for (auto* x : {&a, &b})
        if (nanOperands) std::fill(x->data.begin(), x->data.end(), scalar<T>(notANumber));
    EXPECT_EQ(lumoNoError,
              operation.call(inHost, {letters, 4, 4, k, scalar<T>(alpha.real(), alpha.imag()),
                                      a.data.data(), a.ld, b.data.data(), b.ld,
                                      scalar<T>(beta.real(), beta.imag()), c.data.data(), c.ld}));
    for (int j = 0; j < c.n; ++j)
        for (int i = 0; i < c.m; ++i)
            if (operation.triangleOfC < 0 || inTriangle(letters[operation.triangleOfC], i, j))
                f(wide(c(i, j)));
}

// A scalar that is not a number, in either part, makes the whole result none; unless it is of no
// consequence, as alpha is without a product. What is not multiplied is not read.
TYPED_TEST(BlasPathsOf, ScalarsCountWhereTheyMultiply) {
    using T = TypeParam;
    for (const auto& operation : operations<T>()) {
        const bool hasExtent = operation.sizes.back() == 'k';
        const bool realAlpha = !lumo::isComplex<T> || operation.name == "herk";
        const bool realBeta =
            realAlpha || operation.name.substr(1, 3) == "yr2" || operation.name == "her2k";
        for (const Wide& nan : {Wide(notANumber, 1), Wide(0, notANumber)}) {
            SCOPED_TRACE(operation.name);
            auto isNan = [](Wide c) { EXPECT_TRUE(std::isnan(c.real())) << c; };
            const bool inPart = std::isnan(nan.real());
            if (inPart || !realAlpha) forEachResult(operation, 4, nan, 0, false, isNan);
            if (operation.scalars == 2 && (inPart || !realBeta))
                forEachResult(operation, 4, 1, nan, false, isNan);
        }
        auto isNumber = [](Wide c) { EXPECT_TRUE(std::isfinite(std::abs(c))) << c; };
        for (double beta : {0, 1, 2}) {
            forEachResult(operation, 4, 0, beta, true, isNumber);
            if (hasExtent)
                forEachResult(operation, 0, {notANumber, notANumber}, beta, true, isNumber);
        }
    }
}

// Every case of the split with a limit of 384 elements, recursion and odd halves, and what only
// just is not split. The pieces that share C and are added up come one after the other.
struct Split {
    const char* name;
    const char* letters;
    int m, n, k, padding;
    const char* pieces;
};
constexpr Split splits[] = {
    {"case 1, recursive, odd", "NN", 10, 7, 65, 2, "(10 7 16)(10 7 16)(10 7 16)(10 7 17)"},
    {"case 1, B transposed", "NC", 12, 7, 33, 0, "(12 7 16)(12 7 17)"},
    {"case 1, at the limit", "NN", 12, 7, 32, 0, "(12 7 16)(12 7 16)"},
    {"case 1, below it", "NN", 12, 7, 31, 0, "(12 7 31)"},
    {"case 1, lda does not divide", "NN", 11, 7, 65, 0, "(11 7 65)"},
    {"case 1, a k of one is not halved", "NN", 384, 7, 1, 0, "(384 7 1)"},
    {"case 2, recursive", "TN", 5, 192, 11, 0, "(5 48 11)(5 48 11)(5 48 11)(5 48 11)"},
    {"case 2, ldb is padded", "NN", 11, 96, 9, 2, "(11 48 9)(11 48 9)"},
    {"case 2, no multiple of 96", "TN", 5, 64, 11, 0, "(5 64 11)"},
    {"case 2, n does not divide", "TN", 5, 288, 11, 0, "(5 288 11)"},
    {"case 3, recursive", "CT", 192, 5, 11, 0, "(48 5 11)(48 5 11)(48 5 11)(48 5 11)"},
    {"case 3, no multiple of 96", "TT", 64, 5, 11, 0, "(64 5 11)"},
    {"case 4, recursive, odd", "TT", 5, 12, 65, 0, "(5 12 16)(5 12 16)(5 12 16)(5 12 17)"},
    {"case 4, A as it is", "NC", 11, 12, 33, 0, "(11 12 16)(11 12 17)"},
    {"case 4, ldb does not divide", "TT", 5, 11, 65, 0, "(5 11 65)"},
    {"cases 2 and 3", "TN", 96, 96, 11, 0, "(48 48 11)(48 48 11)(48 48 11)(48 48 11)"},
};

template <class T>
void expectSplits() {
    for (const Split& s : splits) {
        SCOPED_TRACE(s.name);
        const Problem p{s.letters, s.m, s.n, s.k, {0.7, -0.9}, {-0.3, 0.2}, s.padding};
        auto call = blasCall<T>("gemm", p, inDevice);
        EXPECT_EQ(s.pieces, products(run(*call)));
        call->checkResult();
    }
}

TEST_F(BlasPaths, ProductsBeyondTheLimitAreHalved) {
    lumo::blasTuning.gemmLimit = 384;
    expectSplits<float>();
    expectSplits<ComplexD>();
    // Through the host interface the same body runs: 96 is the leading dimension of 35 rows.
    auto call = blasCall<float>("gemm", {"NN", 35, 7, 9, 1, 1}, inHost);
    lumo::blasTuning.gemmLimit = 4 * int(lumo::blasPitch<float>(35, 20, true));
    EXPECT_EQ("(35 7 2)(35 7 2)(35 7 2)(35 7 3)", products(run(*call)));
    call->checkResult();
    // Devices before capability 2.0 take everything in one piece.
    start(machine(13));
    lumo::blasTuning.gemmLimit = 384;
    auto whole = blasCall<float>("gemm", {"NN", 12, 7, 65, 1, 1}, inDevice);
    EXPECT_EQ("(12 7 65)", products(run(*whole)));
}

// The tests multiply in 32 bits. 2^16 times 2^15 wraps to a negative number: no split.
TEST_F(BlasPaths, TheTestForASplitWraps) {
    lumo::blasTuning.gemmLimit = 1 << 16;
    const auto trace = traceOf([] {
        EXPECT_EQ(lumoBlasError, lumoDeviceSgemm('N', 'N', -1, 1, 1 << 15, 1, nullptr, 1 << 16,
                                                 nullptr, 1 << 15, 0, nullptr, 1));
    });
    EXPECT_EQ("(-1 1 32768)", products(trace));
}

// Sizes at which users' calls go by blocks, one type for each operation.
template <class T>
void expectBlocks(const char* name, const char* letters, int m, int n, int k, int calls) {
    SCOPED_TRACE(name);
    auto call = blasCall<T>(name, {letters, m, n, k, {0.7, -0.9}, {0.5, 0.25}, 3}, inHost);
    const auto trace = run(*call);
    EXPECT_EQ(calls, countIf(trace, [](const Call& c) {
                  return c.name.rfind("cublas", 0) == 0 && c.name != "cublasGetError";
              }));
    call->checkResult();
}

TEST_F(BlasPaths, LargeOperationsGoByBlocks) {
    // Before the one on the diagonal, on it, behind it: 1 + 1, 2, 1 + 1 ...
    expectBlocks<float>("symm", "LU", 1500, 1024, 0, 4);
    expectBlocks<ComplexF>("hemm", "RL", 1024, 1025, 0, 4);
    expectBlocks<double>("syrk", "LT", 0, 1025, 1024, 3);
    expectBlocks<ComplexF>("herk", "UN", 0, 1500, 1025, 3);
    expectBlocks<double>("syr2k", "UT", 0, 1024, 1500, 1);
    expectBlocks<ComplexF>("her2k", "LC", 0, 1500, 1025, 4);
    expectBlocks<float>("symm", "LU", 1023, 1500, 0, 1);
    expectBlocks<double>("syrk", "LN", 0, 1500, 1023, 1);
}

// --- Transfers ------------------------------------------------------------------------------

int copies(const std::vector<Call>& trace, const char* kind) {
    return countIf(trace, [=](const Call& c) {
        return c.name.rfind("cudaMemcpy", 0) == 0 && c.arguments.back() == kind;
    });
}

TYPED_TEST(BlasPathsOf, CTravelsUpWhereItCounts) {
    using T = TypeParam;
    for (const auto& operation : operations<T>()) {
        SCOPED_TRACE(operation.name);
        const std::string letters = operation.firstLetters();
        const bool skipped = operation.scalars == 2 && operation.name.substr(2) == "mm";
        for (const Wide& beta : {Wide(0), Wide(1), Wide(-2, 3), Wide(notANumber),
                                 Wide(lumo::isComplex<T> ? 0 : 1, notANumber)}) {
            BlasCall<T> call(operation, {letters, 5, 4, 3, 1, beta, 1}, inHost);
            const auto trace = run(call);
            const bool unread = skipped && beta == 0.0;
            EXPECT_EQ(operation.operands - unread, copies(trace, "1")) << beta;
            EXPECT_EQ(1, copies(trace, "2"));
            if (!std::isnan(beta.real()) && !std::isnan(beta.imag())) call.checkResult();
        }
    }
}

// The reciprocal of a subnormal pivot may be infinite, where the quotient is not.
TYPED_TEST(BlasPathsOf, SubnormalPivotsDivide) {
    using T = TypeParam;
    const double tiny = 3 * std::numeric_limits<RealOf<T>>::denorm_min() / epsilon<T> / 16;
    const auto trsm = operation<T>("trsm");
    for (const char* letters : {"LUNN", "LLNN", "LUTN", "LLCN", "RUNN", "RLNN", "RUCN", "RLTN"})
        for (int order : {1, 5}) {
            SCOPED_TRACE(letters);
            auto a = Matrix<T>::random(order, order, order + 1, 1);
            const int at = order / 2;
            for (int i = 0; i < order; ++i) {
                a(i, i) = a(i, i) + T(2);
                a(i, at) = a(at, i) = i == at ? scalar<T>(tiny, -tiny / 2) : T(0);
            }
            const bool left = letters[0] == 'L';
            const WideMatrix x(Matrix<T>::random(left ? order : 3, left ? 3 : order, 0, 2));
            const auto opA = op(letters[2], triangular(letters[1], 'N', WideMatrix(a)));
            const WideMatrix product = left ? opA * x : x * opA;
            auto b = narrowed<T>(product);
            EXPECT_EQ(lumoNoError,
                      trsm.call(inHost, {letters, b.m, b.n, 0, T(1), a.data.data(), a.ld, nullptr,
                                         0, T(0), b.data.data(), b.ld}));
            for (const Wide& error : (WideMatrix(b) - x).data)
                EXPECT_NEAR(0, std::abs(error), 1e-4);
        }
}

// A call that is refused, or has nothing to do, allocates nothing and reads nothing.
TEST_F(BlasPaths, NoMemoryForNothing) {
    float x[9] = {};
    software::startTrace();
    EXPECT_EQ(lumoArgumentError, lumoStrsm('X', 'U', 'N', 'N', 3, 3, 1, x, 3, x, 3));
    EXPECT_EQ(lumoNoError, lumoSgemm('N', 'N', 0, 3, 3, 1, nullptr, 0, nullptr, 3, 0, nullptr, 0));
    EXPECT_EQ(lumoNoError, lumoStrmm('L', 'U', 'N', 'N', 3, 0, 1, nullptr, 3, nullptr, 3));
    EXPECT_EQ(lumoBlasError, lumoSgemv('N', 3, 3, 1, x, 3, x, 0, 1, x, 1));  // no increment
    const auto trace = software::stopTrace();
    EXPECT_EQ(0, count(trace, "cudaMalloc") + copies(trace, "1") + copies(trace, "2"));
}

// A C that was not uploaded comes back only if it was computed: what else is on the device is none
// of the caller's.
TEST_F(BlasPaths, NothingComesBackFromAFailedProduct) {
    for (auto [failing, status] :
         {std::pair{"cublasSgemm", lumoBlasError}, {"cudaThreadSynchronize", lumoRuntimeError}}) {
        auto call = blasCall<float>("gemm", {"NN", 5, 4, 3, 1, 0, 1}, inHost);
        software::inject({1, failing, cudaErrorUnknown, CUBLAS_STATUS_EXECUTION_FAILED});
        EXPECT_EQ(status, call->run());
        EXPECT_EQ(failing, software::removeFault());
        EXPECT_TRUE(call->untouched()) << failing;
    }
}

// Without products the checks let null operands pass: A and B have no elements, but C has.
TEST_F(BlasPaths, NullOperandsThatPassTheChecks) {
    float c[4] = {1, 2, 3, 4};
    EXPECT_EQ(lumoNoError, lumoSgemm('N', 'T', 2, 2, 0, 1, nullptr, 2, nullptr, 2, 3, c, 2));
    EXPECT_EQ(lumoNoError, lumoSsyr2k('L', 'T', 2, 0, 1, nullptr, 0, nullptr, 0, 2, c, 2));
    EXPECT_EQ(lumoNoError, lumoSgemm('N', 'N', 2, 1, 0, 1, nullptr, 2, nullptr, 0, 0, c, 2));
    EXPECT_TRUE(c[0] == 0 && c[1] == 0 && c[2] == 9 && c[3] == 24);
    // trans "T" and no k: a leading dimension of 0 is accepted, and C is scaled on the device too.
    auto call = blasCall<float>("syr2k", {"UT", 0, 3, 0, 1, 2}, inDevice);
    EXPECT_EQ(lumoNoError, call->run());
    call->checkResult();
    EXPECT_EQ(Outcome(lumoRuntimeError, cudaErrorInvalidValue),
              outcome(lumoDeviceSgemm('N', 'N', 1, 1, 1, 1, nullptr, 1, c, 1, 0, c, 1)));
}

// On a caller's memory, behind which there is none: CPU libraries' complex kernels read further.
TEST_F(BlasPaths, NothingBehindTheOperandsIsRead) {
    start(software::defaultMachine(), Schedule::production);
    const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
    void* const memory =
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, memory);
    auto* const end = reinterpret_cast<lumoFloatComplex*>(static_cast<char*>(memory) + page);
    ASSERT_EQ(0, mprotect(end, page, PROT_NONE));
    const lumoFloatComplex one{1, 0}, zero{0, 0};
    lumoFloatComplex other[36], u[36], y[12];
    float s[6];
    for (int m = 1; m <= 6; ++m)
        for (int n = 1; n <= 6; ++n) {
            for (lumoFloatComplex* x : {end - 36, other}) std::fill_n(x, 36, one);
            for (int incy : {1, -2}) {
                EXPECT_EQ(lumoNoError,
                          lumoCgemv('N', m, n, one, end - m * n, m, other, 1, zero, y, incy));
                EXPECT_EQ(lumoNoError,
                          lumoCgemv('N', m, n, one, other, m, end - n, 1, zero, y, incy));
                for (int i = 0; i < m; ++i) EXPECT_EQ(n, y[i * std::abs(incy)].re) << m << n << i;
            }
            EXPECT_EQ(lumoNoError, lumoCgesvd('S', 'S', m, n, end - m * n, m, s, u, m, other, 6));
        }
    munmap(memory, 2 * page);
}

}  // namespace
}  // namespace test
