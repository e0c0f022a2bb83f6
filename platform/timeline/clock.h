// Time: what the host and the device did when, and what each had to wait for.
//
// The host does one thing after the other. The device has three engines, one for kernels and one
// for copies each way, and streams: an operation begins when the host has issued it, when its
// stream is through with what it was given before, and when its engine is free. Of these the last
// is its cause, and the causes make the critical path.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

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

// What a stream has been given so far, or an event stands for: done at `end`, by activity `last`.
struct Reached {
    double end = 0;
    int last = -1;

    void include(const Reached& other) {
        if (other.end > end) *this = other;
    }
};

class Clock {
  public:
    enum Engine { compute, upwards, downwards };

    // All begins anew at time 0.
    void reset();
    double now() const { return host_.end; }

    // The host does something for so long.
    void host(Kind kind, double seconds);
    // The device does, after `ready`; the host goes on. Between kernels there is a gap.
    Reached device(Engine engine, Kind kind, double seconds, Reached ready, double latency,
                   double gap);
    // The host waits, and takes notice so much later.
    void wait(const Reached& reached, double seconds);

    // How long what the host now sees done took of each kind, on the way that decided; how long the
    // device's kernels ran; and for what they did not.
    ByKind criticalPath() const;
    ByKind busy() const { return busy_; }
    ByKind idle() const;

  private:
    struct Activity {
        double start, end;
        Kind kind;
        int cause;
    };
    void follow(Reached from, double until, ByKind& times) const;

    std::vector<Activity> activities_;
    Reached host_;
    std::array<Reached, 3> engines_;
    ByKind busy_{}, idle_{};
};

}  // namespace timeline
