// The library's complex number: two reals, the layout of float2 and double2.
#pragma once

#ifdef __CUDACC__
#define LUMO_HOST_DEVICE __host__ __device__
#else
#define LUMO_HOST_DEVICE
#endif

namespace lumo {

// No default initialisation: arrays of it live in shared memory and in fresh device buffers.
// Aligned as a GPU loads it in one piece.
template <class T>
struct alignas(2 * sizeof(T)) Complex {
    T re, im;

    Complex() = default;
    LUMO_HOST_DEVICE constexpr Complex(T real, T imaginary = T(0)) : re(real), im(imaginary) {}
};

template <class T>
LUMO_HOST_DEVICE constexpr Complex<T> operator+(Complex<T> a, Complex<T> b) {
    return {a.re + b.re, a.im + b.im};
}
template <class T>
LUMO_HOST_DEVICE constexpr Complex<T> operator-(Complex<T> a, Complex<T> b) {
    return {a.re - b.re, a.im - b.im};
}
template <class T>
LUMO_HOST_DEVICE constexpr Complex<T> operator*(Complex<T> a, Complex<T> b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <class T>
LUMO_HOST_DEVICE constexpr Complex<T> operator*(T a, Complex<T> b) {
    return {a * b.re, a * b.im};
}
template <class T>
LUMO_HOST_DEVICE constexpr bool operator==(Complex<T> a, Complex<T> b) {
    return a.re == b.re && a.im == b.im;
}

// Quotient by Smith's method (CACM algorithm 116, 1962): the divisor's parts are not squared, so
// they neither overflow nor underflow before the quotient does.
template <class T>
LUMO_HOST_DEVICE constexpr Complex<T> operator/(Complex<T> a, Complex<T> b) {
    const T re = b.re < 0 ? -b.re : b.re;
    const T im = b.im < 0 ? -b.im : b.im;
    if (re >= im) {
        const T ratio = b.im / b.re, scale = b.re + b.im * ratio;
        return {(a.re + a.im * ratio) / scale, (a.im - a.re * ratio) / scale};
    }
    const T ratio = b.re / b.im, scale = b.re * ratio + b.im;
    return {(a.re * ratio + a.im) / scale, (a.im * ratio - a.re) / scale};
}

template <class T>
struct ScalarTraits {  // in the names of kernels, which platform::RealOf is not
    using Real = T;
    static constexpr bool complex = false;
};
template <class T>
struct ScalarTraits<Complex<T>> {
    using Real = T;
    static constexpr bool complex = true;
};

template <class T>
using RealOf = typename ScalarTraits<T>::Real;
template <class T>
constexpr bool isComplex = ScalarTraits<T>::complex;

// The complex conjugate; a real number is its own.
template <class T>
LUMO_HOST_DEVICE constexpr T conjugate(T a) {
    return a;
}
template <class T>
LUMO_HOST_DEVICE constexpr Complex<T> conjugate(Complex<T> a) {
    return {a.re, -a.im};
}

}  // namespace lumo
