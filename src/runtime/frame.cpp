#include "runtime/frame.h"

namespace lumo {
namespace {

// The order decides: CudaMemoryException is a std::bad_alloc, and the two other exceptions of
// the device are std::exceptions.
lumoStatus classify() {
    try {
        throw;
    } catch (const cudalib::CudaMemoryException&) {
        return lumoInsufficientMemory;
    } catch (const std::bad_alloc&) {
        return lumoInsufficientMemory;
    } catch (const cudalib::CudaRuntimeException& e) {
        setInfo(e.code());
        return lumoRuntimeError;
    } catch (const cudalib::CublasException& e) {
        setInfo(e.code());
        return lumoBlasError;
    } catch (const InfoException& e) {
        setInfo(e.info());
        return e.status();
    } catch (const FeatNotImplException&) {
        return lumoFeatureNotImplemented;
    } catch (...) {  // std::exception or not, nothing more is known
        setInfo(-1);
        return lumoRuntimeError;
    }
}

}  // namespace

lumoStatus mapCurrentException() noexcept {
    lumoStatus status = classify();
    if (status == lumoDataError) {
        // Data may be bad because the device failed at making them: that is the error to tell.
        try {
            cudalib::synchronizeAndCheck();
        } catch (...) {
            setInfo(0);
            status = classify();
        }
    }
    cublasGetError();
    cudaGetLastError();
    return status;
}

}  // namespace lumo
