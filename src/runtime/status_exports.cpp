// lumoGetLastStatus, lumoGetErrorInfo, lumoGetStatusString, lumoGetErrorInfoString; and the words
// of this thread, lumoGetThreadStatus, lumoGetThreadErrorInfo; and lumoGetVersion.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "lumo_thread.h"
#include "lumo_version.h"
#include "runtime/frame.h"

namespace {

// The mixture of "; see" and ", see" is part of the interface: programs compare these texts.
constexpr const char* statusTexts[] = {
    "No errors",
    "LUMO is not initialized",
    "No hardware is present to run LUMO",
    "CUDA runtime or driver is not supported",
    "Hardware does not have the required compute capability for this problem",
    "Insufficient memory to complete this operation",
    "A required feature is not yet implemented",
    "Argument error; see lumoGetErrorInfo for error code",
    "Data error; see lumoGetErrorInfo for error code",
    "Blas error, see lumoGetErrorInfo for error code",
    "Runtime error, see lumoGetErrorInfo for error code",
};

bool valid(lumoStatus status) {
    return static_cast<unsigned>(status) <= lumoRuntimeError;
}

const char* cublasText(unsigned status) {
    switch (status) {
        // A CUBLAS "success" here means that the failure was the CUDA runtime's.
        case CUBLAS_STATUS_SUCCESS:
            return "call cudaGetErrorInfo() to determine this error with specificity";
        case CUBLAS_STATUS_NOT_INITIALIZED:
            return "not initialized";
        case CUBLAS_STATUS_ALLOC_FAILED:
            return "allocation failure";
        case CUBLAS_STATUS_INVALID_VALUE:
            return "Invalid argument value";
        case CUBLAS_STATUS_ARCH_MISMATCH:
            return "architecture mismatch";
        case CUBLAS_STATUS_MAPPING_ERROR:
            return "mapping error";
        case CUBLAS_STATUS_EXECUTION_FAILED:
            return "execution failed";
        case CUBLAS_STATUS_INTERNAL_ERROR:
            return "internal error";
        default:
            return "unknown";
    }
}

// Where the platform that was asked for cannot run: why, to follow the text that CUDA has for it.
std::string whyUnavailable() {
    const platform::Choice& choice = platform::choice();
    return choice.available ? "" : std::string(": ") + choice.reason;
}

void describe(lumoStatus status, unsigned info, char* buffer, std::size_t size) {
    switch (status) {
        case lumoArgumentError:
            std::snprintf(buffer, size,
                          "Argument %u is invalid (see the LUMO Reference Manual for more "
                          "information)",
                          info);
            break;
        case lumoDataError:
            std::snprintf(buffer, size,
                          "Data error at pos %u (see the LUMO Reference Manual for more "
                          "information)",
                          info);
            break;
        case lumoBlasError:
            std::snprintf(buffer, size, "CUBLAS error: %s", cublasText(info));
            break;
        case lumoRuntimeError:
            std::snprintf(buffer, size, "CUDA Error: %s%s (see Programmer's Guide)",
                          cudaGetErrorString(cudaError_t(info)),
                          info == cudaErrorInsufficientDriver ? whyUnavailable().c_str() : "");
            break;
        case lumoInsufficientRuntime:
            std::snprintf(buffer, size, "%s%s", lumoGetStatusString(status),
                          whyUnavailable().c_str());
            break;
        default:
            std::snprintf(buffer, size, "%s", lumoGetStatusString(status));
    }
    buffer[size - 1] = '\0';
}

}  // namespace

lumoStatus lumoGetLastStatus() {
    return lumo::lastStatus();
}

int lumoGetErrorInfo() {
    return lumo::info();
}

lumoStatus lumoGetThreadStatus() {
    return lumo::threadStatus();
}

int lumoGetThreadErrorInfo() {
    return lumo::threadInfo();
}

int lumoGetVersion() {
    return LUMO_VERSION;
}

const char* lumoGetStatusString(lumoStatus status) {
    return valid(status) ? statusTexts[status] : "Invalid lumoStatus";
}

lumoStatus lumoGetErrorInfoString(lumoStatus status, int info, char* buffer, int bufferSize) {
    return lumo::queryFrame([&] {
        if (!valid(status)) lumo::throwArgumentError(-1);
        if (!buffer) lumo::throwArgumentError(-3);
        if (bufferSize <= 0) lumo::throwArgumentError(-4);
        // Unsigned, since the smallest int has no int for its absolute value.
        const unsigned magnitude = info < 0 ? 0u - unsigned(info) : unsigned(info);
        describe(status, magnitude, buffer, std::size_t(bufferSize));
    });
}
