#include "platform/timeline/state.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace timeline {

State& state() {
    static auto* instance = new State;
    return *instance;
}

void start(const Machine& machine) {
    auto& s = state();
    s.memory.clear();
    s.machine = machine;
    s.clock.reset();
    s.counts = {};
    s.streams.clear();
    s.events.clear();
    s.blasStream = nullptr;
    s.cudaError = s.cublasError = 0;
    s.cublasReady = false;
    s.random.seed(1);
}

void begin() {
    State& s = state();
    s.clock.reset();
    s.counts = {};
    s.memory.peak = s.memory.used;
    for (auto& stream : s.streams) stream.second = {};
    for (auto& event : s.events) event.second = {};
    s.random.seed(1);
    s.left = threadSeconds();
}

Account end() {
    { const Entry last; }
    const State& s = state();
    const Clock& clock = s.clock;
    const Clock::Use use = clock.use();
    Account account{clock.now(),
                    use.busy,
                    use.idle,
                    clock.criticalPath(),
                    s.counts,
                    s.memory.peak,
                    s.memory.outOfAddresses};
    // The host that is the device computes when it does the device's work.
    if (s.joined())
        for (const Kind kind : {Kind::kernel, Kind::product})
            std::swap(account.busy[int(kind)], account.idle[int(kind)]);
    return account;
}

void* operand(std::size_t bytes, bool touched) {
    return state().memory.reserve(bytes, Place::operand, touched || state().joined());
}

int reported(int error) {
    if (error != cudaSuccess) state().cudaError = error;
    return error;
}

Entry::Entry() {
    State& s = state();
    s.clock.host(Kind::library, (threadSeconds() - s.left) * s.machine.hostScale);
}

Entry::~Entry() {
    state().left = threadSeconds();
}

Reached reachedBy(platform::Stream stream) {
    State& s = state();
    Reached all = s.streams[nullptr];
    if (stream)
        all.include(s.streams[stream]);
    else
        for (const auto& each : s.streams) all.include(each.second);
    return all;
}

Reached submit(platform::Stream stream, Kind kind, Load load) {
    State& s = state();
    if (s.joined()) {
        s.clock.host(kind, load.seconds);
        return {};
    }
    return s.streams[stream] = s.clock.kernel(kind, load, reachedBy(stream),
                                              s.machine.latencyOfCall, s.machine.kernelGap);
}

Reached submitCopy(platform::Stream stream, Clock::Engine engine, Kind kind, double seconds) {
    State& s = state();
    if (s.joined()) {
        s.clock.host(kind, seconds);
        return {};
    }
    return s.streams[stream] =
               s.clock.copy(engine, kind, seconds, reachedBy(stream), s.machine.latencyOfCall);
}

void deliver(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
             std::size_t width, std::size_t height) {
    // As a float 0.7, as a double 5e-4, as two floats a complex number.
    constexpr std::uint32_t plausible = 0x3F3F3F3F;
    for (std::size_t j = 0; j < height; ++j) {
        char* const row = static_cast<char*>(to) + j * toPitch;
        std::memcpy(row, static_cast<const char*>(from) + j * fromPitch, width);
        for (std::size_t i = 0; i + sizeof plausible <= width; i += sizeof plausible) {
            std::uint32_t word;
            std::memcpy(&word, row + i, sizeof word);
            if (word == 0) std::memcpy(row + i, &plausible, sizeof word);
        }
    }
}

double randomNorm(double count) {
    if (count <= 0) return 1;
    return std::sqrt(std::gamma_distribution<double>(count / 2, 2)(state().random));
}

void randomPivots(int m, int n, int* ipiv) {
    for (int i = 0; i < std::min(m, n); ++i)
        ipiv[i] = i + 1 + int(state().random() % std::uint64_t(m - i));
}

}  // namespace timeline
