#include "basic/copy_part.h"

using lumo::Complex;
using lumo::Part;

template <class T, Part part>
using Body = lumo::CopyPartBody<part, T, T>;

template <class T>
LUMO_KERNEL void LACPY_G_Kernel(int m, int n, T* a, int lda, T* b, int ldb) {
    cudalib::kernel<Body<T, Part::whole>>(LUMO_STUB(LACPY_G_Kernel<T>), m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void LACPY_U_Kernel(int m, int n, T* a, int lda, T* b, int ldb) {
    cudalib::kernel<Body<T, Part::upper>>(LUMO_STUB(LACPY_U_Kernel<T>), m, n, a, lda, b, ldb);
}
template <class T>
LUMO_KERNEL void LACPY_L_Kernel(int m, int n, T* a, int lda, T* b, int ldb) {
    cudalib::kernel<Body<T, Part::lower>>(LUMO_STUB(LACPY_L_Kernel<T>), m, n, a, lda, b, ldb);
}

namespace {

template <class T>
std::array<cudalib::Instance, 3> instances() {
    return {cudalib::instance<&LACPY_G_Kernel<T>, Body<T, Part::whole>>(),
            cudalib::instance<&LACPY_U_Kernel<T>, Body<T, Part::upper>>(),
            cudalib::instance<&LACPY_L_Kernel<T>, Body<T, Part::lower>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
