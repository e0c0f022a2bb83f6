// The kernel body of every matrix copy: a part of a matrix, converted where the types differ.
#pragma once

#include "basic/parts.h"
#include "cudalib/launch.h"

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
struct CopyPartBody : cudalib::KernelBody<cudalib::Tile> {
    LUMO_DEVICE static void run(cudalib::Tile tile, int m, int n, const From* a, int lda, To* b,
                                int ldb) {
        tile.columns(n, [&](auto column, int j) {
            const From* from = &cudalib::at(a, lda, 0, j);
            To* to = &cudalib::at(b, ldb, 0, j);
            column.rows(firstRow<part>(j), endRow<part>(j, m),
                        [&](int i) { to[i] = converted<To>(from[i]); });
        });
    }
};

}  // namespace lumo
