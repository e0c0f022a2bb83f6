// Host and device matrices for tests: random, padded, compared.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "common/complex.h"
#include "cudalib/managed_memory.h"
#include "exports.h"
#include "platform/element_types.h"

namespace test {

template <class T>
using RealOf = lumo::RealOf<T>;
using platform::isDouble;

using ElementTypes = ::testing::Types<float, double, lumo::Complex<float>, lumo::Complex<double>>;

// The wide type to compute expected values in.
inline std::complex<double> wide(std::complex<double> z) {
    return z;
}
template <class R>
std::complex<double> wide(lumo::Complex<R> z) {
    return {z.re, z.im};
}

template <class T>
T scalar(double re, double im = 0) {
    if constexpr (lumo::isComplex<T>)
        return T(RealOf<T>(re), RealOf<T>(im));
    else
        return T(re);
}

// Uniform in [-1, 1], real and imaginary parts alike.
class Random {
  public:
    explicit Random(unsigned seed = 1) : engine_(seed) {}
    template <class T>
    T next() {
        const double re = uniform_(engine_);
        return scalar<T>(re, lumo::isComplex<T> ? uniform_(engine_) : 0.0);
    }

  private:
    std::mt19937 engine_;
    std::uniform_real_distribution<double> uniform_{-1, 1};
};

// A column-major matrix in host memory. Its padding, rows m ... ld - 1, holds a mark.
template <class T>
struct Matrix {
    int m, n, ld;
    std::vector<T> data;

    Matrix(int m_, int n_, int ld_ = 0)
        : m(m_), n(n_), ld(std::max({1, m_, ld_})), data(std::size_t(ld) * n_, mark()) {}
    static Matrix random(int m, int n, int ld = 0, unsigned seed = 1) {
        Matrix a(m, n, ld);
        Random random(seed);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) a(i, j) = random.next<T>();
        return a;
    }
    static T mark() { return scalar<T>(-77, 77); }

    T& operator()(int i, int j) { return data[std::size_t(j) * ld + i]; }
    const T& operator()(int i, int j) const { return data[std::size_t(j) * ld + i]; }

    bool paddingUntouched() const {
        for (int j = 0; j < n; ++j)
            for (int i = m; i < ld; ++i)
                if (!((*this)(i, j) == mark())) return false;
        return true;
    }
};

template <class T>
bool operator==(const Matrix<T>& a, const Matrix<T>& b) {
    return a.m == b.m && a.n == b.n && a.ld == b.ld && a.data == b.data;
}

template <class T>
Matrix<T> filled(int m, int n, T value, int ld = 0) {
    Matrix<T> a(m, n, ld);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) a(i, j) = value;
    return a;
}

// A copy of a host matrix in device memory, padding included.
template <class T>
class OnDevice {
  public:
    explicit OnDevice(const Matrix<T>& a) : before_(a), memory_({unsigned(a.ld), unsigned(a.n)}) {
        memory_.copyFromHost(a.data.data(), std::size_t(a.ld));
    }
    // Random, seeded by its padding, so that operands padded differently are different.
    OnDevice(int m, int n, int pad) : OnDevice(Matrix<T>::random(m, n, m + pad, unsigned(pad))) {}
    OnDevice(const OnDevice&) = delete;  // a second handle would not be a second matrix
    T* data() const { return memory_.data(); }
    int ld() const { return before_.ld; }
    // An element as it was before the device worked on it.
    const T& operator()(int i, int j) const { return before_(i, j); }
    // What the device holds now. A blocking copy: it waits for all work issued before.
    Matrix<T> download() const {
        Matrix<T> a = before_;
        memory_.copyToHost(a.data.data(), std::size_t(a.ld));
        return a;
    }

  private:
    Matrix<T> before_;
    cudalib::ManagedMemory<T, cudalib::CudaAllocator> memory_;
};

// What a call works on, in host or in device memory: as it was before, and as it is now. In host
// memory complex numbers are aligned as reals are, where columns have an odd length.
template <class T>
class Operand {
  public:
    const Matrix<T> before;
    Operand(Matrix<T> a, Interface where)
        : before(std::move(a)),
          start_(lumo::isComplex<T> && before.ld % 2 ? sizeof(RealOf<T>) : 0) {
        if (where == inDevice)
            there_ = std::make_unique<OnDevice<T>>(before);
        else
            here_.resize(start_ + before.data.size() * sizeof(T));
        if (!there_ && !before.data.empty())
            std::memcpy(here_.data() + start_, before.data.data(), size());
    }
    // Null for a matrix without columns.
    T* at() {
        if (before.n == 0) return nullptr;
        return there_ ? there_->data() : reinterpret_cast<T*>(here_.data() + start_);
    }
    Matrix<T> now() const {
        if (there_) return there_->download();
        Matrix<T> a = before;
        if (!a.data.empty()) std::memcpy(a.data.data(), here_.data() + start_, size());
        return a;
    }
    // To the bit: what is not a number is so, too.
    bool untouched() const {
        const Matrix<T> after = now();
        return before.data.empty() || std::memcmp(before.data.data(), after.data.data(),
                                                  before.data.size() * sizeof(T)) == 0;
    }
    bool paddingUntouched() const { return now().paddingUntouched(); }

  private:
    std::size_t size() const { return before.data.size() * sizeof(T); }

    const std::size_t start_;
    std::vector<unsigned char> here_;
    std::unique_ptr<OnDevice<T>> there_;
};

}  // namespace test
