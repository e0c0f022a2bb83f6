// What the commands share: matrices from files, a timed call; for those that solve for X, A and B
// and X into a file.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "commands.h"
#include "common/progress.h"
#include "dense.h"
#include "input_file.h"
#include "output_file.h"
#include "platform/element_types.h"
#include "session.h"

namespace lumo {

// The matrix in a file, which has elements. See readMatrix.
Dense readFilled(InputFile& in, const char* others = "");

// A line on the standard error stream: the result has to be taken with care.
void warn(const std::string& text);

// The letter of the type in which to compute with a matrix: as `precision` says (SystemFiles), or
// else as the file's numbers are.
char typeOf(const Dense& matrix, const std::string& precision);

// A and B have the same number of rows; they are both complex, and both of double precision, if
// either file is.
struct System {
    Dense A, B;
};

// Throws a FileError if the files do not hold such a system.
enum class Shape { square, any };
System readSystem(const SystemFiles& files, Shape shape);

// A function's name by that of its family: lumoSgesv for "gesv" and float.
template <class T>
std::string routineName(const char* name) {
    return std::string("lumo") + platform::letter<T> + name;
}
template <class T>
constexpr const char* precisionOf = platform::isDouble<T> ? "double precision" : "single precision";

// The matrix as the library takes it. Says if its precision loses something; throws a FileError for
// what is not finite, then or before.
template <class T>
std::vector<T> convert(const Dense& matrix, const std::string& file);

// Says so if the routine, which does not scale its data as LAPACK's does, is outside the limits
// within which LAPACK's does not: the largest element from `least` to 1 / least. Data that are all
// zero need no scaling.
template <class T>
void warnOfExtremes(const std::vector<T>& data, const std::string& file, const std::string& routine,
                    double least);

// Starts the report of a solution.
void printPlatform(const Session& session);

struct Outcome {
    lumoStatus status;
    int info;
    double seconds;
};
template <class Call>
Outcome timed(Call call, const char* what = "solving") {
    std::fflush(stdout);
    const auto start = std::chrono::steady_clock::now();
    const lumoStatus status = [&] {
        const Progress progress(what);
        return call();
    }();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return {status, lumoGetThreadErrorInfo(), elapsed.count()};
}

// Throws what the library says of a call that is not expected to fail.
void succeed(lumoStatus status);

// The largest scaled error that a solution may have. Status 0 alone does not promise it: partial
// pivoting can fail, if hardly ever.
constexpr double errorBound = 30;

// Ends the report: writes the n x nrhs solution, if `file` is not null, and tells of the success.
template <class T>
void deliver(OutputFile* file, const Dense& B, int n, const std::vector<T>& x);

}  // namespace lumo
