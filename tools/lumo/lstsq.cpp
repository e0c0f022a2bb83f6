// `lumo lstsq`: the X that minimises ||B - A X||, or the smallest X with A X = B, for matrices in
// files.
#include <algorithm>
#include <cmath>
#include <limits>

#include "common/residual.h"
#include "exported.h"
#include "linear_system.h"
#include "lumo_extended.h"
#include "matrix_file.h"

namespace lumo {
namespace {

template <class T>
lumoStatus gels(int m, int n, int nrhs, T* a, T* b, int ldb) {
    constexpr auto gels = platform::ofType<T>(lumoSgels, lumoDgels, lumoCgels, lumoZgels);
    return gels('N', m, n, nrhs, exported(a), m, exported(b), ldb);
}

// The matrix with another number of rows: cut off, or filled up with zeros.
template <class T>
std::vector<T> withRows(int rows, const std::vector<T>& matrix, int columns) {
    const std::size_t before = matrix.size() / std::size_t(columns);
    std::vector<T> result(std::size_t(rows) * std::size_t(columns));
    for (int j = 0; j < columns; ++j)
        std::copy_n(matrix.data() + before * j, std::min(before, std::size_t(rows)),
                    result.data() + std::size_t(rows) * j);
    return result;
}

template <class T, class Limits = std::numeric_limits<platform::RealOf<T>>>
constexpr double leastUnscaled = Limits::min() / Limits::epsilon();

// Status 0 only says that no diagonal element of the factor is exactly zero. A column (of R; a row
// of L) has the length of A's, and its diagonal element is the part of it that the others lack:
// noise, if each of the transformations' rounding errors could have made it.
template <class T>
void warnOfDependence(int m, int n, const std::vector<T>& factor, const std::string& file) {
    const int count = std::min(m, n);
    const std::size_t along = m >= n ? 1 : m, across = m >= n ? m : 1;
    double least = HUGE_VAL;
    int at = 0;
    for (int j = 0; j < count; ++j) {
        const T* line = factor.data() + across * j;
        Wider squares = 0;
        for (int i = 0; i <= j; ++i) squares += squareOf(line[along * i]);
        const double part = double(magnitude(line[along * j]) / std::sqrt(squares));
        if (part < least) {
            least = part;
            at = j + 1;
        }
    }
    if (least > 10 * count * epsOf<T>) return;
    const char* line = m >= n ? "column" : "row";
    char text[250];
    std::snprintf(text, sizeof text,
                  ": hardly has full rank: %s %d is a combination of the %ss before it but for "
                  "%.1g of its length, no more than rounding errors: X may be far off; leave it "
                  "out or correct it",
                  line, at, line, least);
    warn(file + text);
}

// Why there is no solution.
std::string failure(const Outcome& outcome, const System& system, const SystemFiles& files) {
    if (outcome.status != lumoDataError) return describe(outcome.status, outcome.info);
    const bool tall = system.A.rows() >= system.A.columns();
    const std::string line = tall ? "column " : "row ", i = std::to_string(outcome.info);
    return files.a + ": the matrix has not full rank: diagonal element " + i +
           " of its triangular factor " + (tall ? "R" : "L") + " is exactly zero: " + line + i +
           " is zero or a combination of the " + (tall ? "columns" : "rows") +
           " before it; leave it out" +
           (tall ? ", or add rows that tell it from them" : " if B agrees, or correct it") +
           "; or have the smallest solution, with --any-rank";
}

// ||b - A x|| of each column, or the largest of many. Returns the largest scaled error.
template <class T>
double reportLeastSquares(const System& system, const std::vector<T>& x) {
    using Wide = WideOf<T>;
    const int m = system.A.rows(), n = system.A.columns(), nrhs = system.B.columns();
    constexpr int few = 8;
    struct {
        double norm = -1, relative = 0;
        int column = 0;
    } largest;
    double error = 0;
    for (int k = 0; k < nrhs; ++k) {
        const Wide *a = system.A.data<Wide>(), *b = system.B.data<Wide>() + std::size_t(k) * m;
        const T* xk = x.data() + std::size_t(k) * n;
        const std::vector<Wide> r = residualOf(m, n, a, b, xk);
        const double norm = euclideanNorm(m, r.data()), of = euclideanNorm(m, b);
        const double relative = norm == 0 ? 0 : norm / of;
        if (nrhs <= few)
            std::printf("residual:   ||b - A x|| = %.6g, %.3g of ||b||%s\n", norm, relative,
                        nrhs > 1 ? ("  (column " + std::to_string(k + 1) + ")").c_str() : "");
        if (norm > largest.norm) largest = {norm, relative, k + 1};
        error = larger(error, distanceFromOptimum(m, n, a, b, xk, r));
    }
    if (nrhs > few)
        std::printf("residual:   ||b - A x|| = %.6g, %.3g of ||b||  (the largest, column %d)\n",
                    largest.norm, largest.relative, largest.column);
    std::printf("optimality: %.3g  (||A^H r|| / (||A|| (||b|| + ||A|| ||x||) eps), r = b - A x)\n",
                error);
    return error;
}

// Returns the largest scaled error.
template <class T>
double reportMinimumNorm(const System& system, const std::vector<T>& x) {
    using Wide = WideOf<T>;
    const int m = system.A.rows(), n = system.A.columns(), nrhs = system.B.columns();
    const double error =
        scaledResidual(m, n, nrhs, system.A.data<Wide>(), system.B.data<Wide>(), x.data());
    std::printf("residual:   %.3g  (||B - A X|| / (||A|| ||X|| eps n))\n", error);
    std::printf("norm of X:  %.6g\n", euclideanNorm(x.size(), x.data()));
    return error;
}

template <class T>
void lstsqAs(const System& system, const SystemFiles& files, OutputFile* output) {
    const int m = system.A.rows(), n = system.A.columns(), nrhs = system.B.columns();
    const bool tall = m >= n;
    const std::string routine = routineName<T>("gels");
    std::vector<T> a = convert<T>(system.A, files.a), x = convert<T>(system.B, files.b);
    warnOfExtremes(a, files.a, routine, leastUnscaled<T>);
    warnOfExtremes(x, files.b, routine, leastUnscaled<T>);
    const int ldb = std::max(m, n);  // B goes in and X comes out in its first rows
    x = withRows(ldb, x, nrhs);

    const Session session;
    printPlatform(session);
    std::printf("A:          %d x %d\nnrhs:       %d\n", m, n, nrhs);
    std::printf("solving:    %s\n", tall ? "least squares, the X that minimises ||B - A X||"
                                         : "minimum norm, the smallest X with A X = B");
    const Outcome outcome = timed([&] { return gels(m, n, nrhs, a.data(), x.data(), ldb); });
    if (outcome.status != lumoNoError) throw std::runtime_error(failure(outcome, system, files));

    std::printf("routine:    %s\nseconds:    %.3g\n", routine.c_str(), outcome.seconds);
    warnOfDependence(m, n, a, files.a);
    x = withRows(n, x, nrhs);
    const double error = tall ? reportLeastSquares(system, x) : reportMinimumNorm(system, x);
    if (!std::isfinite(error))
        throw std::runtime_error(files.a +
                                 ": the solution is not finite: the matrix is nearly of "
                                 "lower rank, or the data need scaling");
    if (error > errorBound)
        throw std::runtime_error(files.a +
                                 ": the solution is not accurate; do the data need "
                                 "scaling?");
    deliver(output, system.B, n, x);
}

// The smallest of the X that minimise ||B - A X||, by singular values.
template <class T>
void lstsqOfAnyRank(const System& system, const SystemFiles& files, OutputFile* output) {
    const int m = system.A.rows(), n = system.A.columns(), nrhs = system.B.columns();
    const int ldb = std::max(m, n);
    std::vector<T> a = convert<T>(system.A, files.a);
    std::vector<T> x = withRows(ldb, convert<T>(system.B, files.b), nrhs);
    using R = platform::RealOf<T>;
    std::vector<R> s(std::size_t(std::min(m, n)));
    int rank = 0;

    const Session session;
    printPlatform(session);
    std::printf("A:          %d x %d\nnrhs:       %d\n", m, n, nrhs);
    std::printf("solving:    the smallest X that minimises ||B - A X||\n");
    const Outcome outcome = timed([&] {
        constexpr auto gelsd = platform::ofType<T>(lumoSgelsd, lumoDgelsd, lumoCgelsd, lumoZgelsd);
        return gelsd(m, n, nrhs, exported(a.data()), m, exported(x.data()), ldb, s.data(),
                     R(ldb * 2 * epsOf<T>), &rank);
    });
    if (outcome.status == lumoDataError)
        throw std::runtime_error(files.a + ": the singular values did not converge");
    if (outcome.status != lumoNoError)
        throw std::runtime_error(describe(outcome.status, outcome.info));
    std::printf("routine:    %s\nseconds:    %.3g\n", routineName<T>("gelsd").c_str(),
                outcome.seconds);
    std::printf("rank:       %d  (singular values from %.6g to %.6g)\n", rank, double(s.front()),
                double(s.back()));
    x = withRows(n, x, nrhs);
    const double error = reportLeastSquares(system, x);
    std::printf("norm of X:  %.6g\n", euclideanNorm(x.size(), x.data()));
    // What counts as zero is left out.
    if (!(error <= errorBound * ldb))
        throw std::runtime_error(files.a + ": the solution is not accurate");
    deliver(output, system.B, n, x);
}

}  // namespace

void lstsq(const SystemFiles& files) {
    const auto output = openMatrix(files.x);
    const System system = readSystem(files, Shape::any);
    platform::withType(typeOf(system.A, files.precision), [&](auto number) {
        using T = decltype(number);
        (files.anyRank ? lstsqOfAnyRank<T> : lstsqAs<T>)(system, files, output.get());
    });
}

}  // namespace lumo
