#include "brd/brd/brd.h"

#include "cudalib/launch.h"

template <class T>
void TakeHead_k(T* head, lumo::RealOf<T>* value);

namespace lumo {

template <class T>
void takeHead(T* head, RealOf<T>* value) {
    cudalib::launch(cudalib::OneThread(), &TakeHead_k<T>, head, value);
}

template void takeHead(float*, float*);
template void takeHead(double*, double*);
template void takeHead(Complex<float>*, float*);
template void takeHead(Complex<double>*, double*);

}  // namespace lumo
