#include "basic/copy_part.h"

using cudalib::TriangularMap2D;
using lumo::Complex;
using lumo::Part;

// The matrix begins `left` columns to the right of the one whose diagonal it is.
template <class From, class To>
struct ConvertTriangularBody : cudalib::KernelBody<cudalib::Tile> {
    LUMO_DEVICE static void run(cudalib::Tile tile, int m, int n, const From* src, int ldsrc,
                                To* dst, int lddst, int left) {
        tile.columns(n, [&](auto column, int j) {
            const From* from = &cudalib::at(src, ldsrc, 0, j);
            To* to = &cudalib::at(dst, lddst, 0, j);
            column.rows(0, lumo::endRow<Part::upper>(left + j, m),
                        [&](int i) { to[i] = lumo::converted<To>(from[i]); });
        });
    }
};

template <class Map, class From, class To>
LUMO_KERNEL void PrecisionConvertTriangular_k(int m, int n, const From* src, int ldsrc, To* dst,
                                              int lddst, int left) {
    cudalib::kernel<ConvertTriangularBody<From, To>>(
        LUMO_STUB(PrecisionConvertTriangular_k<Map, From, To>), m, n, src, ldsrc, dst, lddst, left);
}

namespace {

template <class From, class To>
std::array<cudalib::Instance, 1> conversion() {
    return {{cudalib::instance<&PrecisionConvertTriangular_k<TriangularMap2D, From, To>,
                               ConvertTriangularBody<From, To>>()}};
}

const cudalib::DeviceUnit unit{cudalib::join(
    conversion<float, double>(), conversion<double, float>(),
    conversion<Complex<float>, Complex<double>>(), conversion<Complex<double>, Complex<float>>())};

}  // namespace
