// What a test may ask of the emulated GPU. To a program it is libcuda.so.1, which the plugin loads
// for itself: dlsym(dlopen("libcuda.so.1", RTLD_LAZY), "emulatedGpuCount") finds the function, and
// null where there is another driver.
#pragma once

extern "C" {

// How often something was done since the start; take the difference around a call.
//
//   launch, launch NAME              kernels; by mangled name
//   lanes NAME                       of its largest block so far
//   cublas, cublas NAME              calls of CUBLAS on a handle; "cublas Sgemm"
//   copy                             copies with bytes to move, and of these
//   copy synchronous|asynchronous    by the function that was called
//   copy pageable|page-locked|device by the host memory on a side; of device memory alone
//   bytes                            moved by them
//   memset
//   allocate, allocate host          calls that allocate device or page-locked memory
//   free, free host
//   synchronise                      waits for a device, a stream or an event, without copies
//   stream, event, handle            made
long long emulatedGpuCount(const char* name);

// Faults that were found, of a kind (findings.h), of all kinds for null.
long long emulatedGpuFindings(const char* kind);

// Forgets findings, and the error of a kernel that stays otherwise, as a new process would: for a
// test that seeds faults.
void emulatedGpuForgive(void);
}
