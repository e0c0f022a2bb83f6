// Time: what the host and the device did when, and what each had to wait for.
//
// The host does one thing after the other. The device has three engines, one for kernels and one
// for copies each way, and streams: an operation begins when the host has issued it, when its
// stream is through with what it was given before, and when its engine is free. Of these the last
// is its cause, and the causes make the critical path. Kernels that leave processors idle share
// them (processors.h).
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "platform/timeline/processors.h"

namespace timeline {

enum class Kind {
    kernel,    // of the library
    product,   // CUBLAS
    toDevice,  // copies
    toHost,
    panel,    // the CPU LAPACK's part
    library,  // the library's own work on the host
    call,     // the host issues
    allocation,
    latency,  // until the other side takes notice
};
constexpr int kinds = int(Kind::latency) + 1;
const char* nameOf(Kind kind);

using ByKind = std::array<double, kinds>;

class Clock {
  public:
    enum Engine { upwards, downwards };

    // All begins anew at time 0.
    void reset();
    double now() const { return host_.end; }

    // The host does something for so long.
    void host(Kind kind, double seconds);
    // The device does, after `ready`, and so much after the host issues it; the host goes on.
    Reached copy(Engine engine, Kind kind, double seconds, Reached ready, double latency);
    // Between kernels of which one waits for the other there is a gap.
    Reached kernel(Kind kind, Load load, Reached ready, double latency, double gap);
    // The host waits, and takes notice so much later.
    void wait(const Reached& reached, double seconds);

    // How long what the host now sees done took of each kind, on the way that decided.
    ByKind criticalPath() const;
    // How long the device's kernels ran, of two at once the one that began first, and for what none
    // did.
    struct Use {
        ByKind busy{}, idle{};
    };
    Use use() const;

  private:
    struct Activity {
        double start, end;
        Kind kind;
        int cause;
    };
    static bool isKernel(Kind kind) { return kind == Kind::kernel || kind == Kind::product; }
    void follow(Reached from, double until, ByKind& times) const;
    Reached add(double start, double end, Kind kind, int cause);

    std::vector<Activity> activities_;
    Reached host_;
    std::array<Reached, 2> engines_;
    Processors processors_;
};

}  // namespace timeline
