#include "trd/hermitian_tiles/hermitian_tiles.h"

#include "cudalib/launch.h"
#include "trd/hermitian_tiles/shape.h"

template <class T>
void HermitianTiles_k(int n, const T* a, int lda, const T* x, T* parts);

namespace lumo {
namespace {

template <class T>
struct TilesMap {
    unsigned tiles;
    dim3 blockShape() const { return {unsigned(hermitianTile<T>), hermitianTileRows, 1}; }
    dim3 gridShape() const { return {tiles, tiles, 1}; }
};

}  // namespace

template <class T>
int hermitianTileCount(int n) {
    return cudalib::ceilDiv(n, hermitianTile<T>);
}

template <class T>
void hermitianTiles(int n, const T* a, int lda, const T* x, T* parts) {
    cudalib::launch(TilesMap<T>{unsigned(hermitianTileCount<T>(n))}, &HermitianTiles_k<T>, n, a,
                    lda, x, parts);
}

LUMO_INSTANTIATE(hermitianTileCount)
LUMO_INSTANTIATE(hermitianTiles)

}  // namespace lumo
