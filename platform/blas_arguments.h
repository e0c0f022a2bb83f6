// The argument checks of legacy CUBLAS, for platforms whose own BLAS would end the process or
// read what is not there.
#pragma once

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "platform/table.h"

namespace platform {

inline bool oneOf(char letter, const char* letters) {
    return letter != '\0' && std::strchr(letters, std::toupper(static_cast<unsigned char>(letter)));
}

// A rows x columns operand.
struct BlasOperand {
    const void* pointer;
    int rows, columns;
    long ld;

    bool empty() const { return rows <= 0 || columns <= 0; }
    bool valid() const { return rows >= 0 && columns >= 0 && ld >= std::max(1, rows); }
};

// The same for op(A), where A is stored as op says.
inline BlasOperand transposable(char trans, const void* a, int rows, int columns, int ld) {
    return oneOf(trans, "N") ? BlasOperand{a, rows, columns, ld}
                             : BlasOperand{a, columns, rows, ld};
}

// A vector is a row: n columns as far apart as its increment says, whichever way it counts.
inline BlasOperand vectorOperand(const void* x, int n, int inc) {
    return {x, 1, n, std::labs(inc)};
}

// The operands of a call, the result last, and whether CUBLAS takes the call.
template <std::size_t n>
struct BlasOperands {
    std::array<BlasOperand, n> each;
    bool valid;
};

template <class... Operand>
BlasOperands<sizeof...(Operand)> operands(bool options, const Operand&... each) {
    return {{each...}, options && (each.valid() && ...)};
}

inline BlasOperands<1> vectorOperands(int n, const void* x, int incx) {
    return operands(true, vectorOperand(x, n, incx));
}
inline BlasOperands<2> vectorOperands(int n, const void* x, int incx, const void* y, int incy) {
    return operands(true, vectorOperand(x, n, incx), vectorOperand(y, n, incy));
}

inline BlasOperands<3> symvOperands(char uplo, int n, const void* a, int lda, const void* x,
                                    int incx, const void* y, int incy) {
    return operands(oneOf(uplo, "UL"), BlasOperand{a, n, n, lda}, vectorOperand(x, n, incx),
                    vectorOperand(y, n, incy));
}

inline BlasOperands<2> trmvOperands(char uplo, char trans, char diag, int n, const void* a, int lda,
                                    const void* x, int incx) {
    return operands(oneOf(uplo, "UL") && oneOf(trans, "NTC") && oneOf(diag, "UN"),
                    BlasOperand{a, n, n, lda}, vectorOperand(x, n, incx));
}

inline BlasOperands<3> gemvOperands(char trans, int m, int n, const void* a, int lda, const void* x,
                                    int incx, const void* y, int incy) {
    const bool plain = oneOf(trans, "N");
    return operands(oneOf(trans, "NTC"), BlasOperand{a, m, n, lda},
                    vectorOperand(x, plain ? n : m, incx), vectorOperand(y, plain ? m : n, incy));
}

inline BlasOperands<3> gemmOperands(char transa, char transb, int m, int n, int k, const void* a,
                                    int lda, const void* b, int ldb, const void* c, int ldc) {
    return operands(oneOf(transa, "NTC") && oneOf(transb, "NTC") && k >= 0,
                    transposable(transa, a, m, k, lda), transposable(transb, b, k, n, ldb),
                    BlasOperand{c, m, n, ldc});
}

inline BlasOperands<3> symmOperands(char side, char uplo, int m, int n, const void* a, int lda,
                                    const void* b, int ldb, const void* c, int ldc) {
    const int order = oneOf(side, "L") ? m : n;
    return operands(oneOf(side, "LR") && oneOf(uplo, "UL"), BlasOperand{a, order, order, lda},
                    BlasOperand{b, m, n, ldb}, BlasOperand{c, m, n, ldc});
}

// `transposes` are the letters that transpose: not every type and product knows both.
inline BlasOperands<2> syrkOperands(char uplo, char trans, const char* transposes, int n, int k,
                                    const void* a, int lda, const void* c, int ldc) {
    return operands(oneOf(uplo, "UL") && (oneOf(trans, "N") || oneOf(trans, transposes)) && k >= 0,
                    transposable(trans, a, n, k, lda), BlasOperand{c, n, n, ldc});
}

inline BlasOperands<3> syr2kOperands(char uplo, char trans, const char* transposes, int n, int k,
                                     const void* a, int lda, const void* b, int ldb, const void* c,
                                     int ldc) {
    return operands(oneOf(uplo, "UL") && (oneOf(trans, "N") || oneOf(trans, transposes)) && k >= 0,
                    transposable(trans, a, n, k, lda), transposable(trans, b, n, k, ldb),
                    BlasOperand{c, n, n, ldc});
}
template <class T>
constexpr const char* symmetricTransposes = isComplex<T> ? "T" : "TC";
template <class T>
constexpr const char* hermitianTransposes = isComplex<T> ? "C" : "TC";

inline BlasOperands<2> triangularOperands(char side, char uplo, char transa, char diag, int m,
                                          int n, const void* a, int lda, const void* b, int ldb) {
    const int order = oneOf(side, "L") ? m : n;
    return operands(
        oneOf(side, "LR") && oneOf(uplo, "UL") && oneOf(transa, "NTC") && oneOf(diag, "UN"),
        BlasOperand{a, order, order, lda}, BlasOperand{b, m, n, ldb});
}

}  // namespace platform
