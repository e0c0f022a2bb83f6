#include "linear_system.h"

#include <algorithm>
#include <cmath>

#include "common/residual.h"
#include "matrix_file.h"
#include "platform/cuda3.h"

namespace lumo {
namespace {

template <class T>
bool isFinite(T x) {
    if constexpr (isComplexNumber<T>)
        return isFinite(x.real()) && isFinite(x.imag());
    else
        return std::isfinite(x);
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

char typeOf(const Dense& matrix, const std::string& precision) {
    const bool isSingle = precision.empty() ? matrix.isSingle : precision == "s";
    return matrix.isComplex() ? (isSingle ? 'C' : 'Z') : (isSingle ? 'S' : 'D');
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
    A.isSingle = B.isSingle = A.isSingle && B.isSingle;
    return {std::move(A), std::move(B)};
}

template <class T>
std::vector<T> convert(const Dense& matrix, const std::string& file) {
    using Wide = WideOf<T>;
    const Wide* from = matrix.data<Wide>();
    std::vector<T> converted(matrix.count());
    bool rounded = false;
    for (std::size_t k = 0; k < converted.size(); ++k) {
        converted[k] = T(from[k]);
        if (!isFinite(converted[k])) {
            const std::size_t rows = std::size_t(matrix.rows());
            throw FileError(file + ": element (" + std::to_string(k % rows + 1) + ", " +
                            std::to_string(k / rows + 1) + ") is " +
                            (isFinite(from[k]) ? std::string("too large for ") + precisionOf<T>
                                               : "not finite"));
        }
        rounded |= Wide(converted[k]) != from[k];
    }
    if (rounded) std::printf("%s: rounded to %s\n", file.c_str(), precisionOf<T>);
    return converted;
}

template <class T>
void warnOfExtremes(const std::vector<T>& data, const std::string& file, const std::string& routine,
                    double least) {
    double largest = 0;
    for (const T value : data) largest = std::max(largest, double(std::abs(value)));
    if (largest == 0 || (largest >= least && largest <= 1 / least)) return;
    char text[200];
    std::snprintf(text, sizeof text,
                  ": the largest element is %.2g, but %s does not scale its data: outside %.2g to "
                  "%.2g accuracy may be lost; multiply them by a power of two",
                  largest, routine.c_str(), least, 1 / least);
    warn(file + text);
}

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

#define LUMO_INSTANCES(T)                                                                       \
    template std::vector<T> convert(const Dense&, const std::string&);                          \
    template void warnOfExtremes(const std::vector<T>&, const std::string&, const std::string&, \
                                 double);                                                       \
    template void deliver(OutputFile*, const Dense&, int, const std::vector<T>&)
LUMO_INSTANCES(float);
LUMO_INSTANCES(double);
LUMO_INSTANCES(std::complex<float>);
LUMO_INSTANCES(std::complex<double>);

}  // namespace lumo
