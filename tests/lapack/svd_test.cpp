// gesvd through the harness, with all 15 pairs of jobs.
#include <cctype>

#include "lapack/gesvd.h"
#include "lapack/operands_call.h"
#include "lapack/orthogonal.h"
#include "lapack/tuning.h"

namespace test {
namespace {

// Panels of so many columns in the reduction and of 4 elsewhere.
template <class T>
std::shared_ptr<void> shrinkSvd(int columns = 4) {
    using Restored = std::shared_ptr<void>;
    return std::make_shared<std::pair<Restored, Restored>>(
        temporarily(lumo::gebrdTuning<T>, {columns, columns}), shrinkPanels<T>());
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
    WideMatrix sigma(k, k);
    for (int i = 0; i < k; ++i) sigma(i, i) = s[i];

    const bool left = jobs.upperU() != 'N', right = jobs.upperVt() != 'N';
    const WideMatrix u =
        left ? leading((jobs.upperU() == 'O' ? operandA : operandU).now(), m, k) : WideMatrix(0, 0);
    const WideMatrix vt = right
                              ? leading((jobs.upperVt() == 'O' ? operandA : operandVt).now(), k, n)
                              : WideMatrix(0, 0);
    if (jobs.upperU() == 'A') {
        EXPECT_LT(orthogonality(WideMatrix(operandU.now()), epsilon<T>), svdBound);
    }
    if (jobs.upperVt() == 'A') {
        EXPECT_LT(orthogonality(WideMatrix(operandVt.now()), epsilon<T>), svdBound);
    }
    if (left) {
        EXPECT_LT(orthogonality(u, epsilon<T>), svdBound);
        const WideMatrix w = op('C', u) * a;
        EXPECT_LT(norm1(a - u * w) / (scale * size), svdBound);
        EXPECT_LT(norm1(w * op('C', w) - sigma * sigma) / (scale * scale * size), svdBound);
    }
    if (right) {
        EXPECT_LT(orthogonality(vt, epsilon<T>), svdBound);
        const WideMatrix w = a * op('C', vt);
        EXPECT_LT(norm1(a - w * vt) / (scale * size), svdBound);
        EXPECT_LT(norm1(op('C', w) * w - sigma * sigma) / (scale * scale * size), svdBound);
    }
    if (left && right) {
        EXPECT_LT(norm1(a - u * sigma * vt) / (scale * size), svdBound);
    }
}

// Vectors that are not wanted, or take A's place, have no memory.
template <class T>
auto svdCall(Jobs jobs, const Matrix<T>& a, Interface where, bool shrunk) {
    const int m = a.m, n = a.n, k = std::min(m, n);
    auto vectors = [](char job, int rows, int columns, int ld) {
        return job == 'A' || job == 'S' ? blank<T>(rows, columns, ld) : blank<T>(0, 0);
    };
    auto check = [](char u, char vt, auto, auto, const auto&... operands) {
        checkSvd<T>({u, vt}, operands...);
    };
    return routineCall<lumo::Gesvd<T>>(
        where, shrunk ? [] { return shrinkSvd<T>(); } : Shrink(), [](auto e) { return e.gesvd; },
        check, jobs.u, jobs.vt, m, n, a, Adjacent<RealOf<T>>{blank<RealOf<T>>(k)},
        vectors(jobs.upperU(), m, jobs.upperU() == 'A' ? m : k, m + 1),
        vectors(jobs.upperVt(), jobs.upperVt() == 'A' ? n : k, n, n + 2));
}

std::vector<Jobs> allJobs() {
    std::vector<Jobs> all;
    for (char u : {'A', 's', 'O', 'N'})
        for (char vt : {'a', 'S', 'o', 'N'})
            if (u != 'O' || vt != 'o') all.push_back({u, vt});
    return all;
}

template <class T>
std::vector<GoodCase> svdCases(const std::vector<Jobs>& jobs, const Shapes& shapes, bool shrunk) {
    std::vector<GoodCase> cases;
    for (Jobs j : jobs)
        cases = cases + casesOf<T>({j.u, j.vt}, shapes, [=](int m, int n, Interface interface) {
                    return svdCall(j, Matrix<T>::random(m, n, m + 3), interface, shrunk);
                });
    return cases;
}

// NaN and infinity come out as such, with a status, on both sides of the crossover.
template <class T>
void failing() {
    for (double bad : {std::nan(""), HUGE_VAL})
        for (auto [m, n] : {std::pair{9, 9}, {20, 6}, {6, 20}}) {
            auto a = Matrix<T>::random(m, n);
            a(4, 5) = scalar<T>(bad);
            auto call = svdCall({'S', 'S'}, a, interfaces<T>()[0], true);
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
                     svdCases<T>(allJobs(), small, true) + svdCases<T>({{'S', 'S'}}, large, false),
                     failing<T>,
                     svdCases<T>({{'S', 'O'}, {'N', 'A'}}, {{3, 3}, {6, 3}, {3, 6}}, false),
                     isDouble<T>, [] { return shrinkSvd<T>(2); }, true});
});

class SvdPaths : public OnSoftwareDevice {};

// In ordinary memory, where a workspace still holds what an earlier call left in it: nothing of
// that comes out with a matrix that has no decomposition.
TEST_F(SvdPaths, NoVectorsOfEarlierCalls) {
    start(machine(), Schedule::production);
    for (auto [m, n] : {std::pair{200, 50}, {50, 200}, {60, 50}})
        for (Jobs jobs : {Jobs{'S', 'S'}, {'A', 'A'}, {'N', 'S'}, {'S', 'N'}}) {
            auto a = Matrix<float>::random(m, n);
            ASSERT_EQ(lumoNoError, svdCall(jobs, a, inHost, false)->run());
            a(7, 9) = float(std::nan(""));
            auto call = svdCall(jobs, a, inHost, false);
            EXPECT_EQ(lumoDataError, call->run());
            for (const auto& vectors : {call->result<6>(), call->result<7>()})
                for (float x : vectors.data)
                    ASSERT_TRUE(std::isnan(x) || x == 0 || x == 1 || x == Matrix<float>::mark())
                        << m << " x " << n << " " << jobs.u << jobs.vt << ": " << x;
        }
}

// --- Hard matrices --------------------------------------------------------------------------

template <class T>
class HardMatrices : public OnMachine {
  protected:
    // U diag(values) V^H with the left vectors of random matrices.
    Matrix<T> withValues(int m, int n, const std::vector<double>& values) {
        auto q = [](int rows, int columns, unsigned seed) {
            WideMatrix a(Matrix<T>::random(rows, columns, 0, seed));
            referenceValues(a, 'O');
            return a;
        };
        const int k = std::min(m, n);
        WideMatrix u = q(m, k, 11);
        for (int j = 0; j < k; ++j)
            for (int i = 0; i < m; ++i) u(i, j) *= values[j];
        const WideMatrix product = u * op('C', q(n, k, 12));
        Matrix<T> a(m, n);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                a(i, j) = scalar<T>(product(i, j).real(), product(i, j).imag());
        return a;
    }

    void check(const Matrix<T>& a, const char* what) {
        for (Jobs jobs : {Jobs{'A', 'A'}, {'S', 'O'}, {'N', 'N'}}) {
            SCOPED_TRACE(std::string(what) + ' ' + jobs.u + jobs.vt);
            auto call = svdCall(jobs, a, interfaces<T>()[0], true);
            ASSERT_EQ(lumoNoError, call->run());
            call->checkResult();
        }
    }
};
TYPED_TEST_SUITE(HardMatrices, ElementTypes);

TYPED_TEST(HardMatrices, ComeOutRight) {
    using T = TypeParam;
    for (auto [m, n] : {std::pair{14, 14}, {30, 11}, {11, 30}}) {
        const int k = std::min(m, n);
        this->check(Matrix<T>(Matrix<T>::random(m, n, 0, 3)), "random");
        auto zeros = Matrix<T>::random(m, n);
        std::fill(zeros.data.begin(), zeros.data.end(), T(0));
        this->check(zeros, "zero");
        for (int i = 0; i < k; ++i) zeros(i, i) = scalar<T>(i % 3 ? -i : i);
        this->check(zeros, "diagonal, of both signs, one zero");
        std::vector<double> graded(k), clustered(k, 1), deficient(k);
        for (int i = 0; i < k; ++i) {
            graded[i] = std::pow(10.0, -i);
            clustered[i] += (i % 2) * epsilon<T>;
            deficient[i] = i < 3 ? 3 - i : 0;
        }
        this->check(this->withValues(m, n, graded), "graded");
        this->check(this->withValues(m, n, clustered), "clustered");
        this->check(this->withValues(m, n, deficient), "rank 3");
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
    return int(std::count_if(trace.begin(), trace.end(), [](const software::Call& call) {
        return call.name == "cudaMemcpyAsync" && call.arguments[3] == "1";
    }));
}

// The reduction's last block and the panels of QR come to the host, the matrix does not; each sweep
// is one launch for U and one for VT.
TEST_F(SvdPaths, NoMatrixGoesToTheHost) {
    for (auto [m, n] : {std::pair{300, 300}, {500, 300}}) {
        OnDevice<float> a(Matrix<float>::random(m, n)), s(blank<float>(n)), u(blank<float>(m, n)),
            vt(blank<float>(n, n));
        software::startTrace();
        ASSERT_EQ(lumoNoError, lumoDeviceSgesvd('S', 'S', m, n, a.data(), m, s.data(), u.data(), m,
                                                vt.data(), n));
        const auto trace = software::stopTrace();
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
            OnDevice<float> a(Matrix<float>::random(m, n)), s(blank<float>(k)),
                u(blank<float>(m, m)), vt(blank<float>(n, n));
            const std::size_t most = peakOf([&, m = m, n = n] {
                return lumoDeviceSgesvd(jobs.u, jobs.vt, m, n, a.data(), m, s.data(), u.data(), m,
                                        vt.data(), n);
            });
            const std::size_t told = 4 * k * k + 3 * nb * (m + n) + 6 * nb * nb + 8 * k;
            EXPECT_LE(most, told * sizeof(float)) << m << " x " << n << " " << jobs.u << jobs.vt;
        }
}

// Memory grows with the matrix where no square of the long side is asked for.
TEST_F(SvdPaths, LongMatricesNeedNoSquare) {
    const int n = 20000, k = 20;
    std::vector<float> a(std::size_t(n) * k), vectors(a.size()), s(k);
    Random random;
    for (float& x : a) x = random.next<float>();
    for (bool tall : {true, false}) {
        const int m = tall ? n : k;
        const std::size_t most = peakOf([&] {
            return lumoSgesvd(tall ? 'S' : 'N', tall ? 'N' : 'S', m, n + k - m, a.data(), m,
                              s.data(), vectors.data(), m, vectors.data(), k);
        });
        // Twenty rows have the pitch of 96.
        EXPECT_LT(most, 12 * a.size() * sizeof(float));
    }
}

}  // namespace
}  // namespace test
