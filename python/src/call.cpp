#include "call.h"

#include <new>
#include <stdexcept>
#include <string>

namespace lumo::python {
namespace {

class OutOfMemory : public std::bad_alloc {
  public:
    const char* what() const noexcept override {
        return lumoGetStatusString(lumoInsufficientMemory);
    }
};

class Registration {
  public:
    Registration() {
        try {
            check(lumoInitialize());
        } catch (...) {
            lumoShutdown();
            throw;
        }
    }
    ~Registration() { lumoShutdown(); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
};

}  // namespace

void registerThread() {
    thread_local const Registration registration;
}

void check(lumoStatus status) {
    if (status == lumoNoError) return;
    char text[512];
    if (lumoGetErrorInfoString(status, lumoGetThreadErrorInfo(), text, sizeof text) != lumoNoError)
        text[0] = '\0';
    const std::string message = *text ? text : lumoGetStatusString(status);
    switch (status) {
        case lumoInsufficientMemory:
            throw OutOfMemory();
        case lumoArgumentError:
            throw std::invalid_argument(message);
        default:
            throw std::runtime_error(message);
    }
}

}  // namespace lumo::python
