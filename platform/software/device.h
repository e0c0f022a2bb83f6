// The state that the parts of the software device share.
#pragma once

#include <cstddef>

#include "platform/cuda3.h"
#include "platform/software/control.h"
#include "platform/software/heap.h"

namespace software {

const Machine& machine();

// Device memory and page-locked host memory.
Heap& deviceHeap();
Heap& pageLockedHeap();

// Reports a program error that a GPU might have let pass.
void noteViolation(const char* what);
void resetAccounts();
// CUBLAS as before its first cublasInit.
void resetBlas();

// Binds the context to the chosen device: from now on the device cannot be changed.
int bindContext();
// The device that this process's calls go to.
int currentDevice();
const platform::DeviceProperties& propertiesOf(int device);

#define ENTRY(kind, result, name, parameters) result name parameters;
#include "platform/entries.inc"

}  // namespace software
