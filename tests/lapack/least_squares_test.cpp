// gels, gelsd and gglse through the harness.
#include "lapack/gels.h"
#include "lapack/gglse.h"
#include "lapack/operands_call.h"
#include "lapack/orthogonal.h"

namespace test {
namespace {

// --- gels -------------------------------------------------------------------------------------

// Of a part of column j.
template <class M>
double length(const M& a, int j, int begin, int end) {
    double sum = 0;
    for (int i = begin; i < end; ++i) sum += std::norm(wide(a(i, j)));
    return std::sqrt(sum);
}

// A least-squares solution leaves a residual orthogonal to A's range (xQRT17), whose norm the rest
// of B tells; a minimum-norm solution solves the system (xQRT16) and lies in the range of op(A)^H
// (xQRT14).
template <class T>
void checkSolution(char trans, const Matrix<T>& a0, const Matrix<T>& b0, const Matrix<T>& x0) {
    if (a0.m == 0 || a0.n == 0) {
        EXPECT_EQ(0, norm1(WideMatrix(x0)));
        return;
    }
    const WideMatrix a = op(trans == 'N' ? 'N' : 'C', WideMatrix(a0));
    const WideMatrix b = leading(b0, a.m, b0.n), x = leading(x0, a.n, b0.n);
    const WideMatrix residual = b - a * x;
    const double size = std::max({a.m, a.n, b.n}) * epsilon<T>;
    if (a.m >= a.n) {
        EXPECT_LT(norm1(op('C', a) * residual) / (norm1(a) * norm1(b) * size), leastSquaresBound);
        for (int j = 0; j < b.n && a.m > a.n; ++j) {
            EXPECT_NEAR(length(x0, j, a.n, a.m), length(residual, j, 0, a.m), 1e-4 * norm1(b));
        }
    } else {
        EXPECT_LT(norm1(residual) / (norm1(a) * norm1(x) * size), leastSquaresBound);
        EXPECT_LT(distanceFromRange(op('C', a), x) / (norm1(x) * size), leastSquaresBound);
    }
}

template <class T>
auto gelsCall(char trans, int nrhs, const Matrix<T>& a, Interface where) {
    auto check = [](char trans, auto, auto, auto, const auto& factors, const auto& x) {
        checkSolution(trans, factors.before, x.before, x.now());
    };
    const int rows = std::max(a.m, a.n);
    return routineCall<T>(
        where, [](auto e) { return e.gels; }, check, trans, a.m, a.n, nrhs, a,
        Matrix<T>::random(rows, nrhs, rows + 2, 3));
}

template <class T>
std::vector<GoodCase> gelsCases(const Shapes& shapes, std::initializer_list<int> nrhs,
                                Shrink blocks = nullptr) {
    auto make = [](char trans, int nrhs) {
        return [=](int m, int n, Interface where) {
            return gelsCall(trans, nrhs, Matrix<T>::random(m, n, m + 1), where);
        };
    };
    std::vector<GoodCase> cases;
    for (int right : nrhs)
        for (char trans : {'N', lumo::isComplex<T> ? 'c' : 't'})
            cases =
                cases + casesOf(trans + std::to_string(right), shapes, make(trans, right), blocks);
    return cases;
}

// A of which one column (or row, where it is wide) is zero: the triangle has a zero there, in the
// first block or a later one.
template <class T>
void gelsFailing() {
    for (auto [m, n, zero] : {std::tuple{9, 3, 1}, {12, 9, 0}, {12, 9, 6}, {7, 12, 5}})
        for (char trans : {'N', 'C'}) {
            auto a = Matrix<T>::random(m, n);
            for (int i = 0; i < std::max(m, n); ++i) (m >= n ? a(i, zero) : a(zero, i)) = T(0);
            auto call = gelsCall(trans, 2, a, inHost);
            EXPECT_EQ(Outcome(lumoDataError, zero + 1), outcome(call->run())) << trans << m << n;
        }
    auto a = Matrix<T>::random(9, 6);
    a(4, 3) = scalar<T>(std::nan(""));
    auto call = gelsCall('N', 1, a, inHost);
    EXPECT_EQ(lumoNoError, call->run());
    EXPECT_TRUE(std::isnan(norm1(WideMatrix(call->template result<5>()))));
}

// --- gelsd ------------------------------------------------------------------------------------

// A = L R of this rank; 0 for all.
template <class T>
auto gelsdCall(int m, int n, int rank, int nrhs, Interface where) {
    const int k = std::min(m, n), r = rank > 0 ? std::min(rank, k) : k;
    const Matrix<T> left = Matrix<T>::random(m, r), right = Matrix<T>::random(r, n, 0, 7);
    const WideMatrix rows(right);
    auto check = [=](auto, auto, auto, const Operand<T>& a, const Operand<T>& b,
                     const Operand<RealOf<T>>& s, auto, const Operand<int>& found) {
        EXPECT_EQ(r, found.now()(0, 0));
        const WideMatrix whole(a.before), x = leading(b.now(), n, nrhs),
                                          residual = leading(b.before, m, nrhs) - whole * x;
        const double size = std::max({m, n, nrhs}) * epsilon<T>;
        double squares = 0, largest = 0;
        for (RealOf<T> value : s.now().data) {
            squares += double(value) * value;
            largest = std::max(largest, double(value));
        }
        double expected = 0;
        for (const Wide& z : whole.data) expected += std::norm(z);
        EXPECT_NEAR(std::sqrt(expected), std::sqrt(squares), leastSquaresBound * size * largest);
        const double scale = norm1(whole) * (norm1(whole) * norm1(x) + norm1(residual));
        EXPECT_LE(norm1(op('C', whole) * residual), leastSquaresBound * size * scale);
        EXPECT_LE(distanceFromRange(op('C', rows), x), leastSquaresBound * size * norm1(x));
        for (int j = 0; j < nrhs && m > n && r == n; ++j)
            EXPECT_NEAR(length(b.now(), j, n, m), length(residual, j, 0, m),
                        1e-4 * norm1(residual));
    };
    return routineCall<T>(
        where, [](auto e) { return e.gelsd; }, check, m, n, nrhs,
        narrowed<T>(WideMatrix(left) * rows), Matrix<T>::random(std::max(m, n), nrhs, 0, 3),
        Adjacent<RealOf<T>>{blank<RealOf<T>>(k)}, RealOf<T>(500 * epsilon<T>),
        Adjacent<int>{blank<int>(1), true});
}

template <class T>
std::vector<GoodCase> gelsdCases(const Shapes& shapes, std::initializer_list<int> ranks,
                                 Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (int rank : ranks)
        cases = cases + casesOf(
                            "rank " + std::to_string(rank), shapes,
                            [=](int m, int n, Interface where) {
                                return gelsdCall<T>(m, n, rank, 1 + m % 3, where);
                            },
                            blocks);
    return cases;
}

template <class T>
void gelsdFailing() {
    for (auto [m, n] : {std::pair{9, 6}, {6, 9}}) {
        auto a = Matrix<T>::random(m, n);
        a(4, 3) = scalar<T>(std::nan(""));
        std::vector<RealOf<T>> s(6);
        Matrix<T> b = Matrix<T>::random(9, 1);
        int rank = -1;
        const auto gelsd = Exports<T>::gelsd[inHost];
        EXPECT_EQ(lumoDataError, callExport(gelsd, m, n, 1, a.data.data(), m, b.data.data(), 9,
                                            s.data(), RealOf<T>(-1), &rank));
        EXPECT_EQ(6, lumoGetErrorInfo());
        EXPECT_EQ(0, rank);
        for (RealOf<T> x : s) EXPECT_TRUE(std::isnan(x));
    }
}

// --- gglse ------------------------------------------------------------------------------------

struct Constrained {
    int m, n, p;
};

// The constraints hold (xGET02 on B, x, d), and the residual's gradient A^H (c - A x) lies in the
// range of B^H: no step along the constraints is shorter. The end of c tells the residual norm.
template <class T>
void checkConstrained(const Constrained& s, const Operand<T>& a0, const Operand<T>& b0,
                      const Operand<T>& c0, const Operand<T>& d0, const Operand<T>& x0) {
    const WideMatrix a(a0.before), b(b0.before), c(c0.before), d(d0.before), x(x0.now());
    if (s.p > 0) {
        EXPECT_LT(norm1(b * x - d) / (norm1(b) * norm1(x) * epsilon<T>), lseBound);
    }
    if (s.m == 0) return;
    const WideMatrix r = c - a * x, gradient = op('C', a) * r;
    const double scale = norm1(a) * (norm1(c) + norm1(a) * norm1(x));
    EXPECT_LT(distanceFromRange(op('C', b), gradient) / (scale * epsilon<T>), lseBound);
    EXPECT_NEAR(length(c0.now(), 0, s.n - s.p, s.m), length(r, 0, 0, s.m),
                1e-4 * (norm1(c) + norm1(a) * norm1(x)));
}

template <class T>
auto gglseCall(const Matrix<T>& a, const Matrix<T>& b, Interface where) {
    auto check = [](int m, int n, int p, const auto&... operands) {
        checkConstrained<T>({m, n, p}, operands...);
    };
    return routineCall<T>(
        where, [](auto e) { return e.gglse; }, check, a.m, a.n, b.m, a, b,
        Adjacent<T>{Matrix<T>::random(a.m, 1, 0, 5)}, Adjacent<T>{Matrix<T>::random(b.m, 1, 0, 6)},
        Adjacent<T>{blank<T>(a.n)});
}

template <class T>
std::vector<GoodCase> gglseCases(const std::vector<Constrained>& shapes, Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (Constrained s : shapes) {
        auto make = [p = s.p](int m, int n, Interface where) {
            return gglseCall(Matrix<T>::random(m, n, m + 1), Matrix<T>::random(p, n, p + 2, 2),
                             where);
        };
        cases = cases + casesOf(std::to_string(s.p), {{s.m, s.n}}, make, blocks);
    }
    return cases;
}

// A zero row of B makes T12 singular, a zero column of (A; B) R11.
template <class T>
void gglseFailing() {
    for (int info : {1, 2}) {
        auto a = Matrix<T>::random(12, 9), b = Matrix<T>::random(6, 9, 0, 2);
        for (int j = 0; j < 9 && info == 1; ++j) b(3, j) = T(0);
        for (int i = 0; i < 12 && info == 2; ++i) a(i, 0) = b(i / 2, 0) = T(0);
        auto call = gglseCall(a, b, inHost);
        EXPECT_EQ(Outcome(lumoDataError, info), outcome(call->run()));
        // What was not solved for is zero in host memory.
        const Matrix<T> x = call->template result<7>();
        for (int i = 0; i < 3; ++i) EXPECT_TRUE(x(i, 0) == T(0));
    }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    const Shapes small{{1, 1},  {6, 1},   {1, 6},   {4, 4}, {9, 9}, {30, 5},
                       {5, 30}, {17, 13}, {13, 17}, {0, 3}, {3, 0}};
    registerRoutine(
        {letter + "gels",
         gelsCases<T>(small, {1, 3}, shrinkPanels<T>) + gelsCases<T>({{220, 110}, {110, 220}}, {2}),
         gelsFailing<T>, gelsCases<T>({{9, 6}, {6, 9}}, {2}), isDouble<T>, shrinkPanels<T>});

    const Shapes some{{1, 1}, {6, 1}, {1, 6}, {9, 9}, {30, 5}, {5, 30}, {17, 13}, {13, 17}};
    registerRoutine(
        {letter + "gelsd",
         gelsdCases<T>(some, {0, 3}, shrinkDivision<T>) + gelsdCases<T>({{90, 80}}, {50}),
         gelsdFailing<T>, gelsdCases<T>({{6, 3}, {3, 5}}, {2}), isDouble<T>, shrinkDivision<T>,
         true});

    // No constraints, nothing but constraints, both, fewer equations than unknowns, the fewest
    // that there may be.
    const std::vector<Constrained> few{{1, 1, 0},  {9, 6, 0},   {6, 6, 6},   {0, 5, 5},
                                       {9, 9, 9},  {20, 12, 5}, {12, 9, 6},  {9, 12, 5},
                                       {7, 12, 5}, {30, 4, 2},  {10, 20, 15}};
    registerRoutine(
        {letter + "gglse",
         gglseCases<T>(few, shrinkPanels<T>) + gglseCases<T>({{250, 210, 100}, {130, 220, 140}}),
         gglseFailing<T>, gglseCases<T>({{9, 6, 5}, {5, 8, 4}}), isDouble<T>, shrinkPanels<T>,
         true});
});

// A device that fails leaves bad data behind; the failure is told, not the data's.
TEST_F(OnSoftwareDevice, FailureComesBeforeBadData) {
    const auto blocks = shrinkPanels<float>();
    auto a = Matrix<float>::random(12, 9);
    for (int i = 0; i < 12; ++i) a(i, 2) = 0;
    for (auto [cublasError, status, info] :
         {std::tuple{14, lumoBlasError, 14}, {3, lumoInsufficientMemory, 0}}) {
        auto call = gelsCall('N', 2, a, inHost);
        software::inject({1, "cublasSgemm", 30, cublasError});
        EXPECT_EQ(Outcome(status, info), outcome(call->run()));
        software::removeFault();
    }
}

// --- Memory ---------------------------------------------------------------------------------

// The most device memory that a device routine takes beside its operands is what lumo.h says, up
// to the rounding of each of its workspaces to pages and to the pool's reuse of larger ones.
TEST_F(OnSoftwareDevice, PeakMemoryIsAsTold) {
    auto expectElements = [](std::size_t elements, auto run) {
        const std::size_t most = peakOf(run);
        EXPECT_LE(most, elements * sizeof(float) + 8 * 4096);
        EXPECT_GE(most, elements * sizeof(float) / 2) << "the contract promises too little";
    };
    constexpr std::size_t nb = 96, m = 1000, n = 500;
    const auto a = Matrix<float>::random(m, n);
    OnDevice<float> f(a), tau(blank<float>(n));
    for (auto [columns, elements] : {std::pair{n, 2 * nb * nb + nb * (m + n)}, {nb, 0}})
        expectElements(
            elements, [&, k = columns] { return lumoDeviceSgeqrf(m, k, f.data(), m, tau.data()); });
    auto gels = gelsCall('N', 3, a, inDevice);
    expectElements(n + 2 * nb * nb + nb * (m + n + 3), [&] { return gels->run(); });
    for (auto [unknowns, p] : {std::pair{n, std::size_t(200)}, {100, 90}}) {
        auto gglse = gglseCall(Matrix<float>::random(m, unknowns),
                               Matrix<float>::random(p, unknowns, 0, 2), inDevice);
        expectElements(p + unknowns + 4 * nb * nb + nb * (2 * m + 2 * unknowns + p),
                       [&] { return gglse->run(); });
    }
}

}  // namespace
}  // namespace test
