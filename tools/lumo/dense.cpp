#include "dense.h"

#include <unistd.h>

#include <cstdio>
#include <limits>

namespace lumo {
namespace {

std::string gigabytes(double bytes) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g GB", bytes / (1 << 30));
    return text;
}

}  // namespace

void checkSize(std::int64_t rows, std::int64_t columns, bool isComplex) {
    const std::string size = std::to_string(rows) + " x " + std::to_string(columns);
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    if (rows < 0 || columns < 0) throw FileError("a negative size: " + size);
    if (rows > largest || columns > largest) throw FileError("too large: " + size);
    // Twice: the solver's copies take as much again: in single precision those on the host and the
    // device, in double precision the one on the host, with which the software device works.
    const double bytes = 2.0 * double(rows) * double(columns) * (isComplex ? 16 : 8);
    const double memory = double(sysconf(_SC_PHYS_PAGES)) * double(sysconf(_SC_PAGESIZE));
    if (bytes > memory)
        throw FileError("too large: " + size + " takes " + gigabytes(bytes) +
                        ", this machine has " + gigabytes(memory));
}

Dense::Dense(std::int64_t rows, std::int64_t columns, bool isComplex) : complex_(isComplex) {
    checkSize(rows, columns, isComplex);
    rows_ = int(rows);
    columns_ = int(columns);
    numbers_.resize(count() * (isComplex ? 2 : 1));
}

void Dense::makeComplex() {
    if (complex_) return;
    Dense wide(rows_, columns_, true);
    wide.isVector = isVector;
    wide.isSingle = isSingle;
    for (std::size_t k = 0; k < count(); ++k) wide.numbers_[2 * k] = numbers_[k];
    *this = std::move(wide);
}

}  // namespace lumo
