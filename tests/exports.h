// The exports by element type and interface, and how tests call them.
#pragma once

#include <type_traits>

#include "common/complex.h"
#include "lumo_extended.h"

namespace test {

enum Interface { inHost, inDevice };  // where the operands lie

inline const char* nameOf(Interface where) {
    return where == inHost ? ", host" : ", device";
}

// By interface.
#define LUMO_EXPORT_AS(member, type, name)                                     \
    static constexpr decltype(&lumo##type##name) member[] = {lumo##type##name, \
                                                             lumoDevice##type##name}
#define LUMO_EXPORT(type, name) LUMO_EXPORT_AS(name, type, name)
#define LUMO_BLAS_EXPORTS(type) \
    LUMO_EXPORT(type, gemm);    \
    LUMO_EXPORT(type, gemv);    \
    LUMO_EXPORT(type, symm);    \
    LUMO_EXPORT(type, syrk);    \
    LUMO_EXPORT(type, syr2k);   \
    LUMO_EXPORT(type, trmm);    \
    LUMO_EXPORT(type, trsm)
#define LUMO_HERMITIAN_EXPORTS(type) \
    LUMO_EXPORT(type, hemm);         \
    LUMO_EXPORT(type, herk);         \
    LUMO_EXPORT(type, her2k)
// `un`: how the names of what has to do with Q begin, `sy` those of symmetric matrices.
#define LUMO_LAPACK_EXPORTS(type, un, sy) \
    LUMO_EXPORT_AS(syevd, type, sy##evd); \
    LUMO_EXPORT(type, getrs);             \
    LUMO_EXPORT(type, potrf);             \
    LUMO_EXPORT(type, potrs);             \
    LUMO_EXPORT(type, posv);              \
    LUMO_EXPORT(type, gecon);             \
    LUMO_EXPORT(type, pocon);             \
    LUMO_EXPORT_AS(orgqr, type, un##gqr); \
    LUMO_EXPORT_AS(ormqr, type, un##mqr); \
    LUMO_EXPORT(type, getrf);             \
    LUMO_EXPORT(type, gesv);              \
    LUMO_EXPORT(type, geqrf);             \
    LUMO_EXPORT(type, gels);              \
    LUMO_EXPORT(type, gglse);             \
    LUMO_EXPORT(type, gesvd)

template <class T>
struct Exports;
template <>
struct Exports<float> {
    LUMO_BLAS_EXPORTS(S);
    LUMO_LAPACK_EXPORTS(S, or, sy);
};
template <>
struct Exports<double> {
    LUMO_BLAS_EXPORTS(D);
    LUMO_LAPACK_EXPORTS(D, or, sy);
    LUMO_EXPORT_AS(dsgesv, D, sgesv);
};
template <>
struct Exports<lumo::Complex<float>> {
    LUMO_BLAS_EXPORTS(C);
    LUMO_HERMITIAN_EXPORTS(C);
    LUMO_LAPACK_EXPORTS(C, un, he);
};
template <>
struct Exports<lumo::Complex<double>> {
    LUMO_BLAS_EXPORTS(Z);
    LUMO_HERMITIAN_EXPORTS(Z);
    LUMO_LAPACK_EXPORTS(Z, un, he);
    LUMO_EXPORT_AS(dsgesv, Z, cgesv);
};

// A number or pointer of the tests as an export has it; the real part where it takes no more.
template <class To, class From>
To as(From x) {
    if constexpr (std::is_convertible_v<From, To>)
        return x;
    else if constexpr (std::is_pointer_v<To>)
        return reinterpret_cast<To>(x);
    else if constexpr (std::is_arithmetic_v<To>)
        return x.re;
    else
        return {x.re, x.im};
}

template <class... To, class... From>
lumoStatus callExport(lumoStatus (*function)(To...), From... arguments) {
    return function(as<To>(arguments)...);
}

}  // namespace test
