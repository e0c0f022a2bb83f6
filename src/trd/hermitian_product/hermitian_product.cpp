#include "trd/hermitian_product/hermitian_product.h"

#include "cudalib/launch.h"
#include "cudalib/packs.h"
#include "trd/hermitian_product/shape.h"
#include "trd/hermitian_tiles/hermitian_tiles.h"

template <class T, int bytes>
void HermitianProduct_k(int n, int count, const T* a, int lda, const T* x, T* parts, int ldparts);
template <class T>
void HermitianSum_k(int n, int count, bool whole, const T* parts, int ldparts, T* y);

namespace lumo {
namespace {

struct PartsMap {
    int parts;
    dim3 blockShape() const { return {hermitianProductLanes, 1, 1}; }
    dim3 gridShape() const { return {unsigned(parts), 1, 1}; }
};

}  // namespace

// On a CPU, each part is a thread's work, and a cost.
template <class T>
int hermitianProductParts(int n) {
    return !platform::sharesMemory() ? hermitianTileCount<T>(n) : n < 512 ? 1 : 4;
}

template <class T>
void hermitianProduct(int n, const T* a, int lda, const T* x, T* y, T* parts) {
    const int count = hermitianProductParts<T>(n);
    const bool tiles = !platform::sharesMemory();
    T* const result = count == 1 ? y : parts;
    if (tiles)
        hermitianTiles(n, a, lda, x, result);
    else
        cudalib::launch(PartsMap{count}, &HermitianProduct_k<T, cudalib::usualPack>, n, count, a,
                        lda, x, result, n);
    if (count > 1)
        cudalib::launch(cudalib::StaticMap1D<128>(n), &HermitianSum_k<T>, n, count, tiles, parts, n,
                        y);
}

LUMO_INSTANTIATE(hermitianProductParts)
LUMO_INSTANTIATE(hermitianProduct)

}  // namespace lumo
