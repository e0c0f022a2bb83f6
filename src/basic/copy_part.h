// The text of every matrix copy: a part of a matrix, converted where the types differ.
#pragma once

#include "basic/parts.h"
#include "cudalib/kernel.h"

namespace lumo {

// A number as another type: of another precision, complex with imaginary part 0, or real without
// its imaginary part.
template <class To, class From>
LUMO_DEVICE To converted(From value) {
    using R = RealOf<To>;
    if constexpr (isComplex<From> && isComplex<To>)
        return To(R(value.re), R(value.im));
    else if constexpr (isComplex<From>)
        return R(value.re);
    else
        return To(R(value));
}

template <Part part, class From, class To>
LUMO_DEVICE void copyPart(int m, int n, const From* a, int lda, To* b, int ldb) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            const From* from = &cudalib::at(a, lda, 0, j);
            To* to = &cudalib::at(b, ldb, 0, j);
            column.rows(firstRow<part>(j), endRow<part>(j, m),
                        [&](int i) { to[i] = converted<To>(from[i]); });
        });
    });
}

}  // namespace lumo
