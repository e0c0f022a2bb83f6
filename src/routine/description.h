// The words in which a routine is described: once, by an aggregate of its export's arguments in
// their order, with
//     Element, family   the element type; BLAS or LAPACK,
//     arguments(f)      f of all arguments in their order,
//     badArgument()     the position of the first bad argument, or 0; folds the letters,
//     empty()           whether a call with good arguments has nothing to do,
//     operands(f)       f of all operands, in the order in which they travel,
//     run()             the work on operands in device memory,
// and, where they are wanted (routine/frame.h),
//     isSmall(), runOnCpu()   problems that are the CPU library's where the device is the CPU,
//     prepareCopies()         what a host call does to the copies of its operands first.
// The description is a header's. run() is defined in the .cpp file, beside the exports.
#pragma once

#include <type_traits>

#include "common/complex.h"
#include "common/letters.h"

namespace lumo {

// A host function of the LAPACK is a call of the device function on copies, whose hooks run as
// well; one of the BLAS does the work itself.
enum class Family { blas, lapack };

// Whether the device function checks its arguments.
template <class Routine>
constexpr bool deviceChecks = true;

// What a call does with an operand; `none` where it does not look at it. Of `scratch` it reads what
// the caller has there, and leaves that or nothing of use.
enum class Access { none, in, out, inOut, scratch };

// A column-major matrix behind two arguments, which a frame may point to a copy; or adjacent
// elements, without a leading dimension.
template <class Pointer>
struct MatrixOperand {
    using Element = std::remove_const_t<std::remove_pointer_t<Pointer>>;
    Pointer& pointer;
    int* ld;
    int rows, columns;
    Access access;
    bool factorized;           // gone through many times: its columns had better not lie badly
    bool triangle;             // of which the call knows one triangle only
    bool staysOnHost = false;  // where a host caller has it: the work takes it from there
};

// A vector with an increment, which may be negative.
template <class Pointer>
struct VectorOperand {
    using Element = std::remove_const_t<std::remove_pointer_t<Pointer>>;
    Pointer& pointer;
    int& increment;
    int length;
    Access access;
};

template <class Operand>
constexpr bool isVector = false;
template <class P>
constexpr bool isVector<VectorOperand<P>> = true;

template <class P>
MatrixOperand<P> matrix(P& a, int& lda, int rows, int columns, Access access) {
    return {a, &lda, rows, columns, access, false, false};
}
// A rows x columns op(A), which is A itself if `plain`, that is read.
template <class P>
MatrixOperand<P> factor(P& a, int& lda, bool plain, int rows, int columns) {
    return matrix(a, lda, plain ? rows : columns, plain ? columns : rows, Access::in);
}
template <class P>
MatrixOperand<P> factorized(P& a, int& lda, int rows, int columns, Access access = Access::inOut) {
    return {a, &lda, rows, columns, access, true, false};
}
template <class P>
MatrixOperand<P> triangle(P& a, int& lda, int order, Access access) {
    return {a, &lda, order, order, access, false, true};
}
template <class P>
MatrixOperand<P> adjacent(P& x, int length, Access access) {
    return {x, nullptr, length, 1, access, false, false};
}
template <class P>
MatrixOperand<P> staying(P& x, int length, Access access) {
    return {x, nullptr, length, 1, access, false, false, true};
}
template <class P>
VectorOperand<P> vector(P& x, int& incx, int length, Access access) {
    return {x, incx, length, access};
}

// How C of alpha A B + beta C travels: up as well if it counts. With a beta that is not a number it
// does, for that has to reach the result.
template <class T>
bool counts(T beta) {
    return beta < 0 || beta > 0 || beta != beta;
}
template <class T>
bool counts(Complex<T> beta) {
    return counts(beta.re) || counts(beta.im);
}
template <class T>
Access resultOf(T beta) {
    return counts(beta) ? Access::inOut : Access::out;
}

}  // namespace lumo
