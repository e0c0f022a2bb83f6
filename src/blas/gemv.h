// Matrix-vector products.
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

// y := alpha op(A) x + beta y. Null pointers are refused even where m or n is 0, unlike everywhere
// else.
template <class T>
struct Gemv {
    using Element = T;
    static constexpr Family family = Family::blas;
    char trans;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    const T* x;
    int incx;
    T beta;
    T* y;
    int incy;

    template <class F>
    auto arguments(F f) const {
        return f(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
    }
    int badArgument() {
        trans = upper(trans);
        if (!isOneOf(trans, "NTC")) return 1;
        if (m < 0) return 2;
        if (n < 0) return 3;
        if (!a) return 5;
        if (lda < std::max(1, m)) return 6;
        return !x ? 7 : !y ? 10 : 0;
    }
    bool empty() const { return false; }
    // CUBLAS refuses increments of zero before it looks at any operand.
    template <class F>
    auto operands(F f) {
        const bool refused = incx == 0 || incy == 0;
        const Access read = refused ? Access::none : Access::in,
                     written = refused ? Access::none : resultOf(beta);
        return f(matrix(a, lda, m, n, read), vector(x, incx, trans == 'N' ? n : m, read),
                 vector(y, incy, trans == 'N' ? m : n, written));
    }
    void run() const;
};

}  // namespace lumo
