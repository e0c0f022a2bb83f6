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

enum Kind { memory, copies, waiting, kernels, cublas, panels, kinds };
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

template <auto member, Kind kind, class Signature = decltype(measured->*member)>
struct Wrapped;
template <auto member, Kind kind, class Result, class... Arguments>
struct Wrapped<member, kind, Result (*const&)(Arguments...)> {
    static Result call(Arguments... arguments) {
        Measure measure(kind);
        return (measured->*member)(arguments...);
    }
};

template <Kind kind, auto... members>
void wrap(Table& table) {
    ((table.*members = Wrapped<members, kind>::call), ...);
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
    wrap<memory, &Table::malloc, &Table::mallocPitch, &Table::mallocHost, &Table::free,
         &Table::freeHost>(wrapped);
    wrap<copies, &Table::memcpy, &Table::memcpyAsync, &Table::memcpy2D, &Table::memcpy2DAsync,
         &Table::memset>(wrapped);
    wrap<waiting, &Table::streamSynchronize, &Table::threadSynchronize>(wrapped);
    wrap<kernels, &Table::launch>(wrapped);
    wrap<cublas, &Table::gemm, &Table::gemv, &Table::copyVector, &Table::swapVectors, &Table::scal,
         &Table::axpy, &Table::rot, &Table::symv, &Table::trmv, &Table::symm, &Table::syrk,
         &Table::herk, &Table::syr2k, &Table::trmm, &Table::trsm>(wrapped);
    wrap<panels, &Table::luPanel, &Table::luSystem, &Table::qrPanel, &Table::qrTail,
         &Table::bidiagonalTail, &Table::svd>(wrapped);
    started = Clock::now();
    std::atexit(report);
    return wrapped;
}

}  // namespace platform
