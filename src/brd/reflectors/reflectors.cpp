#include "brd/reflectors/reflectors.h"

#include "brd/reflectors/shape.h"
#include "cudalib/launch.h"

template <class T>
void ColumnReflector_k(int rows, int lead, T* a, T* vector, lumo::RealOf<T>* d, T* tau, int count,
                       const T* p, int ldp, T* pulled);
template <class T>
void RowReflector_k(int columns, const T* r, T* a, int lda, T* vector, lumo::RealOf<T>* e, T* tau);

namespace lumo {

template <class T>
void columnReflector(int rows, int lead, T* a, T* vector, RealOf<T>* d, T* tau, int count,
                     const T* p, int ldp, T* pulled) {
    cudalib::launch(PanelReflectorMap(), &ColumnReflector_k<T>, rows, lead, a, vector, d, tau,
                    count, p, ldp, pulled);
}

template <class T>
void rowReflector(int columns, const T* r, T* a, int lda, T* vector, RealOf<T>* e, T* tau) {
    cudalib::launch(PanelReflectorMap(), &RowReflector_k<T>, columns, r, a, lda, vector, e, tau);
}

LUMO_INSTANTIATE(columnReflector)
LUMO_INSTANTIATE(rowReflector)

}  // namespace lumo
