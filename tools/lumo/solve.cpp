// `lumo solve`: A X = B for matrices in files, in single precision.
#include <cmath>

#include "common/condition.h"
#include "common/residual.h"
#include "linear_system.h"
#include "matrix_file.h"

namespace lumo {
namespace {

template <class T>
constexpr const char* routine = isComplexNumber<T> ? "lumoCgesv" : "lumoSgesv";

lumoStatus gesv(int n, int nrhs, float* a, int* ipiv, float* b) {
    return lumoSgesv(n, nrhs, a, n, ipiv, b, n);
}
lumoStatus gesv(int n, int nrhs, std::complex<float>* a, int* ipiv, std::complex<float>* b) {
    return lumoCgesv(n, nrhs, reinterpret_cast<lumoFloatComplex*>(a), n, ipiv,
                     reinterpret_cast<lumoFloatComplex*>(b), n);
}

// Why there is no solution.
std::string failure(const Outcome& outcome, const SystemFiles& files) {
    if (outcome.status != lumoDataError) return describe(outcome.status, outcome.info);
    const std::string column = std::to_string(outcome.info);
    return files.a + ": the matrix is singular in single precision: column " + column +
           " depends linearly on the columns before it (pivot " + column + " is zero)";
}

void warnOfCondition(const std::string& file, double rcond) {
    char text[200];
    std::snprintf(text, sizeof text,
                  ": ill-conditioned, its reciprocal condition number is %.2g: X may have no "
                  "correct digit",
                  rcond);
    warn(file + text);
}

template <class T>
void solveAs(const System& system, const SystemFiles& files, OutputFile* output) {
    const Dense &A = system.A, &B = system.B;
    const int n = A.rows(), nrhs = B.columns();
    std::vector<T> a = toSingle<T>(A, files.a), x = toSingle<T>(B, files.b);
    std::vector<int> ipiv(std::size_t(n), 0);
    const double normOfA = oneNorm(n, a.data(), n);

    const Session session;
    printPlatform(session);
    std::printf("n:          %d\nnrhs:       %d\n", n, nrhs);
    const Outcome outcome = timed([&] { return gesv(n, nrhs, a.data(), ipiv.data(), x.data()); });
    if (outcome.status != lumoNoError) throw std::runtime_error(failure(outcome, files));

    using Wide = WideOf<T>;
    const double residual = scaledResidual(n, n, nrhs, A.data<Wide>(), B.data<Wide>(), x.data());
    std::printf("routine:    %s\nseconds:    %.3g\n", routine<T>, outcome.seconds);
    std::printf("residual:   %.3g  (||B - A X|| / (||A|| ||X|| eps n))\n", residual);
    if (!std::isfinite(residual))
        throw std::runtime_error(files.a +
                                 ": the solution is not finite: the matrix is nearly "
                                 "singular, or the solution overflows");
    if (residual > errorBound) throw std::runtime_error(files.a + ": the solution is not accurate");
    const double rcond = reciprocalCondition(n, a.data(), n, normOfA);
    std::printf("rcond:      %.2g  (1 / (||A|| ||inverse of A||), estimated)\n", rcond);
    if (rcond < singleEps) warnOfCondition(files.a, rcond);
    deliver(output, B, n, x);
}

}  // namespace

void solve(const SystemFiles& files) {
    const auto output = openMatrix(files.x);
    const System system = readSystem(files, Shape::square);
    if (system.A.isComplex())
        solveAs<std::complex<float>>(system, files, output.get());
    else
        solveAs<float>(system, files, output.get());
}

}  // namespace lumo
