// How exports run a routine that is described as routine/description.h says.
#pragma once

#include <algorithm>
#include <climits>

#include "routine/description.h"
#include "routine/host_bound_matrix.h"
#include "runtime/frame.h"

namespace lumo {

// Whether a routine that ended so has filled its output operands.
inline bool outputComplete(lumoStatus status) {
    return status == lumoNoError || status == lumoDataError;
}

// Raises the CUDA error of a null pointer that an argument check had to let pass, although the
// operand has elements.
inline void requireMemory(const void* operand) {
    if (!operand) throw cudalib::CudaRuntimeException(cudaErrorInvalidValue);
}

template <class Routine>
void checkArguments(Routine& routine) {
    if (const int position = routine.badArgument()) throwArgumentError(-position);
}

template <class Routine>
void runUnlessEmpty(Routine& routine) {
    if (!routine.empty()) routine.run();
}

template <class Routine>
lumoStatus onDevice(Routine routine) {
    return computeFrame<typename Routine::Element>(deviceCall, [&] {
        if constexpr (!deviceChecks<Routine>) return routine.run();
        checkArguments(routine);
        runUnlessEmpty(routine);
    });
}

// --- Copies of host operands -----------------------------------------------------------------

inline TransferMode transferOf(Access access) {
    switch (access) {
        case Access::in:
            return upload;
        case Access::out:
            return download;
        case Access::inOut:
        case Access::scratch:
            return uploadAndDownload;
        case Access::none:
            break;
    }
    return noTransfer;
}

// Of a result that is not all that lies there, the rest has to come back as it was.
inline TransferMode transferOfPart(Access access) {
    return transferOf(access == Access::out ? Access::inOut : access);
}

template <class P, class T = typename MatrixOperand<P>::Element>
HostBoundMatrix<T> copyOf(const MatrixOperand<P>& o) {
    return {{unsigned(o.rows), unsigned(o.columns)},
            const_cast<T*>(o.pointer),
            o.ld ? *o.ld : o.rows,
            o.staysOnHost ? noTransfer
            : o.triangle  ? transferOfPart(o.access)
                          : transferOf(o.access),
            1,
            o.factorized ? pitched : anywhere};
}
// A vector lies in memory from its least address on, whichever way its elements are counted. The
// copy keeps this order and leaves out what lies between. Without a product a result stays as it
// is.
template <class P, class T = typename VectorOperand<P>::Element>
HostBoundMatrix<T, cudalib::CudaAllocator> copyOf(const VectorOperand<P>& o) {
    const int gap = o.increment < 0 ? -std::max(o.increment, -INT_MAX) : o.increment;
    return {{1, unsigned(o.length)}, const_cast<T*>(o.pointer), gap, transferOfPart(o.access)};
}

template <class P, class Copy>
void useCopy(const MatrixOperand<P>& o, const Copy& copy) {
    if (o.access == Access::none || o.staysOnHost) return;
    o.pointer = copy.data();
    if (o.ld) *o.ld = copy.leadingDimension();
}
template <class P, class Copy>
void useCopy(const VectorOperand<P>& o, const Copy& copy) {
    if (o.access == Access::none) return;
    o.pointer = copy.data();
    o.increment = (o.increment < 0 ? -1 : 1) * copy.leadingDimension();
}

// work() with the operands pointed to copies on the device, which are alive while it runs and are
// downloaded whatever the outcome: those that were not uploaded, only if they are whole.
template <class Work>
lumoStatus onCopies(Work work) {
    return work();
}
template <class Work, class Operand, class... Rest>
lumoStatus onCopies(Work work, Operand operand, Rest... rest) {
    auto copy = copyOf(operand);
    useCopy(operand, copy);
    const lumoStatus status = onCopies(work, rest...);
    if (!outputComplete(status) && copy.outputOnly()) copy.cancelDownload();
    return status;
}

// Optional parts of a description: its way on the CPU, and what is to be done to the copies first.
template <class Routine, class = void>
constexpr bool mayBeSmall = false;
template <class Routine>
constexpr bool mayBeSmall<Routine, std::void_t<decltype(&Routine::isSmall)>> = true;
template <class Routine, class = void>
constexpr bool preparesCopies = false;
template <class Routine>
constexpr bool preparesCopies<Routine, std::void_t<decltype(&Routine::prepareCopies)>> = true;

// Runs on copies, or on nothing if there is nothing to do. The copies are still there, to be
// downloaded, so no failure may be thrown past them: it is told by the status.
template <class Routine>
lumoStatus runOnCopies(Routine& routine) {
    using T = typename Routine::Element;
    if constexpr (Routine::family == Family::blas)
        return guarded([&] {
            runUnlessEmpty(routine);
            cudalib::synchronizeAndCheck();
        });
    const lumoStatus status = computeFrame<T>(deviceCall, [&] { runUnlessEmpty(routine); });
    return status == lumoNoError ? guarded(cudalib::synchronizeAndCheck) : status;
}

template <class Routine>
lumoStatus onHost(Routine routine) {
    return computeFrame<typename Routine::Element>(hostCall, [&] {
        checkArguments(routine);
        if (routine.empty()) return runOnCopies(routine);
        if constexpr (mayBeSmall<Routine>)
            if (platform::sharesMemory() && !hooksAreSet() &&
                routine.operands([](auto... o) { return (isAligned(o.pointer) && ...); }) &&
                routine.isSmall())
                return routine.runOnCpu();
        return routine.operands([&](auto... operands) {
            return onCopies(
                [&] {
                    if constexpr (preparesCopies<Routine>) routine.prepareCopies();
                    return runOnCopies(routine);
                },
                operands...);
        });
    });
}

}  // namespace lumo
