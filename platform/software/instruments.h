// Every call of the software device passes through here: traced, failed on request, and its
// result kept as the thread's last error.
#pragma once

#include <atomic>
#include <sstream>
#include <string>
#include <vector>

#include "platform/table.h"

namespace software {

// Set while a trace or a fault is wanted, so that production calls cost one relaxed load.
extern std::atomic<bool> instrumented;

struct Injected {
    bool hit;
    int cudaError;
    int cublasError;
};

void record(const char* name, std::vector<std::string> arguments);
// Counts the call against the fault, if one is set.
Injected injected(const char* name);

void setLastError(int error);
int takeLastError();
void setCublasError(int status);
int takeCublasError();
void resetInstruments();

std::string text(platform::Dim3 d);
template <class T>
std::string text(const T& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

// Notes a call and tells whether it is to fail.
template <class... Arguments>
Injected observe(const char* name, const Arguments&... arguments) {
    if (!instrumented.load(std::memory_order_relaxed)) return {};
    record(name, {text(arguments)...});
    return injected(name);
}

// What a failing call still does.
enum class OnFault { skip, perform };

// A call of the CUDA runtime.
template <OnFault onFault = OnFault::skip, class Body, class... Arguments>
int call(const char* name, Body&& body, const Arguments&... arguments) {
    const Injected fault = observe(name, arguments...);
    int status = 0;
    if (!fault.hit || onFault == OnFault::perform) status = body();
    if (fault.hit) status = fault.cudaError;
    if (status) setLastError(status);
    return status;
}

}  // namespace software
