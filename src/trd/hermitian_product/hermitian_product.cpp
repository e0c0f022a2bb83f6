#include "trd/hermitian_product/hermitian_product.h"

#include "cudalib/launch.h"
#include "trd/hermitian_product/shape.h"

template <class T>
void HermitianProduct_k(int n, int count, const T* a, int lda, const T* x, T* parts, int ldparts);
template <class T>
void HermitianSum_k(int n, int count, const T* parts, int ldparts, T* y);

namespace lumo {
namespace {

struct PartsMap {
    int parts;
    dim3 blockShape() const { return {hermitianProductLanes, 1, 1}; }
    dim3 gridShape() const { return {unsigned(parts), 1, 1}; }
};

}  // namespace

// A GPU wants some parts for each multiprocessor; on a CPU, each is a thread's work, and a cost.
int hermitianProductParts(int n) {
    if (platform::sharesMemory()) return n < 512 ? 1 : 4;
    return n < 64 ? 1 : n < 2048 ? n / 32 : 64;
}

template <class T>
void hermitianProduct(int n, const T* a, int lda, const T* x, T* y, T* parts) {
    const int count = hermitianProductParts(n);
    T* const result = count == 1 ? y : parts;
    cudalib::launch(PartsMap{count}, &HermitianProduct_k<T>, n, count, a, lda, x, result, n);
    if (count > 1)
        cudalib::launch(cudalib::StaticMap1D<128>(n), &HermitianSum_k<T>, n, count, parts, n, y);
}

LUMO_INSTANTIATE(hermitianProduct)

}  // namespace lumo
