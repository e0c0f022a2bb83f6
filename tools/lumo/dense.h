// A matrix as it was read from a file: dense, double precision, real or complex.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo {

// What is wrong with a file, without the file's name.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Refuses, with a FileError, a matrix that no library call could take or this machine's memory
// could not hold: sizes come from file headers, which may claim anything.
void checkSize(std::int64_t rows, std::int64_t columns, bool isComplex);

class Dense {
  public:
    Dense() = default;
    // Of zeros, of a size that is checked.
    Dense(std::int64_t rows, std::int64_t columns, bool isComplex);

    int rows() const { return rows_; }
    int columns() const { return columns_; }
    bool isComplex() const { return complex_; }
    std::size_t count() const { return std::size_t(rows_) * std::size_t(columns_); }

    void add(std::size_t i, std::size_t j, std::complex<double> value) {
        const std::size_t k = j * std::size_t(rows_) + i;
        if (complex_)
            data<std::complex<double>>()[k] += value;
        else
            numbers_[k] += value.real();
    }

    // The elements, column-major, as doubles (a real matrix) or std::complex<double>.
    template <class T>
    T* data() {
        return reinterpret_cast<T*>(numbers_.data());
    }
    template <class T>
    const T* data() const {
        return reinterpret_cast<const T*>(numbers_.data());
    }

    void makeComplex();

    bool isVector = false;  // one column, of a file that knows arrays of one dimension
    bool isSingle = false;  // of a file whose numbers are of single precision or less

  private:
    int rows_ = 0, columns_ = 0;
    bool complex_ = false;
    std::vector<double> numbers_;
};

}  // namespace lumo
