// `lumo eigh`: the eigenvalues and eigenvectors of a symmetric or Hermitian matrix in a file.
#include <cmath>
#include <cstdio>

#include "comparison.h"
#include "eigensystem.h"
#include "matrix_file.h"
#include "output_files.h"
#include "platform/element_types.h"

namespace lumo {
namespace {

std::string text(double x) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}
std::string text(std::complex<double> z) {
    return text(z.real()) + (std::signbit(z.imag()) ? " - " : " + ") + text(std::abs(z.imag())) +
           "i";
}

// Refuses a matrix whose triangles are of two matrices: half of it would not count.
template <class Wide>
void checkHermitian(const Dense& A, const std::string& file) {
    if (A.rows() != A.columns())
        throw FileError(file + ": not square: " + std::to_string(A.rows()) + " x " +
                        std::to_string(A.columns()));
    const auto place = [](int i, int j) {
        return "(" + std::to_string(i + 1) + ", " + std::to_string(j + 1) + ")";
    };
    const int n = A.rows();
    const Wide* const a = A.data<Wide>();
    for (int j = 0; j < n; ++j)
        for (int i = j; i < n; ++i) {
            const Wide lower = a[std::size_t(j) * n + i], upper = a[std::size_t(i) * n + j];
            if (lower == platform::conjugate(upper)) continue;
            throw FileError(file + ": not " + (A.isComplex() ? "Hermitian" : "symmetric") +
                            ": element " + place(i, j) + " is " + text(lower) +
                            (i == j ? std::string(", not real")
                                    : ", but " + place(j, i) + " is " + text(upper)));
        }
}

template <class T>
void reportValues(const Eigensystem<T>& e) {
    constexpr int few = 3;  // at either end
    const int n = e.n, left = n > 2 * few ? n - 2 * few : 0;
    std::printf("values:    ");
    for (int i = 0; i < n; ++i)
        if (left == 0 || i < few || i >= n - few)
            std::printf("%s %.6g", left > 0 && i == n - few ? " ..." : "", double(e.w[i]));
    std::printf("\n");
}

// Whether A's eigensystem is the one, as far as can be told.
template <class T>
void checkEigensystem(const std::vector<T>& a, const Eigensystem<T>& e, const EighTask& task) {
    const double norm = euclideanNorm(a.size(), a.data()), tolerance = toleranceFor<T>(e.n);
    checkNorm(norm, euclideanNorm(e.w.size(), e.w.data()), "w", tolerance, task.a);
    if (!e.vectors) return;
    const Errors errors = errorsOf(a, e);
    const double residual = ratio(errors.residual, norm),
                 orthogonality = errors.orthogonality / std::sqrt(e.n);
    std::printf("residual:   %.1e  (||A V - V diag(w)|| / ||A||)\n", residual);
    if (!(residual <= tolerance)) throwInaccurate(task.a, "A V is not V diag(w)");
    std::printf("orthogonal: %.1e  (||V^H V - I|| / ||I||)\n", orthogonality);
    if (!(orthogonality <= tolerance)) throwInaccurate(task.a, "V is not orthogonal");
}

template <class T>
void compareWithCpu(const std::vector<T>& a, const Eigensystem<T>& e, const EighTask& task) {
    Eigensystem<T> ours = e, theirs = e;
    compareTimes([&] { return secondsOf([&] { return decompose(a, ours); }); },
                 [&] { return secondsOfCpu([&] { return decomposeByCpu(a, theirs); }); });
    double apart = 0;
    for (std::size_t i = 0; i < e.w.size(); ++i)
        apart = larger(apart, std::abs(double(e.w[i]) - double(theirs.w[i])));
    apart = ratio(apart, larger(std::abs(e.w.front()), std::abs(e.w.back())));
    std::printf("            eigenvalues differ by %.1e of the largest at most\n", apart);
    if (!(apart <= toleranceFor<T>(e.n)))
        throwInaccurate(task.a, "the CPU LAPACK's eigenvalues differ");
}

template <class T>
void eighOf(const Dense& A, const EighTask& task) {
    const std::vector<T> a = convert<T>(A, task.a);
    checkHermitian<WideOf<T>>(A, task.a);
    const int n = A.rows();
    const std::string ending = extensionFor(task.a), w = task.prefix + ".w" + ending,
                      v = task.prefix + ".v" + ending;
    std::vector<std::string> names;
    if (!task.prefix.empty()) names = task.values ? std::vector{w} : std::vector{w, v};
    OutputFiles files(names, task.a);

    const Session session;
    printPlatform(session);
    std::printf("A:          %d x %d, %s\n", n, n, A.isComplex() ? "Hermitian" : "symmetric");
    Eigensystem<T> e(n, !task.values);
    const Outcome outcome = timed([&] { return decompose(a, e); }, "decomposing");
    if (outcome.status == lumoDataError)
        throw std::runtime_error(task.a + ": the eigenvalues did not converge");
    if (outcome.status != lumoNoError)
        throw std::runtime_error(describe(outcome.status, outcome.info));
    std::printf("routine:    %s, %s\nseconds:    %.3g\n",
                routineName<T>(A.isComplex() ? "heevd" : "syevd").c_str(),
                e.vectors ? "with vectors" : "values only", outcome.seconds);
    reportValues(e);
    checkEigensystem(a, e, task);
    if (task.compare) compareWithCpu(a, e, task);
    if (!files.empty()) {
        writeMatrix(files[w], n, 1, e.w.data(), true);
        if (e.vectors) writeMatrix(files[v], n, n, e.v.data(), false);
        files.commit();
    }
    std::printf("decomposed: status 0, no errors\n");
}

}  // namespace

void eigh(const EighTask& task) {
    InputFile in(task.a);
    const Dense A = readFilled(in);
    platform::withType(typeOf(A, task.precision),
                       [&](auto number) { eighOf<decltype(number)>(A, task); });
}

}  // namespace lumo
