// probe SCENARIO: a program that calls BLAS and LAPACK and knows nothing of Lumo. Ends with status
// 0 if what it asked for was done as the standards say, else it says what was not.
#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "platform/cpu/blas.h"
#include "platform/cpu/lapack.h"

using Complex = std::complex<float>;
using Vector = std::vector<float>;
using namespace cpu;

extern "C" {
[[gnu::weak]] int LAPACKE_sgesv(int, int, int, float*, int, int*, float*, int);
[[gnu::weak]] int LAPACKE_sgels(int, char, int, int, int, float*, int, float*, int);
[[gnu::weak]] int LAPACKE_sgesvd(int, char, char, int, int, float*, int, float*, float*, int,
                                 float*, int, float*);
[[gnu::weak]] int LAPACKE_sgesdd(int, char, int, int, float*, int, float*, float*, int, float*,
                                 int);
[[gnu::weak]] int LAPACKE_ssyevr(int, char, char, char, int, float*, int, float, float, int, int,
                                 float, int*, float*, float*, int, int*);

void cgesdd_(const char*, const int*, const int*, Complex*, const int*, float*, Complex*,
             const int*, Complex*, const int*, Complex*, const int*, float*, int*, int*,
             std::size_t);
void ssyev_(const char*, const char*, const int*, float*, const int*, float*, float*, const int*,
            int*, std::size_t, std::size_t);
void ssyevr_(const char*, const char*, const char*, const int*, float*, const int*, const float*,
             const float*, const int*, const int*, const float*, int*, float*, float*, const int*,
             int*, float*, const int*, int*, const int*, int*, std::size_t, std::size_t,
             std::size_t);

// The program's own, as LAPACK lets it.
std::string refusedName;
int refusedArgument;
[[gnu::visibility("default")]] void xerbla_(const char* name, const int* argument,
                                            std::size_t length) {
    refusedName.assign(name, length);
    refusedArgument = *argument;
}
}

namespace {

int failures = 0;

void check(bool good, const char* what) {
    if (good) return;
    std::printf("not so: %s\n", what);
    ++failures;
}
#define CHECK(condition) check(condition, #condition)

template <class T>
std::vector<T> noise(int count, unsigned seed = 1) {
    std::vector<T> values(count);
    for (T& value : values) {
        seed = seed * 1664525u + 1013904223u;
        value = T(float(seed >> 8) / (1 << 23) - 1);
    }
    return values;
}

// The largest | B - A X | over n ||A|| ||X|| eps, in double precision, A of order n, one column.
template <class T>
double residual(int n, const std::vector<T>& a, const std::vector<T>& x, const std::vector<T>& b) {
    using Wide = std::complex<double>;
    double worst = 0, norm = 0, size = 0;
    for (int i = 0; i < n; ++i) {
        Wide sum = -Wide(b[i]);
        double row = 0;
        for (int j = 0; j < n; ++j) {
            sum += Wide(a[i + std::size_t(j) * n]) * Wide(x[j]);
            row += std::abs(a[i + std::size_t(j) * n]);
        }
        worst = std::max(worst, std::abs(sum));
        norm = std::max(norm, row);
        size = std::max(size, double(std::abs(x[i])));
    }
    return worst / (norm * size * std::numeric_limits<float>::epsilon());
}

template <class T, class Routine>
void solveSystem(Routine* gesv, int n, unsigned seed = 1) {
    const auto a = noise<T>(n * n, seed), b = noise<T>(n, seed + 1);
    auto factors = a, x = b;
    std::vector<int> ipiv(n);
    const int one = 1;
    int info = -99;
    gesv(&n, &one, factors.data(), &n, ipiv.data(), x.data(), &n, &info);
    CHECK(info == 0);
    CHECK(residual(n, a, x, b) < 30);
}

void solve() {
    solveSystem<float>(sgesv_, 300);
    solveSystem<Complex>(cgesv_, 150);
}

// The same again: a result that does not change, and a triangle that is not to be touched.
void repeated() {
    const int n = 3, k = 4;
    const float alpha = 1, beta = 0;
    const auto a = noise<float>(n * k);
    Vector c(n * n, std::numeric_limits<float>::quiet_NaN()), first;
    for (int round = 0; round < 2; ++round) {
        ssyrk_("U", "N", &n, &k, &alpha, a.data(), &n, &beta, c.data(), &n, 1, 1);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) CHECK(std::isnan(c[i + j * n]) == (i > j));
    }
}

void threads() {
    std::vector<std::thread> all;
    for (unsigned t = 0; t < 4; ++t)
        all.emplace_back([t] {
            for (int k = 0; k < 5; ++k) solveSystem<float>(sgesv_, 200, t + 1);
            const int n = 200;
            auto a = noise<Complex>(n * n, t);
            std::vector<int> ipiv(n);
            int info = 0;
            a[n * 6 + 6] = 0;
            for (int i = 0; i < n; ++i) a[n * 6 + i] = 0;  // the seventh column
            cgetrf_(&n, &n, a.data(), &n, ipiv.data(), &info);
            CHECK(info == 7);
        });
    for (std::thread& thread : all) thread.join();
}

// Of what the drop-in library does not take over; the CPU library then calls what it does.
void notTaken() {
    const int n = 400, lwork = 64 * n;
    auto a = noise<double>(n * n);
    std::vector<double> d(n), e(n), q(n), p(n), work(lwork);
    int info = -1;
    dgebrd_(&n, &n, a.data(), &n, d.data(), e.data(), q.data(), p.data(), work.data(), &lwork,
            &info);
    CHECK(info == 0);
}

void arguments() {
    const int n = 5, one = 1, few = 4, query = -1;
    auto a = noise<float>(25), b = noise<float>(5), tau = b;
    Vector work(1000);
    int ipiv[5], info = 0;
    sgesv_(&n, &one, a.data(), &few, ipiv, b.data(), &n, &info);
    CHECK(info == -4 && refusedName.rfind("SGESV", 0) == 0 && refusedArgument == 4);
    sgels_("C", &n, &n, &one, a.data(), &n, b.data(), &n, work.data(), &n, &info, 1);
    CHECK(info == -1 && refusedName.rfind("SGELS", 0) == 0);
    sgeqrf_(&n, &n, a.data(), &n, tau.data(), work.data(), &few, &info);
    CHECK(info == -7 && refusedName.rfind("SGEQRF", 0) == 0);
    sgeqrf_(&n, &n, a.data(), &n, tau.data(), work.data(), &query, &info);
    CHECK(info == 0 && work[0] >= 5 && a == noise<float>(25) && tau == noise<float>(5));
    const int empty = 0;
    sgesv_(&empty, &one, nullptr, &one, nullptr, nullptr, &one, &info);
    CHECK(info == 0);
}

// In lower case, and with a workspace that is said to be best.
void leastSquares() {
    const int n = 5, one = 1, lwork = 1000;
    auto a = noise<float>(25), b = noise<float>(5);
    const auto a0 = a, b0 = b;
    Vector work(lwork);
    int info = -1;
    sgels_("n", &n, &n, &one, a.data(), &n, b.data(), &n, work.data(), &lwork, &info, 1);
    CHECK(info == 0 && residual(n, a0, b, b0) < 30 && work[0] >= 10);
}

void singular() {
    const int n = 30, one = 1, lwork = 10000;
    Vector work(lwork), b = noise<float>(n), a = noise<float>(n * n);
    std::vector<int> ipiv(n);
    int info = 0;
    std::fill_n(a.begin() + n * 20, n, 0.0f);
    const Vector zeroColumn = a, right = b;
    sgesv_(&n, &one, a.data(), &n, ipiv.data(), b.data(), &n, &info);
    CHECK(info == 21 && b == right);
    a = zeroColumn;
    sgels_("N", &n, &n, &one, a.data(), &n, b.data(), &n, work.data(), &lwork, &info, 1);
    CHECK(info == 21);
}

// Data that LAPACK scales, knows the answer of, or hands through.
void data() {
    const int n = 20, one = 1, lwork = 1000;
    Vector work(lwork);
    std::vector<int> ipiv(n);
    int info = -1;
    const Vector a0 = noise<float>(n * n), b0 = noise<float>(n);
    for (const float scale : {1e-36f, 1e37f, 0.0f}) {
        Vector a = a0, b = b0;
        for (float& x : a) x *= scale;
        const Vector scaled = a;
        sgels_("N", &n, &n, &one, a.data(), &n, b.data(), &n, work.data(), &lwork, &info, 1);
        CHECK(info == 0);
        if (scale == 0) CHECK(b == Vector(n));
        if (scale == 1e37f) CHECK(residual(n, scaled, b, b0) < 100);
    }
    Vector a = a0, b = b0;
    a[7] = std::numeric_limits<float>::quiet_NaN();
    sgesv_(&n, &one, a.data(), &n, ipiv.data(), b.data(), &n, &info);
    CHECK(info != 0 || std::isnan(b[0]));
}

// The largest | A Z - Z diag(w) | over n ||A|| eps, of the lower triangle of A.
double residualOfPairs(int n, const Vector& a, const Vector& w, const Vector& z) {
    double worst = 0;
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < n; ++k) {
            double sum = -double(z[i + k * n]) * w[k];
            for (int j = 0; j < n; ++j)
                sum += double(a[std::max(i, j) + std::min(i, j) * n]) * z[j + k * n];
            worst = std::max(worst, std::abs(sum));
        }
    const double norm = std::max(std::abs(w[0]), std::abs(w[n - 1]));
    return worst / (n * norm * std::numeric_limits<float>::epsilon());
}

// All eigenpairs by each of the drivers; then what is not Lumo's.
void eigenproblems() {
    const int n = 70, lwork = 12000, liwork = 800, few = 300, first = 1, second = 2;
    const float least = 0;
    const auto a0 = noise<float>(n * n);
    Vector a = a0, w(n), z(n * n), work(lwork);
    std::vector<int> support(2 * n), iwork(liwork);
    int info = -1, found = -1;
    ssyev_("V", "L", &n, a.data(), &n, w.data(), work.data(), &lwork, &info, 1, 1);
    CHECK(info == 0 && residualOfPairs(n, a0, w, a) < 30);
    a = a0;
    ssyevd_("V", "L", &n, a.data(), &n, w.data(), work.data(), &lwork, iwork.data(), &liwork, &info,
            1, 1);
    CHECK(info == 0 && residualOfPairs(n, a0, w, a) < 30 && iwork[0] == 3 + 5 * n);
    const auto inRange = [&](const char* range, const int* from, const int* to) {
        a = a0;
        ssyevr_("V", range, "L", &n, a.data(), &n, nullptr, nullptr, from, to, &least, &found,
                w.data(), z.data(), &n, support.data(), work.data(), &lwork, iwork.data(), &liwork,
                &info, 1, 1, 1);
    };
    inRange("a", nullptr, nullptr);
    CHECK(info == 0 && found == n && residualOfPairs(n, a0, w, z) < 30);
    CHECK(support[2 * n - 2] == 1 && support[2 * n - 1] == n);
    inRange("I", &first, &second);
    CHECK(info == 0 && found == 2);
    ssyevd_("V", "L", &n, a.data(), &n, w.data(), work.data(), &lwork, iwork.data(), &few, &info, 1,
            1);
    CHECK(info == -10);
    a[5] = std::numeric_limits<float>::quiet_NaN();
    ssyev_("V", "L", &n, a.data(), &n, w.data(), work.data(), &lwork, &info, 1, 1);
    CHECK(info != 0 || std::isnan(w[0]));
}

// A decomposition, also of a matrix that LAPACK scales; then what is not Lumo's.
void singularValues() {
    const int m = 110, n = 100, few = 2 * n, query = -1;
    std::vector<Complex> a(m * n), u(m * n), vt(n * n), work(1);
    Vector s(n), realWork(5 * n * n + 7 * n + 2 * m * n);
    std::vector<int> iwork(8 * n);
    int info = -1;
    const auto decompose = [&](const int& length) {
        cgesdd_("S", &m, &n, a.data(), &m, s.data(), u.data(), &m, vt.data(), &n, work.data(),
                &length, realWork.data(), iwork.data(), &info, 1);
    };
    decompose(query);
    const int lwork = int(work[0].real());
    CHECK(info == 0 && lwork >= 2 * n + m);
    work.resize(lwork);
    for (const float scale : {1.0f, 1e-30f}) {
        const auto a0 = noise<Complex>(m * n);
        for (int k = 0; k < m * n; ++k) a[k] = a0[k] * scale;
        decompose(lwork);
        double worst = 0;
        for (int i = 0; i < m; ++i)
            for (int j = 0; j < n; ++j) {
                std::complex<double> sum = -a0[i + j * m];
                for (int k = 0; k < n; ++k)
                    sum +=
                        double(s[k] / scale) * std::complex<double>(u[i + k * m] * vt[k + j * n]);
                worst = std::max(worst, std::abs(sum));
            }
        CHECK(info == 0 && worst < 1e-5 * double(s[0] / scale) && work[0].real() == float(lwork));
    }
    decompose(few);
    CHECK(info == -12);
    a[5] = std::numeric_limits<float>::quiet_NaN();
    decompose(lwork);
    CHECK(info != 0 || std::isnan(s[0]));
}

// m x n numbers stored by columns, as they are or by rows; and back.
Vector stored(int rows, int m, int n, const Vector& a) {
    Vector changed(a.size());
    for (std::size_t k = 0; k < a.size(); ++k) changed[k % m * n + k / m] = a[k];
    return rows ? changed : a;
}

// By rows the same comes out as by columns.
void lapacke() {
    const int m = 40, n = 30;
    int ipiv[n];
    std::vector<Vector> results[2];
    for (const int rows : {0, 1}) {
        const int order = 102 - rows, ldm = rows ? n : m;
        const auto input = [rows](int m, int n) { return stored(rows, m, n, noise<float>(m * n)); };
        Vector a = input(n, n), b = input(n, 1), c = input(m, n), d = input(m, 2), e = input(m, n),
               s(n), u(m * n), superdiagonal(n, 1), f = input(n, n), w(n), z(n * n),
               g = input(m, n), values(n), vt(n * n);
        int found = -1, support[2 * n];
        CHECK(LAPACKE_sgesv(order, n, 1, a.data(), n, ipiv, b.data(), rows ? 1 : n) == 0);
        CHECK(LAPACKE_sgels(order, 'n', m, n, 2, c.data(), ldm, d.data(), rows ? 2 : m) == 0);
        CHECK(LAPACKE_sgesvd(order, 'S', 'O', m, n, e.data(), ldm, s.data(), u.data(), ldm, nullptr,
                             1, superdiagonal.data()) == 0);
        CHECK(LAPACKE_sgesdd(order, 'O', m, n, g.data(), ldm, values.data(), nullptr, 1, vt.data(),
                             n) == 0);
        CHECK(LAPACKE_ssyevr(order, 'V', 'A', 'L', n, f.data(), n, 0, 0, 0, 0, 0, &found, w.data(),
                             z.data(), n, support) == 0);
        CHECK(residualOfPairs(n, noise<float>(n * n), w, stored(rows, n, n, z)) < 30);
        results[rows] = {stored(rows, n, n, a), b,
                         stored(rows, n, m, c), stored(rows, 2, m, d),
                         stored(rows, n, m, e), s,
                         stored(rows, n, m, u), values,
                         stored(rows, n, m, g), stored(rows, n, n, vt),
                         superdiagonal};
        const int info = LAPACKE_sgesv(order, n, 2, a.data(), n, ipiv, b.data(), 1);
        CHECK(info == -8 || info == -1010);  // where there is no LAPACKE
    }
    CHECK(residual(n, noise<float>(n * n), results[0][1], noise<float>(n)) < 30);
    CHECK(results[0].back()[n - 2] == 0 && std::abs(results[0][5][0] - results[0][7][0]) < 1e-3f);
    for (std::size_t k = 0; k < results[0].size(); ++k)
        for (std::size_t i = 0; i < results[0][k].size(); ++i)
            CHECK(std::abs(results[0][k][i] - results[1][k][i]) < 1e-3f);
}

// Two packages with the same names, which the process does not see, and a function of theirs that
// is reached through a pointer by somebody who is linked with neither.
void wheels() {
    for (const char* file : {LUMO_EXTENSIONS}) {
        void* const extension = dlopen(file, RTLD_NOW | RTLD_LOCAL);
        CHECK(reinterpret_cast<int (*)()>(dlsym(extension, "wrongLine"))() == 0);
    }
    void* const gesv = dlsym(RTLD_DEFAULT, "scipy_sgesv_");
    const int bad = -1;
    int info = 0;
    reinterpret_cast<decltype(&sgesv_)>(gesv)(&bad, &bad, nullptr, &bad, nullptr, nullptr, &bad,
                                              &info);
    CHECK(info > 1000);
}

}  // namespace

int main(int, char** argv) {
#define SCENARIO(name) \
    { #name, name }
    const std::map<std::string, void (*)()> scenarios{
        SCENARIO(solve),    SCENARIO(repeated),      SCENARIO(threads),
        SCENARIO(notTaken), SCENARIO(arguments),     SCENARIO(leastSquares),
        SCENARIO(singular), SCENARIO(data),          SCENARIO(lapacke),
        SCENARIO(wheels),   SCENARIO(eigenproblems), SCENARIO(singularValues)};
    scenarios.at(argv[1])();
    return failures != 0;
}
