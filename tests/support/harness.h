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

struct Routine {
    std::string name;
    std::vector<GoodCase> good;
    std::function<void()> failing;  // on data that the routine must refuse, if there are such
    std::vector<GoodCase> sweep;    // small: some 300 CUDA calls at most
    bool doublePrecision;           // refused on devices without it
    // Makes blocked paths reachable by small matrices while it lives.
    std::function<std::shared_ptr<void>()> shrinkBlocks;
    // Goes through phases that allocate, so that memory may run out when operands have been
    // overwritten, or be found by giving back what an earlier phase used.
    bool phases = false;
};

void registerRoutine(Routine routine);

// f(element, letter) for each element type. Returns something to initialise a variable with.
template <class F>
bool forElementTypes(F f) {
    f(float(), "S");
    f(double(), "D");
    f(lumo::Complex<float>(), "C");
    f(lumo::Complex<double>(), "Z");
    return true;
}

}  // namespace test
