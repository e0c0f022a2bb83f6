#include "basic/ScaleRows/ScaleRows.h"

#include "cudalib/launch.h"

template <class Map, class T>
void ScaleRows_k(int m, int n, const lumo::RealOf<T>* factors, T* a, int lda);

namespace lumo {

template <class T>
void scaleRows(int m, int n, const RealOf<T>* factors, T* a, int lda) {
    using cudalib::Map2D;
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        return cudalib::launch(Map2D(slab.rows, slab.columns), &ScaleRows_k<Map2D, T>, slab.rows,
                               slab.columns, factors + slab.i, slab.of(a, std::size_t(lda)), lda);
    });
}

LUMO_INSTANTIATE(scaleRows)

}  // namespace lumo
