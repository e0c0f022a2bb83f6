#include "brd/both_products/both_products.h"

#include <algorithm>

#include "brd/both_products/shape.h"
#include "cudalib/launch.h"
#include "cudalib/packs.h"

template <class T, int bytes>
void BothProducts_k(int rows, int lead, int columns, int count, int perPart, const T* a, int lda,
                    T* w, int ldw, const T* v, const T* t, const T* c, const T* tau, T* r, T* parts,
                    int ldparts);

namespace lumo {
namespace {

struct PartsMap {
    int parts;
    dim3 blockShape() const { return {bothProductsLanes, 1, 1}; }
    dim3 gridShape() const { return {unsigned(parts), 1, 1}; }
};

template <class T>
int groupsOf(int columns) {
    return cudalib::ceilDiv(columns, columnsTogether<T>);
}

}  // namespace

// A GPU wants some parts for each multiprocessor; on a CPU, each is a thread's work, and a cost.
template <class T>
int mostParts(int columns) {
    return std::min(groupsOf<T>(columns), platform::sharesMemory() ? 8 : 256);
}

template <class T>
int bothProducts(int rows, int lead, int columns, int count, const T* a, int lda, T* w, int ldw,
                 const T* v, const T* t, const T* c, const T* tau, T* r, T* parts, int ldparts) {
    const int perPart =
        cudalib::ceilDiv(groupsOf<T>(columns), mostParts<T>(columns)) * columnsTogether<T>;
    const int made = cudalib::ceilDiv(columns, perPart);
    cudalib::launch(PartsMap{made}, &BothProducts_k<T, cudalib::usualPack>, rows, lead, columns,
                    count, perPart, a, lda, w, ldw, v, t, c, tau, r, parts, ldparts);
    return made;
}

LUMO_INSTANTIATE(mostParts)
LUMO_INSTANTIATE(bothProducts)

}  // namespace lumo
