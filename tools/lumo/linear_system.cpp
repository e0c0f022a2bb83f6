#include "linear_system.h"

#include <algorithm>
#include <cmath>

#include "common/residual.h"
#include "matrix_file.h"
#include "platform/cuda3.h"

namespace lumo {
namespace {

bool isFinite(float x) {
    return std::isfinite(x);
}
bool isFinite(std::complex<float> z) {
    return std::isfinite(z.real()) && std::isfinite(z.imag());
}

}  // namespace

Dense readFilled(InputFile& in, const char* others) {
    const Progress progress("reading " + in.name());
    Dense matrix = readMatrix(in, others);
    if (matrix.count() == 0) throw FileError(in.name() + ": the matrix has no elements");
    return matrix;
}

void warn(const std::string& text) {
    std::fflush(stdout);
    std::fprintf(stderr, "lumo: warning: %s\n", text.c_str());
}

System readSystem(const SystemFiles& files, Shape shape) {
    if (files.a == "-" && files.b == "-") throw FileError("A and B cannot both be standard input");
    const auto read = [](const std::string& file) {
        InputFile in(file);
        return readFilled(in);
    };
    Dense A = read(files.a);
    if (shape == Shape::square && A.rows() != A.columns())
        throw FileError(files.a + ": not square: " + std::to_string(A.rows()) + " x " +
                        std::to_string(A.columns()));
    Dense B = read(files.b);
    if (B.rows() != A.rows())
        throw FileError(files.b + ": has " + std::to_string(B.rows()) + " rows, but " + files.a +
                        " has " + std::to_string(A.rows()));
    if (A.isComplex() || B.isComplex()) {
        A.makeComplex();
        B.makeComplex();
    }
    return {std::move(A), std::move(B)};
}

template <class T>
std::vector<T> toSingle(const Dense& matrix, const std::string& file) {
    using Wide = WideOf<T>;
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

template std::vector<float> toSingle(const Dense&, const std::string&);
template std::vector<std::complex<float>> toSingle(const Dense&, const std::string&);

template <class T>
void warnOfExtremes(const std::vector<T>& data, const std::string& file, const char* routine,
                    double least) {
    double largest = 0;
    for (const T value : data) largest = std::max(largest, double(std::abs(value)));
    if (largest == 0 || (largest >= least && largest <= 1 / least)) return;
    char text[200];
    std::snprintf(text, sizeof text,
                  ": the largest element is %.2g, but %s does not scale its data: outside %.2g to "
                  "%.2g accuracy may be lost; multiply them by a power of two",
                  largest, routine, least, 1 / least);
    warn(file + text);
}

template void warnOfExtremes(const std::vector<float>&, const std::string&, const char*, double);
template void warnOfExtremes(const std::vector<std::complex<float>>&, const std::string&,
                             const char*, double);

void printPlatform(const Session& session) {
    std::printf("platform:   %s\n", platform::lumo_private_platform(nullptr)->table->name);
    std::printf("device:     %s\n", session.device().c_str());
}

template <class T>
void deliver(OutputFile* file, const Dense& B, int n, const std::vector<T>& x) {
    if (file) {
        writeMatrix(*file, n, B.columns(), x.data(), B.isVector);
        file->commit();
        std::printf("solution:   %s\n", file->name().c_str());
    }
    std::printf("solved: status 0, no errors\n");
}

template void deliver(OutputFile*, const Dense&, int, const std::vector<float>&);
template void deliver(OutputFile*, const Dense&, int, const std::vector<std::complex<float>>&);

}  // namespace lumo
