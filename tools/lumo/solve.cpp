// `lumo solve`: A X = B for matrices in files, in single precision.
#include <chrono>
#include <cmath>
#include <cstdio>

#include "commands.h"
#include "common/progress.h"
#include "common/residual.h"
#include "matrix_file.h"
#include "platform/cuda3.h"
#include "session.h"

namespace lumo {
namespace {

template <class T>
struct Traits;
template <>
struct Traits<float> {
    using Wide = double;
    static constexpr const char* routine = "lumoSgesv";
    static lumoStatus gesv(int n, int nrhs, float* a, int* ipiv, float* b) {
        return lumoSgesv(n, nrhs, a, n, ipiv, b, n);
    }
};
template <>
struct Traits<std::complex<float>> {
    using Wide = std::complex<double>;
    static constexpr const char* routine = "lumoCgesv";
    static lumoStatus gesv(int n, int nrhs, std::complex<float>* a, int* ipiv,
                           std::complex<float>* b) {
        return lumoCgesv(n, nrhs, reinterpret_cast<lumoFloatComplex*>(a), n, ipiv,
                         reinterpret_cast<lumoFloatComplex*>(b), n);
    }
};

bool isFinite(float x) {
    return std::isfinite(x);
}
bool isFinite(std::complex<float> z) {
    return std::isfinite(z.real()) && std::isfinite(z.imag());
}

// The matrix as the solver takes it. Says if that lost something.
template <class T>
std::vector<T> toSingle(const Dense& matrix, const std::string& file) {
    using Wide = typename Traits<T>::Wide;
    const Wide* from = matrix.data<Wide>();
    std::vector<T> single(matrix.count());
    bool rounded = false;
    for (std::size_t k = 0; k < single.size(); ++k) {
        single[k] = T(from[k]);
        if (!isFinite(single[k])) {
            const std::size_t rows = std::size_t(matrix.rows());
            const bool was = std::isfinite(std::abs(from[k]));
            throw FileError(file + ": element (" + std::to_string(k % rows + 1) + ", " +
                            std::to_string(k / rows + 1) + ") is " +
                            (was ? "too large for single precision" : "not finite"));
        }
        rounded |= Wide(single[k]) != from[k];
    }
    if (rounded) std::printf("%s: rounded to single precision\n", file.c_str());
    return single;
}

// Why there is no solution.
std::string failure(lumoStatus status, int info, const SolveOptions& options) {
    if (status == lumoDataError) {
        const std::string column = std::to_string(info);
        return options.a + ": the matrix is singular in single precision: column " + column +
               " depends linearly on the columns before it (pivot " + column + " is zero)";
    }
    return describe(status, info);
}

template <class T>
void solveAs(const Dense& A, const Dense& B, const SolveOptions& options) {
    using Wide = typename Traits<T>::Wide;
    using Clock = std::chrono::steady_clock;
    const int n = A.rows(), nrhs = B.columns();
    std::vector<T> a = toSingle<T>(A, options.a), x = toSingle<T>(B, options.b);
    std::vector<int> ipiv(std::size_t(n), 0);

    const Session session;
    std::printf("platform:   %s\n", platform::choice().table->name);
    std::printf("device:     %s\n", session.device().c_str());
    std::printf("n:          %d\nnrhs:       %d\n", n, nrhs);
    std::fflush(stdout);
    const auto start = Clock::now();
    const lumoStatus status = [&] {
        const Progress progress("solving");
        return Traits<T>::gesv(n, nrhs, a.data(), ipiv.data(), x.data());
    }();
    const int info = lumoGetErrorInfo();
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    if (status != lumoNoError) throw std::runtime_error(failure(status, info, options));

    const double residual = scaledResidual(n, nrhs, A.data<Wide>(), B.data<Wide>(), x.data());
    std::printf("routine:    %s\nseconds:    %.3g\n", Traits<T>::routine, elapsed.count());
    std::printf("residual:   %.3g  (||B - A X|| / (||A|| ||X|| eps n))\n", residual);
    if (!std::isfinite(residual))
        throw std::runtime_error(options.a +
                                 ": the solution is not finite: the matrix is nearly "
                                 "singular, or the solution overflows");
    // Status 0 alone does not promise this: partial pivoting can fail, if hardly ever.
    constexpr double bound = 30;
    if (residual > bound) throw std::runtime_error(options.a + ": the solution is not accurate");
    if (!options.x.empty()) {
        writeMatrix(options.x, n, nrhs, x.data(), B.isVector);
        std::printf("solution:   %s\n", options.x.c_str());
    }
    std::printf("solved: status 0, no errors\n");
}

Dense readFilled(const std::string& file) {
    const Progress progress("reading " + file);
    Dense matrix = readMatrix(file);
    if (matrix.count() == 0) throw FileError(file + ": the matrix has no elements");
    return matrix;
}

}  // namespace

void solve(const SolveOptions& options) {
    if (!options.x.empty()) checkOutputName(options.x);
    Dense A = readFilled(options.a);
    if (A.rows() != A.columns())
        throw FileError(options.a + ": not square: " + std::to_string(A.rows()) + " x " +
                        std::to_string(A.columns()));
    Dense B = readFilled(options.b);
    if (B.rows() != A.rows())
        throw FileError(options.b + ": has " + std::to_string(B.rows()) + " rows, but " +
                        options.a + " has " + std::to_string(A.rows()));
    if (A.isComplex() || B.isComplex()) {
        A.makeComplex();
        B.makeComplex();
        solveAs<std::complex<float>>(A, B, options);
    } else {
        solveAs<float>(A, B, options);
    }
}

}  // namespace lumo
