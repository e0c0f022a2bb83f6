// One harness for every routine, BLAS and LAPACK. A routine registers its good cases, its
// failing data and the cases for the fault sweep; the harness runs them all on several machines,
// under both strict schedules. Bad arguments are another test's (arguments_test.cpp).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "exports.h"
#include "support/machine.h"

namespace test {

// One call of an export, with data of its own.
class Call {
  public:
    virtual ~Call() = default;
    virtual lumoStatus run() = 0;
    // Expects a right result in the caller's memory.
    virtual void checkResult() = 0;
    // Whether the caller's memory is as it was before the call.
    virtual bool untouched() = 0;
};

using MakeCall = std::function<std::unique_ptr<Call>()>;

struct GoodCase {
    std::string name;
    MakeCall make;
};

// Data that the routine must refuse: status 8 with this info, and what holds then.
struct FailingCase {
    std::string name;
    std::function<void()> run;
};

struct Routine {
    std::string name;
    std::vector<GoodCase> good;
    std::vector<FailingCase> failing;
    std::vector<GoodCase> sweep;  // small: some 300 CUDA calls at most
    bool doublePrecision;         // refused on devices without it
    // Makes blocked paths reachable by small matrices while it lives.
    std::function<std::shared_ptr<void>()> shrinkBlocks;
    // Goes through phases that allocate, so that memory may run out when operands have been
    // overwritten, or be found by giving back what an earlier phase used.
    bool phases = false;
};

// Adds a routine; returns something to initialise a variable with.
bool registerRoutine(Routine routine);

}  // namespace test
