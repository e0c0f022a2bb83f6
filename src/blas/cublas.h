// Legacy CUBLAS by element type. Errors show at the next check.
#pragma once

#include <complex>
#include <type_traits>

#include "common/complex.h"
#include "platform/cuda3.h"

namespace lumo::cublas {

// What the platform takes an argument for: only complex numbers have another type there.
template <class A>
A plain(A argument) {
    return argument;
}
template <class Real>
std::complex<Real> plain(Complex<Real> z) {
    return {z.re, z.im};
}
template <class Real>
std::complex<Real>* plain(Complex<Real>* a) {
    return reinterpret_cast<std::complex<Real>*>(a);
}
template <class Real>
const std::complex<Real>* plain(const Complex<Real>* a) {
    return reinterpret_cast<const std::complex<Real>*>(a);
}

// The element type of a call: its first operand's.
template <class Argument, class... Rest>
struct Element : Element<Rest...> {};
template <class T, class... Rest>
struct Element<T*, Rest...> {
    using Type = std::remove_const_t<T>;
};

// Each routine, under its name without the letter of a type: gemm(transa, transb, m, n, k, alpha,
// a, lda, b, ldb, beta, c, ldc). symm, herk and syr2k are the Hermitian products where the elements
// are complex.
#define BLAS_ENTRY(name, S, D, C, Z, parameters)                         \
    template <class... Arguments>                                        \
    void name(Arguments... arguments) {                                  \
        using T = typename Element<decltype(plain(arguments))...>::Type; \
        platform::ofType<T>(S, D, C, Z)(plain(arguments)...);            \
    }
#include "platform/entries.inc"

}  // namespace lumo::cublas
