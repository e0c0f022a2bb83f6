#include "basic/Precision/Precision.h"

#include "cudalib/launch.h"

template <class Map, class From, class To>
void PrecisionConvertTriangular_k(int m, int n, const From* src, int ldsrc, To* dst, int lddst,
                                  int left);
template <class From, class To>
void PrecisionConvert_k(int m, int n, const From* src, int ldsrc, To* dst, int lddst);

namespace lumo {

template <class From, class To>
void precisionConvert(int m, int n, const From* src, int ldsrc, To* dst, int lddst) {
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns),
                               &PrecisionConvert_k<From, To>, slab.rows, slab.columns,
                               slab.of(src, ldsrc), ldsrc, slab.of(dst, lddst), lddst);
    });
}

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

#define LUMO_INSTANTIATE_CONVERSION(...)                          \
    LUMO_INSTANTIATE_ONE(precisionConvertTriangular<__VA_ARGS__>) \
    LUMO_INSTANTIATE_ONE(precisionConvert<__VA_ARGS__>)
LUMO_INSTANTIATE_CONVERSION(float, double)
LUMO_INSTANTIATE_CONVERSION(double, float)
LUMO_INSTANTIATE_CONVERSION(Complex<float>, Complex<double>)
LUMO_INSTANTIATE_CONVERSION(Complex<double>, Complex<float>)

}  // namespace lumo
