// gesvd through the harness, with all 15 pairs of jobs.
#include <sys/mman.h>

#include <cctype>

#include "lapack/gesdd.h"
#include "lapack/gesvd.h"
#include "lapack/operands_call.h"
#include "lapack/orthogonal.h"
#include "lapack/tuning.h"
#include "routine/frame.h"

namespace test {
namespace {

// Panels of so many columns in the reduction and of 4 elsewhere.
template <class T>
std::shared_ptr<void> shrinkSvd(int columns = 4) {
    return together(temporarily(lumo::gebrdTuning<T>, {columns, columns}), shrinkPanels<T>());
}

struct Jobs {
    char u, vt;
    char upperU() const { return char(std::toupper(u)); }
    char upperVt() const { return char(std::toupper(vt)); }
};

// Left vectors of a tall A take its place.
std::vector<double> referenceValues(WideMatrix& a, char left) {
    const int k = std::min(a.m, a.n);
    std::vector<double> s(k), rwork(5 * k + 1);
    Wide unused;
    cpu::withWorkspace<Wide>(1, [&](Wide* work, int size) {
        return cpu::gesvd<Wide>(left, 'N', a.m, a.n, a.data.data(), a.m, s.data(), &unused, 1,
                                &unused, 1, work, size, rwork.data());
    });
    return s;
}

// The values are those of A, in order. Vectors are orthonormal; with both sides A is restored, with
// one side alone its vectors span A's range (row space) and take A to rows (columns) of the
// singular values' lengths, orthogonal to each other.
template <class T>
void checkSvd(Jobs jobs, const Operand<T>& operandA, const Operand<RealOf<T>>& operandS,
              const Operand<T>& operandU, const Operand<T>& operandVt) {
    const int m = operandA.before.m, n = operandA.before.n, k = std::min(m, n);
    const WideMatrix a(operandA.before);
    WideMatrix copy = a;
    const std::vector<RealOf<T>> s = operandS.now().data;
    const std::vector<double> expected = referenceValues(copy, 'N');
    const double size = std::max(m, n) * epsilon<T>, scale = norm1(a) > 0 ? norm1(a) : 1;
    for (int i = 0; i < k; ++i) {
        EXPECT_NEAR(expected[i], s[i], svdBound * size * expected[0]) << "value " << i;
        EXPECT_GE(s[i], i + 1 < k ? s[i + 1] : 0);
    }
    const WideMatrix sigma(k, k, [&](int i, int j) { return i == j ? s[i] : 0; });
    // The vectors of one side as columns, where `x` is A or, for the other side, its adjoint.
    auto side = [&](char job, char trans, const Operand<T>& separate) {
        const WideMatrix x = op(trans, a);
        if (job == 'N') return WideMatrix(0, 0);
        const WideMatrix all = op(trans, WideMatrix((job == 'O' ? operandA : separate).now()));
        if (job == 'A') {
            EXPECT_LT(orthogonality(all, epsilon<T>), svdBound);
        }
        WideMatrix u = leading(all, x.m, k);
        const WideMatrix w = op('C', u) * x;
        EXPECT_LT(orthogonality(u, epsilon<T>), svdBound);
        EXPECT_LT(norm1(x - u * w) / (scale * size), svdBound);
        EXPECT_LT(norm1(w * op('C', w) - sigma * sigma) / (scale * scale * size), svdBound);
        return u;
    };
    const WideMatrix u = side(jobs.upperU(), 'N', operandU),
                     v = side(jobs.upperVt(), 'C', operandVt);
    if (u.m > 0 && v.m > 0) {
        EXPECT_LT(norm1(a - u * sigma * op('C', v)) / (scale * size), svdBound);
    }
}

// Vectors that are not wanted, or take A's place, have no memory.
template <class T>
auto svdCall(Jobs jobs, const Matrix<T>& a, Interface where) {
    const int m = a.m, n = a.n, k = std::min(m, n);
    auto vectors = [](char job, int rows, int columns, int ld) {
        return job == 'A' || job == 'S' ? blank<T>(rows, columns, ld) : blank<T>(0, 0);
    };
    auto check = [](char u, char vt, auto, auto, const auto&... operands) {
        checkSvd<T>({u, vt}, operands...);
    };
    return routineCall<T>(
        where, [](auto e) { return e.gesvd; }, check, jobs.u, jobs.vt, m, n, a,
        Adjacent<RealOf<T>>{blank<RealOf<T>>(k)},
        vectors(jobs.upperU(), m, jobs.upperU() == 'A' ? m : k, m + 1),
        vectors(jobs.upperVt(), jobs.upperVt() == 'A' ? n : k, n, n + 2));
}

// The longer side's vectors are those that "O" puts in A's place.
Jobs jobsOf(char jobz, int m, int n) {
    if (std::toupper(jobz) != 'O') return {jobz, jobz};
    return m >= n ? Jobs{'O', 'A'} : Jobs{'A', 'O'};
}

template <class T>
auto gesddCall(char jobz, const Matrix<T>& a, Interface where) {
    const int m = a.m, n = a.n, k = std::min(m, n);
    const Jobs jobs = jobsOf(jobz, m, n);
    auto vectors = [](char job, int rows, int columns, int ld) {
        return job == 'A' || job == 'S' ? blank<T>(rows, columns, ld) : blank<T>(0, 0);
    };
    auto check = [=](char, auto, auto, const auto&... operands) { checkSvd<T>(jobs, operands...); };
    return routineCall<T>(
        where, [](auto e) { return e.gesdd; }, check, jobz, m, n, a,
        Adjacent<RealOf<T>>{blank<RealOf<T>>(k)},
        vectors(jobs.upperU(), m, jobs.upperU() == 'A' ? m : k, m + 1),
        vectors(jobs.upperVt(), jobs.upperVt() == 'A' ? n : k, n, n + 2));
}

template <class T>
std::vector<GoodCase> gesddCases(const char* jobs, const Shapes& shapes, Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (; *jobs; ++jobs)
        cases = cases + casesOf(
                            {*jobs}, shapes,
                            [job = *jobs](int m, int n, Interface interface) {
                                return gesddCall(job, Matrix<T>::random(m, n, m + 3), interface);
                            },
                            blocks);
    return cases;
}

template <class T>
void failingGesdd() {
    for (double bad : {std::nan(""), HUGE_VAL})
        for (auto [m, n] : {std::pair{9, 9}, {20, 6}, {6, 20}}) {
            auto a = Matrix<T>::random(m, n);
            a(4, 5) = scalar<T>(bad);
            auto call = gesddCall('S', a, inHost);
            EXPECT_EQ(lumoDataError, call->run());
            EXPECT_EQ(std::min(m, n), lumoGetErrorInfo());
            for (double s : call->template result<4>().data) EXPECT_TRUE(std::isnan(s));
        }
}

std::vector<Jobs> allJobs() {
    std::vector<Jobs> all;
    for (char u : {'A', 's', 'O', 'N'})
        for (char vt : {'a', 'S', 'o', 'N'})
            if (u != 'O' || vt != 'o') all.push_back({u, vt});
    return all;
}

template <class T>
std::vector<GoodCase> svdCases(const std::vector<Jobs>& jobs, const Shapes& shapes,
                               Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (Jobs j : jobs)
        cases = cases + casesOf(
                            {j.u, j.vt}, shapes,
                            [=](int m, int n, Interface interface) {
                                return svdCall(j, Matrix<T>::random(m, n, m + 3), interface);
                            },
                            blocks);
    return cases;
}

// NaN and infinity come out as such, with a status, on both sides of the crossover.
template <class T>
void failing() {
    for (double bad : {std::nan(""), HUGE_VAL})
        for (auto [m, n] : {std::pair{9, 9}, {20, 6}, {6, 20}}) {
            auto a = Matrix<T>::random(m, n);
            a(4, 5) = scalar<T>(bad);
            auto call = svdCall({'S', 'S'}, a, inHost);
            EXPECT_EQ(lumoDataError, call->run());
            EXPECT_GT(lumoGetErrorInfo(), 0);
            for (double s : call->template result<5>().data) EXPECT_TRUE(std::isnan(s));
        }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    // Both sides of the crossover (8 x 5, 7 x 5) and of the panels, square, one row, one column.
    const Shapes small{{1, 1}, {1, 6}, {6, 1}, {7, 5},  {8, 5},
                       {5, 8}, {5, 7}, {9, 9}, {21, 9}, {9, 21}};
    const Shapes large{{130, 110}, {110, 130}, {250, 100}, {100, 250}};
    registerRoutine({letter + "gesvd",
                     svdCases<T>(allJobs(), small, [] { return shrinkSvd<T>(); }) +
                         svdCases<T>({{'S', 'S'}}, large),
                     failing<T>, svdCases<T>({{'S', 'O'}, {'N', 'A'}}, {{3, 3}, {6, 3}, {3, 6}}),
                     isDouble<T>, [] { return shrinkSvd<T>(2); }, true});
    registerRoutine({letter + "gesdd",
                     gesddCases<T>("aSoN", small, shrinkDivision<T>) + gesddCases<T>("S", large),
                     failingGesdd<T>, gesddCases<T>("SO", {{3, 3}, {6, 3}, {3, 6}}), isDouble<T>,
                     shrinkDivision<T>, true});
});

class SvdPaths : public OnSoftwareDevice {};

// In ordinary memory, where a workspace still holds what an earlier call left in it: nothing of
// that comes out with a matrix that has no decomposition.
TEST_F(SvdPaths, NoVectorsOfEarlierCalls) {
    start(machine(), Schedule::production);
    for (auto [m, n] : {std::pair{200, 50}, {50, 200}, {60, 50}})
        for (Jobs jobs : {Jobs{'S', 'S'}, {'A', 'A'}, {'N', 'S'}, {'S', 'N'}}) {
            auto a = Matrix<float>::random(m, n);
            ASSERT_EQ(lumoNoError, svdCall(jobs, a, inHost)->run());
            a(7, 9) = float(std::nan(""));
            auto call = svdCall(jobs, a, inHost);
            EXPECT_EQ(lumoDataError, call->run());
            for (const auto& vectors : {call->result<6>(), call->result<7>()})
                for (float x : vectors.data)
                    ASSERT_TRUE(std::isnan(x) || x == 0 || x == 1 || x == Matrix<float>::mark())
                        << m << " x " << n << " " << jobs.u << jobs.vt << ": " << x;
        }
}

// Elements that end where nobody may read.
template <class T>
class BeforeNothing {
  public:
    explicit BeforeNothing(int count)
        : bytes_((std::size_t(count) * sizeof(T) / page + 1) * page),
          base_(static_cast<std::byte*>(mmap(nullptr, bytes_ + page, PROT_READ | PROT_WRITE,
                                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          data_(reinterpret_cast<T*>(base_ + bytes_) - count) {
        mprotect(base_ + bytes_, page, PROT_NONE);
        const Matrix<T> random = Matrix<T>::random(count, 1);
        std::copy_n(random.data.data(), count, data_);
    }
    ~BeforeNothing() { munmap(base_, bytes_ + page); }
    BeforeNothing(const BeforeNothing&) = delete;
    BeforeNothing& operator=(const BeforeNothing&) = delete;
    T* data() const { return data_; }

  private:
    static constexpr std::size_t page = 4096;
    const std::size_t bytes_;
    std::byte* const base_;
    T* const data_;
};

// A CPU library, whose small matrices are, may read behind the last element of a row.
TEST_F(SvdPaths, ReadNothingBehindOperands) {
    start(software::defaultMachine(), Schedule::production);
    forElementTypes([](auto element, const std::string& letter) {
        using T = decltype(element);
        for (auto [m, n] : {std::pair{3, 7}, {25, 40}, {100, 170}, {170, 100}})
            for (char job : {'S', 'A', 'O'}) {
                SCOPED_TRACE(testing::Message() << letter << job << " " << m << " x " << n);
                const BeforeNothing<T> a(m * n), u(m * m), vt(n * n);
                const BeforeNothing<RealOf<T>> s(std::min(m, n));
                const int rows = job == 'A' || (job == 'O' && m >= n) ? n : std::min(m, n);
                T* const rowsOfVt = vt.data() + n * (n - rows);
                EXPECT_EQ(lumoNoError, lumo::onHost(lumo::Gesdd<T>{job, m, n, a.data(), m, s.data(),
                                                                   u.data(), m, rowsOfVt, rows}));
                if (job == 'O') continue;
                EXPECT_EQ(lumoNoError,
                          lumo::onHost(lumo::Gesvd<T>{job, job, m, n, a.data(), m, s.data(),
                                                      u.data(), m, rowsOfVt, rows}));
            }
        return true;
    });
}

// --- Hard matrices --------------------------------------------------------------------------

template <class T>
class HardMatrices : public OnMachine {
  protected:
    // U diag(values) V^H with the left vectors of random matrices.
    Matrix<T> withValues(int m, int n, double (*value)(int)) {
        auto q = [](int rows, int columns, unsigned seed) {
            WideMatrix a(Matrix<T>::random(rows, columns, 0, seed));
            referenceValues(a, 'O');
            return a;
        };
        const int k = std::min(m, n);
        const WideMatrix u = q(m, k, 11),
                         us(m, k, [&](int i, int j) { return u(i, j) * value(j); });
        return narrowed<T>(us * op('C', q(n, k, 12)));
    }

    void check(const char* what, const Matrix<T>& a) {
        for (Jobs jobs : {Jobs{'A', 'A'}, {'S', 'O'}, {'N', 'N'}}) {
            SCOPED_TRACE(std::string(what) + ' ' + jobs.u + jobs.vt);
            auto call = svdCall(jobs, a, inHost);
            call->blocks = [] { return shrinkSvd<T>(); };
            ASSERT_EQ(lumoNoError, call->run());
            call->checkResult();
        }
    }
};
TYPED_TEST_SUITE(HardMatrices, ElementTypes);

TYPED_TEST(HardMatrices, ComeOutRight) {
    using T = TypeParam;
    for (auto [m, n, capability] :
         {std::tuple{14, 14, 20}, {30, 11, 20}, {11, 30, 20}, {14, 14, 90}, {12, 14, 90}}) {
        if (onSoftwareDevice()) this->start(machine(capability));
        auto diagonal = filled(m, n, T(0));
        this->check("zero", diagonal);
        for (int i = 0; i < std::min(m, n); ++i) diagonal(i, i) = scalar<T>(i % 3 ? -i : i);
        this->check("diagonal, of both signs, one zero", diagonal);
        auto valued = [&, m = m, n = n](auto value) { return this->withValues(m, n, value); };
        this->check("graded", valued([](int i) { return std::pow(10.0, -i); }));
        this->check("clustered", valued([](int i) { return 1 + i % 2 * epsilon<T>; }));
        this->check("rank 3", valued([](int i) { return double(i < 3 ? 3 - i : 0); }));
    }
}

// --- What the trace tells -------------------------------------------------------------------

// The largest copy to the host of a device call, in bytes.
std::size_t largestDownload(const std::vector<software::Call>& trace) {
    std::size_t most = 0;
    for (const auto& call : trace) {
        if (call.name.rfind("cudaMemcpy", 0) != 0) continue;
        const bool flat = call.name.rfind("cudaMemcpy2D", 0) != 0;
        const auto& x = call.arguments;
        const std::string& kind = flat ? x[3] : x[6];
        if (kind != "2") continue;
        most = std::max(most, flat ? std::stoul(x[2]) : std::stoul(x[4]) * std::stoul(x[5]));
    }
    return most;
}

// Each sweep sends its rotations once, from page-locked memory; panels come the other way.
int sweepsIn(const std::vector<software::Call>& trace) {
    return countIf(trace, [](const software::Call& call) {
        return call.name == "cudaMemcpyAsync" && call.arguments[3] == "1";
    });
}

// The reduction's last block and the panels of QR come to the host, the matrix does not; each sweep
// is one launch for U and one for VT.
TEST_F(SvdPaths, NoMatrixGoesToTheHost) {
    for (auto [m, n] : {std::pair{300, 300}, {500, 300}}) {
        auto call = svdCall({'S', 'S'}, Matrix<float>::random(m, n), inDevice);
        const auto trace = traceOf([&] { EXPECT_EQ(lumoNoError, call->run()); });
        EXPECT_LE(largestDownload(trace), std::size_t(m) * 96 * sizeof(float));
        const int sweeps = sweepsIn(trace);
        EXPECT_GT(sweeps, n / 2);
        EXPECT_EQ(2 * sweeps, count(trace, "LASR_k<"));
    }
}

// The most device memory beside the operands is what lumo.h says.
TEST_F(SvdPaths, TakesNoMoreMemoryThanTold) {
    for (auto [m, n] : {std::pair{260, 240}, {240, 260}, {500, 200}, {200, 500}})
        for (Jobs jobs : {Jobs{'S', 'S'}, {'O', 'A'}, {'A', 'O'}, {'N', 'N'}}) {
            const std::size_t k = std::min(m, n), nb = 96;
            auto call = svdCall(jobs, Matrix<float>::random(m, n), inDevice);
            const std::size_t most = peakOf([&] { return call->run(); });
            const std::size_t told = 4 * k * k + 3 * nb * (m + n) + 6 * nb * nb + 8 * k;
            EXPECT_LE(most, told * sizeof(float)) << m << " x " << n << " " << jobs.u << jobs.vt;
        }
}

// Memory grows with the matrix where no square of the long side is asked for.
TEST_F(SvdPaths, LongMatricesNeedNoSquare) {
    for (auto [m, n] : {std::pair{20000, 20}, {20, 20000}}) {
        const Jobs jobs = m > n ? Jobs{'S', 'N'} : Jobs{'N', 'S'};
        auto call = svdCall(jobs, Matrix<float>::random(m, n), inHost);
        // Twenty rows have the pitch of 96.
        EXPECT_LT(peakOf([&] { return call->run(); }), 12 * sizeof(float) * m * n);
    }
}

}  // namespace
}  // namespace test
