#include "basic/MakeReal/MakeReal.h"

#include "cudalib/launch.h"

template <class T>
void MakeRealSingle_k(T* p);

namespace lumo {

template <class R>
void makeReal(Complex<R>* p) {
    cudalib::launch(cudalib::OneThread(), &MakeRealSingle_k<Complex<R>>, p);
}

template void makeReal(Complex<float>*);
template void makeReal(Complex<double>*);

}  // namespace lumo
