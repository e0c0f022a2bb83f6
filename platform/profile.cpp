// Where a program's time goes, seen from the seam: every entry of the table is wrapped by one that
// measures. On a GPU, kernels and CUBLAS return at once and their time shows as waiting, unless
// the CPU had work of its own meanwhile, which is what a hybrid algorithm wants.
#include "platform/profile.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace platform {
namespace {

enum Kind { memory, copies, waiting, kernels, cublas, panels, kinds, unmeasured };
constexpr const char* names[kinds] = {"allocation", "copies", "waiting",
                                      "kernels",    "CUBLAS", "CPU panels"};

using Clock = std::chrono::steady_clock;

struct Account {
    std::atomic<long> calls{0};
    std::atomic<long> nanoseconds{0};
};

Account accounts[kinds];
const Table* measured;
Clock::time_point started;

class Measure {
  public:
    explicit Measure(Kind kind) : account_(accounts[kind]), start_(Clock::now()) {}
    ~Measure() {
        ++account_.calls;
        account_.nanoseconds +=
            std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start_).count();
    }

  private:
    Account& account_;
    Clock::time_point start_;
};

template <auto entry, Kind kind, class = decltype(entry)>
struct Measured;
template <auto entry, Kind kind, class Part, class Result, class... Arguments>
struct Measured<entry, kind, Result (*Part::*)(Arguments...)> {
    static Result call(Arguments... arguments) {
        Measure measure(kind);
        return (measured->*entry)(arguments...);
    }
};

template <Kind kind, auto entry>
void measure(Table& table) {
    if constexpr (kind != unmeasured) table.*entry = Measured<entry, kind>::call;
}

void report() {
    const double total = std::chrono::duration<double>(Clock::now() - started).count();
    double inside = 0;
    std::fprintf(stderr, "lumo: %.3f s since the first CUDA call\n", total);
    for (int kind = 0; kind < kinds; ++kind) {
        const double seconds = 1e-9 * double(accounts[kind].nanoseconds);
        inside += seconds;
        std::fprintf(stderr, "  %-12s %9.3f s %6.1f %%  %8ld calls\n", names[kind], seconds,
                     100 * seconds / total, accounts[kind].calls.load());
    }
    std::fprintf(stderr, "  %-12s %9.3f s %6.1f %%  (the program itself)\n", "elsewhere",
                 total - inside, 100 * (total - inside) / total);
}

}  // namespace

const Table& profiled(const Table& table) {
    static Table wrapped;
    measured = &table;
    wrapped = table;
#define ENTRY(kind, result, name, parameters) measure<kind, &Table::name>(wrapped);
#define OPTIONAL_ENTRY(...) ENTRY(__VA_ARGS__)
#include "platform/entries.inc"
    eachBlas(wrapped, [](auto& blas) {
        using Entries = std::decay_t<decltype(blas)>;
#define BLAS_ENTRY(name, S, D, C, Z, parameters) measure<cublas, &Entries::name>(wrapped);
#include "platform/entries.inc"
    });
    started = Clock::now();
    std::atexit(report);
    return wrapped;
}

}  // namespace platform
