// An exported symbol: the CPU library's function of that name, and what became of its calls.
#pragma once

#include <atomic>
#include <chrono>
#include <initializer_list>
#include <string>
#include <vector>

#include "dropin/report.h"

namespace lumo::dropin {

template <class Integer>
class StandIns;

class Symbol {
  public:
    // `routine` as "sgemm", the parts of its name as "cblas_" and "sgemm". Symbols are never
    // destroyed: programs call BLAS until their very end.
    Symbol(const char* routine, std::initializer_list<const char*> name);
    Symbol(const Symbol&) = delete;
    Symbol& operator=(const Symbol&) = delete;

    // The function that this caller would have reached without this library, null if there is none.
    void* cpu(const void* caller);
    const std::string& name() const { return name_; }

    // Those that have been called, by name.
    static std::vector<const Symbol*> called();

    // Whether Lumo is to serve calls of this size.
    bool reached(double size);

    struct Count {
        std::atomic<long> calls{0};
        std::atomic<long long> nanoseconds{0};
    };
    Count served, passedOn;

  private:
    // What an object reaches; both stay loaded.
    struct Reached {
        const void* object;
        void* function;
        Reached* next;
    };

    std::string routine_, name_;
    void* const next_;  // what everybody reaches, if there is such a function
    std::atomic<Reached*> reached_{nullptr};
    std::atomic<double> crossover_{-1};  // negative: not asked yet
    Symbol* nextCalled_ = nullptr;
};

// A call of a symbol, from its entry to its return: counted as passed on unless it was served.
class Passage {
  public:
    // `caller` is where the call returns to.
    Passage(Symbol& symbol, const void* caller) : symbol_(symbol), caller_(caller) {
        if (reporting()) start_ = Clock::now();
    }
    ~Passage();
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

    // Lets Lumo do the call if it may and can; if not, the operands are as they were, and the call
    // is the CPU library's. In serve.h.
    template <class Entry, class Integer = int>
    bool serve(typename Entry::Routine routine, StandIns<Integer> standIns = StandIns<Integer>());

    // The CPU library's function; null if there is none.
    template <class Function>
    Function* cpuIfAny() const {
        return reinterpret_cast<Function*>(symbol_.cpu(caller_));
    }
    // The same for those that cannot tell their caller: ends the program if there is none.
    template <class Function>
    Function* cpu() const {
        if (auto* function = cpuIfAny<Function>()) return function;
        endWithoutCpu();
    }
    void complainOfNoCpu() const;

  private:
    [[noreturn]] void endWithoutCpu() const;

    using Clock = std::chrono::steady_clock;
    Symbol& symbol_;
    const void* const caller_;
    Clock::time_point start_{};
    bool served_ = false;
};

}  // namespace lumo::dropin
