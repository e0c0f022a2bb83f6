#include "basic/MakeReal/MakeReal.h"

#include "cudalib/launch.h"

template <class T>
void MakeRealSingle_k(T* p);

namespace lumo {

template <class R>
void makeReal(Complex<R>* p) {
    cudalib::launch(cudalib::OneThread(), &MakeRealSingle_k<Complex<R>>, p);
}

LUMO_INSTANTIATE_REAL(makeReal)

}  // namespace lumo
