// An exported symbol: the CPU library's function of that name, and what became of its calls.
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

#include "dropin/report.h"

namespace lumo::dropin {

class Symbol {
  public:
    // `routine` as "sgemm", `name` as "cblas_sgemm". Symbols are never destroyed: programs call
    // BLAS until their very end.
    Symbol(std::string routine, std::string name);
    Symbol(const Symbol&) = delete;
    Symbol& operator=(const Symbol&) = delete;

    // The function that the program would have reached without this library; null if there is none.
    template <class Function>
    Function* cpu() const {
        return reinterpret_cast<Function*>(cpu_);
    }
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
    std::string routine_, name_;
    void* cpu_;
    std::atomic<double> crossover_{-1};  // negative: not asked yet
    Symbol* next_ = nullptr;
};

// A call of a symbol, from its entry to its return: counted as passed on unless it was served.
class Passage {
  public:
    explicit Passage(Symbol& symbol) : symbol_(symbol) {
        if (reporting()) start_ = Clock::now();
    }
    ~Passage();
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

    // Lets Lumo do the call if it may and can; if not, the operands are as they were, and the call
    // is the CPU library's. In serve.h.
    template <class Entry>
    bool serve(typename Entry::Routine routine);

  private:
    using Clock = std::chrono::steady_clock;
    Symbol& symbol_;
    Clock::time_point start_{};
    bool served_ = false;
};

}  // namespace lumo::dropin
