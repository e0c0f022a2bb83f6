// The BLAS operations as data: how an export is called, what its operands look like, and how its
// result is judged. One table for the four element types, host and device.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "lumo.h"
#include "residuals.h"
#include "support/matrix.h"

namespace test {

enum Interface { inHost, inDevice };  // where the operands lie

// Of one call, whatever the operation. The result is c; gemv's vectors are b and c with their
// increments as leading dimensions; trmm and trsm have no b.
template <class T>
struct Arguments {
    std::string letters;
    int m, n, k;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;
};

struct Shape {
    int m, n;
};
struct Shapes {
    Shape a, b, c;
};

template <class T>
struct Operation {
    std::string name;
    std::vector<std::string> letters;  // that each option takes
    lumoStatus (*call)(Interface, const Arguments<T>&);
    // By upper-cased letters and sizes.
    Shapes (*shapes)(const std::string& letters, int m, int n, int k);
    // The products that make up the result, for what a, b and c were before the call.
    ProductSum (*sum)(const Arguments<T>&, const WideMatrix& a, const WideMatrix& b,
                      const WideMatrix& c);
    // Which letters say what triangle of A and C is stored and whether A has a unit diagonal; -1
    // for none.
    int triangleOfA, diagonalOfA, triangleOfC;
    bool hermitian;  // so A, or C if it has a triangle, has a real diagonal
    bool blocked;    // large ones go by blocks
};

// A number or pointer of the tests as the C interface has it.
template <class R>
R argument(R real) {
    return real;
}
inline lumoFloatComplex argument(lumo::Complex<float> z) {
    return {z.re, z.im};
}
inline lumoDoubleComplex argument(lumo::Complex<double> z) {
    return {z.re, z.im};
}
inline lumoFloatComplex* argument(lumo::Complex<float>* p) {
    return reinterpret_cast<lumoFloatComplex*>(p);
}
inline lumoDoubleComplex* argument(lumo::Complex<double>* p) {
    return reinterpret_cast<lumoDoubleComplex*>(p);
}
inline const lumoFloatComplex* argument(const lumo::Complex<float>* p) {
    return reinterpret_cast<const lumoFloatComplex*>(p);
}
inline const lumoDoubleComplex* argument(const lumo::Complex<double>* p) {
    return reinterpret_cast<const lumoDoubleComplex*>(p);
}
inline double realPart(double x) {
    return x;
}
inline float realPart(float x) {
    return x;
}
template <class R>
R realPart(lumo::Complex<R> z) {
    return z.re;
}

// By interface.
#define LUMO_EXPORT(type, name) \
    static constexpr decltype(&lumo##type##name) name[] = {lumo##type##name, lumoDevice##type##name}
#define LUMO_EXPORTS(type)    \
    LUMO_EXPORT(type, gemm);  \
    LUMO_EXPORT(type, gemv);  \
    LUMO_EXPORT(type, symm);  \
    LUMO_EXPORT(type, syrk);  \
    LUMO_EXPORT(type, syr2k); \
    LUMO_EXPORT(type, trmm);  \
    LUMO_EXPORT(type, trsm)
#define LUMO_HERMITIAN_EXPORTS(type) \
    LUMO_EXPORT(type, hemm);         \
    LUMO_EXPORT(type, herk);         \
    LUMO_EXPORT(type, her2k)

template <class T>
struct Exports;
template <>
struct Exports<float> {
    LUMO_EXPORTS(S);
};
template <>
struct Exports<double> {
    LUMO_EXPORTS(D);
};
template <>
struct Exports<lumo::Complex<float>> {
    LUMO_EXPORTS(C);
    LUMO_HERMITIAN_EXPORTS(C);
};
template <>
struct Exports<lumo::Complex<double>> {
    LUMO_EXPORTS(Z);
    LUMO_HERMITIAN_EXPORTS(Z);
};

// Calls of the five parameter lists.
template <class T, auto& exports>
lumoStatus callGemm(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.letters[1], p.m, p.n, p.k, argument(p.alpha),
                          argument(p.a), p.lda, argument(p.b), p.ldb, argument(p.beta),
                          argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callGemv(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.m, p.n, argument(p.alpha), argument(p.a), p.lda,
                          argument(p.b), p.ldb, argument(p.beta), argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callSymm(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.letters[1], p.m, p.n, argument(p.alpha), argument(p.a),
                          p.lda, argument(p.b), p.ldb, argument(p.beta), argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callSyrk(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.letters[1], p.n, p.k, argument(p.alpha), argument(p.a),
                          p.lda, argument(p.beta), argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callHerk(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.letters[1], p.n, p.k, realPart(p.alpha), argument(p.a),
                          p.lda, realPart(p.beta), argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callSyr2k(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.letters[1], p.n, p.k, argument(p.alpha), argument(p.a),
                          p.lda, argument(p.b), p.ldb, argument(p.beta), argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callHer2k(Interface where, const Arguments<T>& p) {
    return exports[where](p.letters[0], p.letters[1], p.n, p.k, argument(p.alpha), argument(p.a),
                          p.lda, argument(p.b), p.ldb, realPart(p.beta), argument(p.c), p.ldc);
}
template <class T, auto& exports>
lumoStatus callTriangular(Interface where, const Arguments<T>& p) {
    const std::string& l = p.letters;
    return exports[where](l[0], l[1], l[2], l[3], p.m, p.n, argument(p.alpha), argument(p.a), p.lda,
                          argument(p.c), p.ldc);
}

inline Shape transposed(char letter, int m, int n) {
    return letter == 'N' ? Shape{m, n} : Shape{n, m};
}
inline Shapes gemmShapes(const std::string& l, int m, int n, int k) {
    return {transposed(l[0], m, k), transposed(l[1], k, n), {m, n}};
}
inline Shapes gemvShapes(const std::string& l, int m, int n, int) {
    return {{m, n}, {1, l[0] == 'N' ? n : m}, {1, l[0] == 'N' ? m : n}};
}
inline Shapes symmShapes(const std::string& l, int m, int n, int) {
    const int order = l[0] == 'L' ? m : n;
    return {{order, order}, {m, n}, {m, n}};
}
inline Shapes rankShapes(const std::string& l, int, int n, int k) {
    return {transposed(l[1], n, k), transposed(l[1], n, k), {n, n}};
}

template <class T>
ProductSum gemmSum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix& b,
                   const WideMatrix& c) {
    return ProductSum(wide(p.beta), c).add(wide(p.alpha), op(p.letters[0], a), op(p.letters[1], b));
}
// Vectors are rows, in the order in which they are counted. Without a matrix the BLAS leaves y as
// it is, whatever beta.
template <class T>
ProductSum gemvSum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix& x,
                   const WideMatrix& y) {
    if (p.m == 0 || p.n == 0) return ProductSum(1, y);
    return ProductSum(wide(p.beta), y).add(wide(p.alpha), x, op('T', op(p.letters[0], a)));
}
template <class T>
ProductSum sided(char side, Wide alpha, const WideMatrix& a, const WideMatrix& b, ProductSum sum) {
    return side == 'L' ? sum.add(alpha, a, b) : sum.add(alpha, b, a);
}
template <class T>
ProductSum symmSum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix& b,
                   const WideMatrix& c) {
    return sided<T>(p.letters[0], wide(p.alpha), hermitian(p.letters[1], a), b,
                    ProductSum(wide(p.beta), c));
}
template <class T, char transpose>
ProductSum rankSum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix&,
                   const WideMatrix& c) {
    const WideMatrix x = op(p.letters[1], a);
    const bool real = transpose == 'C';
    return ProductSum(real ? Wide(realPart(p.beta)) : wide(p.beta), c)
        .add(real ? Wide(realPart(p.alpha)) : wide(p.alpha), x, op(transpose, x));
}
template <class T>
ProductSum rank2Sum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix& b,
                    const WideMatrix& c) {
    const char letter = p.letters[1] == 'N' ? 'N' : 'C';
    const WideMatrix x = op(letter, a), y = op(letter, b);
    return ProductSum(realPart(p.beta), c)
        .add(wide(p.alpha), x, op('C', y))
        .add(std::conj(wide(p.alpha)), y, op('C', x));
}
template <class T>
ProductSum triangularSum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix&,
                         const WideMatrix& b) {
    const std::string& l = p.letters;
    return sided<T>(l[0], wide(p.alpha), op(l[2], triangular(l[1], l[3], a)), b, ProductSum(0, b));
}

// All that a type has. trsm is judged by the product of op(A) with its result.
template <class T>
std::vector<Operation<T>> operations() {
    using E = Exports<T>;
    const std::vector<std::string> letters{"LR", "UL", "NTC", "UN"};
    constexpr bool complex = lumo::isComplex<T>;
    std::vector<Operation<T>> all{
        {"gemm",
         {"NTC", "NTC"},
         callGemm<T, E::gemm>,
         gemmShapes,
         gemmSum<T>,
         -1,
         -1,
         -1,
         false,
         false},
        {"gemv", {"NTC"}, callGemv<T, E::gemv>, gemvShapes, gemvSum<T>, -1, -1, -1, false, false},
        {"symm",
         {"LR", "UL"},
         callSymm<T, E::symm>,
         symmShapes,
         symmSum<T>,
         1,
         -1,
         -1,
         complex,
         true},
        {"syrk",
         {"UL", "NT"},
         callSyrk<T, E::syrk>,
         rankShapes,
         rankSum<T, 'T'>,
         -1,
         -1,
         0,
         false,
         true},
        {"syr2k",
         {"UL", "NT"},
         callSyr2k<T, E::syr2k>,
         rankShapes,
         rank2Sum<T>,
         -1,
         -1,
         0,
         complex,
         true},
        {"trmm", letters, callTriangular<T, E::trmm>, symmShapes, triangularSum<T>, 1, 3, -1, false,
         false},
        {"trsm", letters, callTriangular<T, E::trsm>, symmShapes, triangularSum<T>, 1, 3, -1, false,
         false}};
    if constexpr (complex)
        all.insert(all.end(), {{"hemm",
                                {"LR", "UL"},
                                callSymm<T, E::hemm>,
                                symmShapes,
                                symmSum<T>,
                                1,
                                -1,
                                -1,
                                true,
                                true},
                               {"herk",
                                {"UL", "NC"},
                                callHerk<T, E::herk>,
                                rankShapes,
                                rankSum<T, 'C'>,
                                -1,
                                -1,
                                0,
                                true,
                                true},
                               {"her2k",
                                {"UL", "NC"},
                                callHer2k<T, E::her2k>,
                                rankShapes,
                                rank2Sum<T>,
                                -1,
                                -1,
                                0,
                                true,
                                true}});
    return all;
}

template <class T>
Operation<T> operation(const std::string& name) {
    for (const Operation<T>& o : operations<T>())
        if (o.name == name) return o;
    throw std::invalid_argument(name);
}

}  // namespace test
