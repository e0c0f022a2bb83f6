#include "basic/copy_part.h"

using lumo::copyPart;
using lumo::Part;

template <class T>
LUMO_KERNEL void LACPY_G_Kernel(int m, int n, T* a, int lda, T* b, int ldb) {
    copyPart<Part::whole>(m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void LACPY_U_Kernel(int m, int n, T* a, int lda, T* b, int ldb) {
    copyPart<Part::upper>(m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void LACPY_L_Kernel(int m, int n, T* a, int lda, T* b, int ldb) {
    copyPart<Part::lower>(m, n, a, lda, b, ldb);
}

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&LACPY_G_Kernel<T>, cudalib::OnMatrix<T>>,
              cudalib::Kernel<&LACPY_U_Kernel<T>, cudalib::OnTriangle<T>>,
              cudalib::Kernel<&LACPY_L_Kernel<T>, cudalib::OnTriangle<T>>)
