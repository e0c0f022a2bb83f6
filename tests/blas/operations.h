// The BLAS operations as data: how an export is called, what its operands look like, and how its
// result is judged. One table for the four element types, host and device.
#pragma once

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "exports.h"
#include "residuals.h"
#include "support/matrix.h"

namespace test {

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
    std::string sizes;                 // which of m, n and k there are
    // By upper-cased letters and sizes.
    Shapes (*shapes)(const std::string& letters, int m, int n, int k);
    // The products that make up the result, for what a, b and c were before the call.
    ProductSum (*sum)(const Arguments<T>&, const WideMatrix& a, const WideMatrix& b,
                      const WideMatrix& c);
    // Which letters say what triangle of A and C is stored and whether A has a unit diagonal; -1
    // for none.
    int triangleOfA = -1, diagonalOfA = -1, triangleOfC = -1;
    bool hermitian = false;  // so A, or C if it has a triangle, has a real diagonal
    bool blocked = false;    // large ones go by blocks

    std::function<lumoStatus(Interface, const Arguments<T>&)> call{};
    int operands = 0, scalars = 0;  // 2 without b; 1 without beta

    // The first one of each option.
    std::string firstLetters() const {
        std::string first;
        for (const std::string& option : letters) first += option[0];
        return first;
    }
};

// Arguments in the order that all exports have: letters, sizes, alpha, a, b, beta, c, each matrix
// before its leading dimension. Which there are, their types tell.
template <class T>
class InOrder {
  public:
    InOrder(const Arguments<T>& p, const std::string& sizes)
        : p_(p), letter_(p.letters.begin()), size_(sizes.begin()) {}
    template <class To>
    To next() {
        if constexpr (std::is_same_v<To, char>) {
            return *letter_++;
        } else if constexpr (std::is_same_v<To, int>) {
            if (scaled_) return ld_;
            const char size = *size_++;
            return size == 'm' ? p_.m : size == 'n' ? p_.n : p_.k;
        } else if constexpr (!std::is_pointer_v<To>) {
            return as<To>(std::exchange(scaled_, true) ? p_.beta : p_.alpha);
        } else if constexpr (std::is_const_v<std::remove_pointer_t<To>>) {
            ld_ = read_ ? p_.ldb : p_.lda;
            return as<To>(std::exchange(read_, true) ? p_.b : p_.a);
        } else {
            ld_ = p_.ldc;
            return as<To>(p_.c);
        }
    }

  private:
    const Arguments<T>& p_;
    std::string::const_iterator letter_, size_;
    int ld_ = 0;
    bool scaled_ = false, read_ = false;  // past alpha, past a
};

template <class T, class... A>
Operation<T> withExports(lumoStatus (*const (&exports)[2])(A...), Operation<T> o) {
    o.call = [&exports, sizes = o.sizes](Interface where, const Arguments<T>& p) {
        InOrder<T> arguments(p, sizes);
        return std::apply(exports[where], std::tuple<A...>{arguments.template next<A>()...});
    };
    o.operands = (std::is_pointer_v<A> + ...);
    o.scalars = (!(std::is_pointer_v<A> || std::is_same_v<A, char> || std::is_same_v<A, int>)+...);
    return o;
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
    return ProductSum(real ? wide(p.beta).real() : wide(p.beta), c)
        .add(real ? wide(p.alpha).real() : wide(p.alpha), x, op(transpose, x));
}
template <class T>
ProductSum rank2Sum(const Arguments<T>& p, const WideMatrix& a, const WideMatrix& b,
                    const WideMatrix& c) {
    const char letter = p.letters[1] == 'N' ? 'N' : 'C';
    const WideMatrix x = op(letter, a), y = op(letter, b);
    return ProductSum(wide(p.beta).real(), c)
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
    constexpr bool complex = lumo::isComplex<T>;
    auto sided = [](const char* name, const auto& exports, bool hermitian) {
        return withExports<T>(
            exports,
            {name, {"LR", "UL"}, "mn", symmShapes, symmSum<T>, 1, -1, -1, hermitian, true});
    };
    auto rank = [](const char* name, const char* trans, const auto& exports, auto sum,
                   bool hermitian) {
        return withExports<T>(
            exports, {name, {"UL", trans}, "nk", rankShapes, sum, -1, -1, 0, hermitian, true});
    };
    auto triangular = [](const char* name, const auto& exports) {
        return withExports<T>(
            exports, {name, {"LR", "UL", "NTC", "UN"}, "mn", symmShapes, triangularSum<T>, 1, 3});
    };
    std::vector<Operation<T>> all{
        withExports<T>(E::gemm, {"gemm", {"NTC", "NTC"}, "mnk", gemmShapes, gemmSum<T>}),
        withExports<T>(E::gemv, {"gemv", {"NTC"}, "mn", gemvShapes, gemvSum<T>}),
        sided("symm", E::symm, complex),
        rank("syrk", "NT", E::syrk, rankSum<T, 'T'>, false),
        rank("syr2k", "NT", E::syr2k, rank2Sum<T>, complex),
        triangular("trmm", E::trmm),
        triangular("trsm", E::trsm)};
    if constexpr (complex)
        all.insert(all.end(), {sided("hemm", E::hemm, true),
                               rank("herk", "NC", E::herk, rankSum<T, 'C'>, true),
                               rank("her2k", "NC", E::her2k, rank2Sum<T>, true)});
    return all;
}

template <class T>
Operation<T> operation(const std::string& name) {
    for (const Operation<T>& o : operations<T>())
        if (o.name == name) return o;
    throw std::invalid_argument(name);
}

}  // namespace test
