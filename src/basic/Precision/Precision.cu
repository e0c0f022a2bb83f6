#include <type_traits>

#include "basic/copy_part.h"

using cudalib::TriangularMap2D;
using lumo::Complex;
using lumo::Part;

// The matrix begins `left` columns to the right of the one whose diagonal it is.
template <class Map, class From, class To>
LUMO_KERNEL void PrecisionConvertTriangular_k(int m, int n, const From* src, int ldsrc, To* dst,
                                              int lddst, int left) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            const From* from = &cudalib::at(src, ldsrc, 0, j);
            To* to = &cudalib::at(dst, lddst, 0, j);
            column.rows(0, lumo::endRow<Part::upper>(left + j, m),
                        [&](int i) { to[i] = lumo::converted<To>(from[i]); });
        });
    });
}

template <class From, class To>
LUMO_KERNEL void PrecisionConvert_k(int m, int n, const From* src, int ldsrc, To* dst, int lddst) {
    lumo::copyPart<Part::whole>(m, n, src, ldsrc, dst, lddst);
}

template <class R>
using Other = std::conditional_t<std::is_same_v<R, float>, double, float>;

LUMO_REGISTER(
    lumo::RealTypes,
    cudalib::Kernel<&PrecisionConvertTriangular_k<TriangularMap2D, T, Other<T>>,
                    cudalib::OnTriangle<double>>,
    cudalib::Kernel<&PrecisionConvertTriangular_k<TriangularMap2D, Complex<T>, Complex<Other<T>>>,
                    cudalib::OnTriangle<Complex<double>>>,
    cudalib::Kernel<&PrecisionConvert_k<T, Other<T>>, cudalib::OnMatrix<double>>,
    cudalib::Kernel<&PrecisionConvert_k<Complex<T>, Complex<Other<T>>>,
                    cudalib::OnMatrix<Complex<double>>>)
