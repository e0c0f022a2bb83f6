// One harness for every routine, BLAS and LAPACK. A routine registers its good cases, its argument
// errors in their order, its failing data and the cases for the fault sweep; the harness runs them
// all on several machines, under both strict schedules.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "exports.h"
#include "support/arguments.h"
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

struct ArgumentCase {
    std::string name;
    std::function<lumoStatus()> call;
    int info;  // 0: the call succeeds
};

// Of exports with these checks, and with others that do not come by their order.
template <std::size_t interfaces, class... A>
std::vector<ArgumentCase> argumentCases(lumoStatus (*const (&exports)[interfaces])(A...),
                                        const std::vector<int>& order, const ArgumentsOf<A...>& bad,
                                        const ArgumentsOf<A...>& good, const Checks<A...>& others) {
    auto checks = checksInOrder(order, bad, good);
    checks.insert(checks.end(), others.begin(), others.end());
    std::vector<ArgumentCase> cases;
    for (std::size_t where = 0; where < interfaces; ++where)
        for (const auto& check : checks)
            cases.push_back({"case " + std::to_string(cases.size()) + nameOf(Interface(where)),
                             [=, f = exports[where]] { return std::apply(f, check.second); },
                             check.first});
    return cases;
}

// Data that the routine must refuse: status 8 with this info, and what holds then.
struct FailingCase {
    std::string name;
    std::function<void()> run;
};

struct Routine {
    std::string name;
    std::vector<GoodCase> good;
    std::vector<ArgumentCase> arguments;
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
