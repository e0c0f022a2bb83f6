#include "basic/Precision/Precision.h"

#include "cudalib/launch.h"

template <class Map, class From, class To>
void PrecisionConvertTriangular_k(int m, int n, const From* src, int ldsrc, To* dst, int lddst,
                                  int left);

namespace lumo {

template <class From, class To>
void precisionConvertTriangular(int m, int n, const From* src, int ldsrc, To* dst, int lddst) {
    using cudalib::TriangularMap2D;
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        if (!slab.part('U')) return cudaSuccess;
        return cudalib::launch(TriangularMap2D(slab.rows, slab.columns),
                               &PrecisionConvertTriangular_k<TriangularMap2D, From, To>, slab.rows,
                               slab.columns, slab.of(src, ldsrc), ldsrc, slab.of(dst, lddst), lddst,
                               int(slab.j));
    });
}

LUMO_INSTANTIATE_ONE(precisionConvertTriangular<float, double>)
LUMO_INSTANTIATE_ONE(precisionConvertTriangular<double, float>)
LUMO_INSTANTIATE_ONE(precisionConvertTriangular<Complex<float>, Complex<double>>)
LUMO_INSTANTIATE_ONE(precisionConvertTriangular<Complex<double>, Complex<float>>)

}  // namespace lumo
