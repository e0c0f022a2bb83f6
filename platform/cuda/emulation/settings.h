// What the environment asks of the emulated GPU. EMULATED_GPU_...
//
//   SCHEDULE=late|early|random       when work in streams is done (default late)
//   ORDER=forward|reverse|random     of blocks, and of lanes between barriers (default forward)
//   SEED=n                           of what is random
//   RACES=0                          races are not looked for
//   OVERFLOW=1                       signed numbers of 32 bits are to fit; PTX has unsigned ones by
//                                    the same instructions, so that those must not wrap around
//                                    either
//   NOISE=1                          CUBLAS's products differ in the last place from call to call
//   MEMORY=MiB                       of the device (default 4096)
//   DEVICES=n  CAPABILITY=90         how many there are, of which capability
//   FAIL=malloc|host|kernel|cublas:k the k-th such call fails, from 1; FAIL_CODE=700 as a kernel
//   does DROP=synchronise                 waiting for a stream does nothing: what needs it must
//   fail COUNTS=FILE                      what was called, appended at exit; - for the standard
//   error
#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace emulated {

enum class Schedule { late, early, random };
enum class Sequence { forward, reverse, random };

struct Settings {
    Schedule schedule;
    Sequence order;
    bool races, overflow, noise, dropSynchronise;
    std::size_t memory;
    int devices, capability, failCode;
    std::string fail, counts;
};

const Settings& settings();
std::mt19937& randomEngine();

// Whether this call of a kind is the one that is to fail.
bool failsNow(const char* kind);

}  // namespace emulated
