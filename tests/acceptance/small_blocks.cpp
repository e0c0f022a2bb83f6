// Shrinks the block sizes of the Lumo that this file is linked into, as it is loaded: LAPACK's test
// programs work on matrices of up to 50 rows, which would never leave the first block. For the same
// reason the software device plays a GPU: this machine as it is found has block sizes of its own,
// and leaves small problems to the CPU library. A library of its own rather than a variable that
// users could set: what is tested is the drop-in as it is shipped, on another liblumo.so.
#include "blas/tuning.h"
#include "lapack/tuning.h"
#include "platform/software/control.h"

namespace {

template <class T>
void shrink() {
    lumo::getrfTuning<T> = {{4, 4}, 20};
    lumo::geqrfTuning<T> = {4, 4};
    lumo::gebrdTuning<T> = {4, 4};
    lumo::potrfTuning<T> = {4, 4};
    lumo::sytrdTuning<T> = {4, 4};
}

software::Machine modernGpu() {
    software::DeviceDescription device;
    device.major = 9;
    return {{device}};
}

[[gnu::constructor]] void shrinkAll() {
    shrink<float>();
    shrink<double>();
    shrink<lumo::Complex<float>>();
    shrink<lumo::Complex<double>>();
    lumo::stedcLeaf = 3;
    lumo::blasTuning.gemmLimit = 384;
    lumo::blasTuning.unblocked = 3;
    lumo::blasTuning.block = 4;
    software::start(modernGpu(), software::Schedule::production);
}

}  // namespace
