// What the exports with operands in memory share beyond the common frame.
#pragma once

#include <cstddef>

#include "blas/tuning.h"
#include "cudalib/host_bound_matrix.h"
#include "lumo.h"
#include "runtime/frame.h"

namespace lumo {

// A number, or a pointer to numbers, of the C interface as the library's own type.
template <class T>
T element(T real) {
    return real;
}
inline Complex<float> element(lumoFloatComplex z) {
    return {z.re, z.im};
}
inline Complex<double> element(lumoDoubleComplex z) {
    return {z.re, z.im};
}
inline Complex<float>* element(lumoFloatComplex* p) {
    return reinterpret_cast<Complex<float>*>(p);
}
inline Complex<double>* element(lumoDoubleComplex* p) {
    return reinterpret_cast<Complex<double>*>(p);
}
inline const Complex<float>* element(const lumoFloatComplex* p) {
    return reinterpret_cast<const Complex<float>*>(p);
}
inline const Complex<double>* element(const lumoDoubleComplex* p) {
    return reinterpret_cast<const Complex<double>*>(p);
}

inline cudalib::Extent extent(int rows, int columns) {
    return {unsigned(rows), unsigned(columns)};
}

// Whether a device routine that ended so has filled its output operands.
inline bool outputComplete(lumoStatus status) {
    return status == lumoNoError || status == lumoDataError;
}

// An operation is a struct of an export's arguments in their order, with
//     check()      the argument check, the same for host and device, which folds the letters,
//     empty()      whether its result has no elements, so that there is nothing to do,
//     run()        the work on operands in device memory,
//     runOnHost()  the same on copies of operands in host memory.
template <class Operation>
lumoStatus onDevice(Operation operation) {
    return computeFrame<typename Operation::Element>(deviceCall, [&] {
        operation.check();
        if (!operation.empty()) operation.run();
    });
}

template <class Operation>
lumoStatus onHost(Operation operation) {
    return computeFrame<typename Operation::Element>(hostCall, [&] {
        operation.check();
        return operation.empty() ? guarded(cudalib::synchronizeAndCheck) : operation.runOnHost();
    });
}

// The device copy of an operand that is only read.
template <class T>
cudalib::HostBoundMatrix<T> input(cudalib::Extent extent, const T* host, int ld) {
    return {extent, const_cast<T*>(host), ld, cudalib::upload};
}

// Points an operation's operand to its copy on the device.
template <class Pointer, class Copy>
void useCopy(Pointer& operand, int& ld, const Copy& copy) {
    operand = copy.data();
    ld = copy.leadingDimension();
}

// Works on the device copies of host operands and checks how that went, while they are alive to be
// downloaded whatever the outcome. A result that was not uploaded comes back only if it is whole.
template <class Result, class Work>
lumoStatus compute(Result& result, Work work) {
    const lumoStatus status = guarded([&] {
        work();
        cudalib::synchronizeAndCheck();
    });
    if (!outputComplete(status) && result.outputOnly()) result.cancelDownload();
    return status;
}

// Raises the CUDA error of a null pointer that an argument check had to let pass, although the
// operand has elements.
inline void requireMemory(const void* operand) {
    if (!operand) throw cudalib::CudaRuntimeException(cudaErrorInvalidValue);
}

// How C of alpha A B + beta C travels: up as well if it counts. With a beta that is not a number it
// does, for that has to reach the result.
template <class T>
bool nonZero(T beta) {
    return beta < 0 || beta > 0 || beta != beta;
}
template <class T>
bool nonZero(Complex<T> beta) {
    return nonZero(beta.re) || nonZero(beta.im);
}
template <class T>
cudalib::TransferMode resultMode(T beta) {
    return nonZero(beta) ? cudalib::uploadAndDownload : cudalib::download;
}

// Whether an operation on symmetric matrices, or with a symmetric result, goes by blocks.
inline bool large(int size1, int size2) {
    return size1 > blasTuning.unblocked && size2 > blasTuning.unblocked;
}

// Element (i, j) of a column-major matrix; an offset has 64 bits.
template <class T>
T* at(T* a, int lda, int i, int j) {
    return a + std::ptrdiff_t(j) * lda + i;
}

}  // namespace lumo
