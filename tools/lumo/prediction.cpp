#include "prediction.h"

#include <cstring>
#include <stdexcept>

#include "lumo_memory.h"
#include "platform/cuda3.h"
#include "session.h"
#include "speed_curve.h"

namespace lumo {
namespace {

std::string inWords(int status) {
    return describe(lumoStatus(status), lumoGetThreadErrorInfo());
}

// The call fails there.
struct FailsThere : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// That the card has too little memory is a prediction; that there are no addresses left is not.
void check(int status) {
    if (timeline::end().outOfAddresses)
        throw std::runtime_error("this machine's address space has no room for the operands");
    if (status) throw FailsThere(inWords(status));
}

void* onDevice(std::size_t bytes) {
    void* memory = nullptr;
    check(lumoDeviceMalloc(&memory, bytes));
    return memory;
}

void* onHost(std::size_t bytes, bool pivots) {
    void* const memory = timeline::operand(bytes, pivots);
    check(lumoNoError);
    return memory;
}

}  // namespace

double Prediction::gpuSeconds() const {
    double all = 0;
    for (const double seconds : account.busy) all += seconds;
    return all;
}

double PredictedRoutine::crossover() const {
    SpeedCurve curve{name, {}, {}, {}};
    for (std::size_t k = 0; k < cpu.size(); ++k) {
        if (!sizes[k].failure.empty()) continue;
        curve.n.push_back(sizes[k].n);
        curve.lumo.push_back(1 / sizes[k].account.seconds);
        curve.cpu.push_back(1 / cpu[k]);
    }
    return curve.n.empty() ? 0 : curve.crossover();
}

PlannedMachine::PlannedMachine(const timeline::Machine& machine) : machine_(machine) {
    timeline::start(machine);
    const platform::Choice* choice = platform::lumo_private_platform(&timeline::table());
    if (std::strcmp(choice->table->name, timeline::table().name) != 0)
        throw std::runtime_error("the library runs on another platform already");
}

PlannedMachine::~PlannedMachine() {
    lumoShutdown();
}

Prediction PlannedMachine::predict(const MeasuredRoutine& routine, Shape shape, bool device) const {
    lumoShutdown();
    timeline::start(machine_);
    const Session session;
    Prediction result{shape.n, {}, {}};
    try {
        const Reserve reserve = [&](std::size_t bytes, bool pivots) {
            return device && !pivots ? onDevice(bytes) : onHost(bytes, pivots);
        };
        const PlannedCall call = (device ? routine.planDevice : routine.planHost)(shape, reserve);
        // The second call finds the memory that the first one left.
        for (int turn = 0; turn < 2; ++turn) {
            timeline::begin();
            const int status = call();
            result.account = timeline::end();
            check(status);
        }
    } catch (const FailsThere& failure) {
        result.failure = failure.what();
    }
    return result;
}

}  // namespace lumo
