// What a test, or a curious user, can ask of the software device beyond the CUDA interface:
// describe another machine, make calls fail, read the trace and the accounts.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace software {

struct DeviceDescription {
    std::string name = "Lumo software device";
    int major = 2;
    int minor = 0;
    std::size_t memory = std::size_t(1) << 30;  // bytes
    int multiprocessors = 1;
    int clockRate = 1000000;  // kilohertz
    bool deviceOverlap = true;
    std::array<int, 3> maxGrid{65535, 65535, 65535};
};

struct Machine {
    std::vector<DeviceDescription> devices;
    int runtimeVersion = 3020;
    int driverVersion = 3020;
    // The device is the machine that does the work: in production it may work on host memory, and
    // has block sizes of its own. Otherwise it plays a GPU.
    bool asFound = false;
};

// This machine as it is found: one device of capability 2.0 with half of its memory.
Machine defaultMachine();

// When operations run, and whether device memory is a place apart.
//
// `production`: at once, in ordinary memory. The two strict schedules keep device memory where
// host code cannot reach it, check every copy, poison memory and guard its ends; `earliest` runs
// each operation as it is issued, `latest` only when something waits for it. Both are legal
// executions of the same program, so a result that differs between them is a missing wait.
enum class Schedule { production, earliest, latest };

// Starts a machine afresh: no memory, no streams, no errors, no faults, no trace, no context.
void start(const Machine& machine, Schedule schedule);
Schedule schedule();

// Makes the nth call from now (counting from 1) of the function `name` fail, or of any function
// if `name` is empty; functions that only read an error word count only by name. The call
// returns `cudaError`, a CUBLAS call sets `cublasError`. Functions that release or wait do their
// work nevertheless, as the runtime's do when they report an earlier failure.
struct Fault {
    int nth = 1;
    std::string name;
    int cudaError = 30;
    int cublasError = 14;
};
void inject(const Fault& fault);
// Removes the fault. Returns the name of the call that it made fail, empty if none came so far.
std::string removeFault();

struct Call {
    std::string name;                    // cudaMemcpy2D, cublasSgemm, cudaLaunch, ...
    std::vector<std::string> arguments;  // for cudaLaunch: the kernel, grid and block
};
void startTrace();
std::vector<Call> stopTrace();

struct Usage {
    std::size_t deviceBytes;      // allocated at present, all devices
    std::size_t devicePeak;       // the most since the start or the last resetPeak()
    std::size_t pageLockedBytes;  // page-locked host memory, likewise
    std::size_t pageLockedPeak;
    int streams;  // and events, created and not destroyed
    // Writes just outside a block, and accesses where no memory is, seen in strict mode.
    int violations;
};
Usage usage();
void resetPeak();

// Where the bytes behind a device pointer lie, for a test to look at; null if nowhere.
void* bytesBehind(const void* devicePointer);

// Threads that kernels run on: LUMO_SOFTWARE_THREADS, else one for each processor.
int threads();

}  // namespace software
