#include "platform/software/instruments.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/software/control.h"

namespace software {
namespace {

thread_local int lastError = 0;
thread_local int cublasError = 0;

struct Instruments {
    std::mutex mutex;
    bool tracing = false;
    std::vector<Call> trace;
    bool faultSet = false;
    Fault fault;
    std::string hit;
    std::FILE* log = nullptr;  // LUMO_TRACE

    Instruments() {
        const char* path = secure_getenv("LUMO_TRACE");
        if (!path || !*path) return;
        log = std::strcmp(path, "-") == 0 ? stderr : create(path);
        if (log)
            std::setvbuf(log, nullptr, _IOLBF, BUFSIZ);
        else
            std::fprintf(stderr, "lumo: cannot write the trace to %s: %s\n", path,
                         std::strerror(errno));
    }

    // Follows no link: in a folder that others write to, one may lie in wait.
    static std::FILE* create(const char* path) {
        constexpr int mode = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
        const int file = open(path, mode, 0666);
        return file < 0 ? nullptr : fdopen(file, "w");
    }

    void update() { instrumented = tracing || faultSet || log; }
};

// Never destroyed: handlers at exit still make CUDA calls.
Instruments& instruments() {
    static auto* instance = new Instruments;
    return *instance;
}

}  // namespace

// True until the first call has read LUMO_TRACE.
std::atomic<bool> instrumented{true};

void record(const char* name, std::vector<std::string> arguments) {
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    all.update();
    if (all.log) {
        std::string line = name;
        for (std::size_t i = 0; i < arguments.size(); ++i) line += (i ? ", " : "(") + arguments[i];
        std::fprintf(all.log, "%s%s\n", line.c_str(), arguments.empty() ? "()" : ")");
    }
    if (all.tracing) all.trace.push_back({name, std::move(arguments)});
}

Injected injected(const char* name) {
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    if (!all.faultSet || !all.hit.empty()) return {};
    if (!all.fault.name.empty() && all.fault.name != name) return {};
    if (all.fault.name.empty() && std::strstr(name, "GetLastError")) return {};
    if (all.fault.name.empty() && std::strcmp(name, "cublasGetError") == 0) return {};
    if (--all.fault.nth > 0) return {};
    all.hit = name;
    return {true, all.fault.cudaError, all.fault.cublasError};
}

void setLastError(int error) {
    lastError = error;
}

int takeLastError() {
    const int error = lastError;
    lastError = 0;
    return error;
}

void setCublasError(int status) {
    if (cublasError == 0) cublasError = status;
}

int takeCublasError() {
    const int status = cublasError;
    cublasError = 0;
    return status;
}

void resetInstruments() {
    lastError = cublasError = 0;
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    all.tracing = all.faultSet = false;
    all.trace.clear();
    all.update();
}

void inject(const Fault& fault) {
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    all.fault = fault;
    all.hit.clear();
    all.faultSet = true;
    all.update();
}

std::string removeFault() {
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    all.faultSet = false;
    all.update();
    return std::move(all.hit);
}

void startTrace() {
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    all.trace.clear();
    all.tracing = true;
    all.update();
}

std::vector<Call> stopTrace() {
    Instruments& all = instruments();
    std::lock_guard<std::mutex> lock(all.mutex);
    all.tracing = false;
    all.update();
    return std::move(all.trace);
}

std::string text(platform::Dim3 d) {
    return "(" + std::to_string(d.x) + "," + std::to_string(d.y) + "," + std::to_string(d.z) + ")";
}

}  // namespace software
