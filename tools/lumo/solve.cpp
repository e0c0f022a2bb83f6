// `lumo solve`: A X = B for matrices in files.
#include <cmath>

#include "common/condition.h"
#include "common/residual.h"
#include "exported.h"
#include "linear_system.h"
#include "lumo_extended.h"
#include "matrix_file.h"

namespace lumo {
namespace {

// How X is computed: solve() overwrites b by X, and a by its factors if hasFactors() then.
template <class T>
class InOnePrecision {
  public:
    std::string routine() const { return routineName<T>("gesv"); }
    lumoStatus solve(int n, int nrhs, T* a, int* ipiv, T* b) {
        constexpr auto gesv = platform::ofType<T>(lumoSgesv, lumoDgesv, lumoCgesv, lumoZgesv);
        return gesv(n, nrhs, exported(a), n, ipiv, exported(b), n);
    }
    void report() const {}
    bool hasFactors() const { return true; }
};

// T: double or std::complex<double>.
template <class T>
class InMixedPrecision {
  public:
    std::string routine() const { return isComplexNumber<T> ? "lumoZcgesv" : "lumoDsgesv"; }
    lumoStatus solve(int n, int nrhs, T* a, int* ipiv, T* b) {
        constexpr auto gesv = platform::ofType<T>(nullptr, lumoDsgesv, nullptr, lumoZcgesv);
        const std::vector<T> from(b, b + std::size_t(n) * std::size_t(nrhs));
        return gesv(n, nrhs, exported(a), n, ipiv, exported(from.data()), n, exported(b), n,
                    &steps_);
    }
    void report() const {
        if (steps_ >= 0) {
            std::printf("refined:    %d %s from single to double precision\n", steps_,
                        steps_ == 1 ? "step" : "steps");
            return;
        }
        const char* const why = steps_ == -2   ? "a number is too large for single precision"
                                : steps_ == -3 ? "A is singular in single precision"
                                               : "30 steps from single precision did not suffice";
        std::printf("refined:    no, double precision did it all: %s\n", why);
    }
    // In single precision they remain with the routine. That refinement got anywhere with them
    // shows that A is far from singular in double precision.
    bool hasFactors() const { return steps_ < 0; }

  private:
    int steps_ = 0;  // as lumo_extended.h tells of *iter
};

// Why there is no solution.
std::string failure(const Outcome& outcome, const SystemFiles& files, const char* precision) {
    if (outcome.status != lumoDataError) return describe(outcome.status, outcome.info);
    const std::string column = std::to_string(outcome.info);
    return files.a + ": the matrix is singular in " + precision + ": column " + column +
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

template <class T, class Method>
void solveBy(Method method, const System& system, const SystemFiles& files, OutputFile* output) {
    const Dense &A = system.A, &B = system.B;
    const int n = A.rows(), nrhs = B.columns();
    std::vector<T> a = convert<T>(A, files.a), x = convert<T>(B, files.b);
    std::vector<int> ipiv(std::size_t(n), 0);
    const double normOfA = oneNorm(n, a.data(), n);

    const Session session;
    printPlatform(session);
    std::printf("n:          %d\nnrhs:       %d\n", n, nrhs);
    const Outcome outcome =
        timed([&] { return method.solve(n, nrhs, a.data(), ipiv.data(), x.data()); });
    if (outcome.status != lumoNoError)
        throw std::runtime_error(failure(outcome, files, precisionOf<T>));

    using Wide = WideOf<T>;
    const double residual = scaledResidual(n, n, nrhs, A.data<Wide>(), B.data<Wide>(), x.data());
    std::printf("routine:    %s\n", method.routine().c_str());
    method.report();
    std::printf("seconds:    %.3g\n", outcome.seconds);
    std::printf("residual:   %.3g  (||B - A X|| / (||A|| ||X|| eps n))\n", residual);
    if (!std::isfinite(residual))
        throw std::runtime_error(files.a +
                                 ": the solution is not finite: the matrix is nearly "
                                 "singular, or the solution overflows");
    if (residual > errorBound) throw std::runtime_error(files.a + ": the solution is not accurate");
    if (method.hasFactors()) {
        const double rcond = reciprocalCondition(n, a.data(), n, normOfA);
        std::printf("rcond:      %.2g  (1 / (||A|| ||inverse of A||), estimated)\n", rcond);
        if (rcond < epsOf<T>) warnOfCondition(files.a, rcond);
    }
    deliver(output, B, n, x);
}

}  // namespace

void solve(const SystemFiles& files) {
    const auto output = openMatrix(files.x);
    const System system = readSystem(files, Shape::square);
    platform::withType(typeOf(system.A, files.precision), [&](auto number) {
        using T = decltype(number);
        if constexpr (platform::isDouble<T>)
            if (files.precision == "mixed")
                return solveBy<T>(InMixedPrecision<T>(), system, files, output.get());
        solveBy<T>(InOnePrecision<T>(), system, files, output.get());
    });
}

}  // namespace lumo
