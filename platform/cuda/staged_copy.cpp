#include "platform/cuda/staged_copy.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/cuda/device.h"
#include "platform/cuda/kept_blocks.h"

namespace gpu {
namespace {

// Below `least` bytes starting threads takes longer than the copy. A piece is long enough for the
// bus, and short enough for a cache.
constexpr std::size_t least = std::size_t(8) << 20, piece = std::size_t(1) << 20;
constexpr unsigned threadsAtMost = 4;

enum class Side { device, pageable, other };

Side sideOf(const void* pointer) {
    cudaPointerAttributes attributes{};
    if (cudaPointerGetAttributes(&attributes, pointer) != cudaSuccess) {
        cudaGetLastError();
        return Side::other;
    }
    return attributes.type == cudaMemoryTypeDevice         ? Side::device
           : attributes.type == cudaMemoryTypeUnregistered ? Side::pageable
                                                           : Side::other;
}

// One piece of memory is rows of a byte.
Rows byRows(const Rows& r) {
    const bool flat = r.height == 1 || (r.toPitch == r.width && r.fromPitch == r.width);
    return flat ? Rows{r.to, 1, r.from, 1, 1, r.width * r.height} : r;
}

// A copy that is under way.
class StagedCopy {
  public:
    StagedCopy(const Rows& rows, bool toDevice)
        : rows_(rows), toDevice_(toDevice), each_(std::max<std::size_t>(1, piece / rows.width)) {}

    std::size_t pieces() const { return (rows_.height + each_ - 1) / each_; }
    std::size_t pieceBytes() const { return each_ * rows_.width; }

    // One thread's part: pieces that nobody has begun, by turns through two page-locked buffers.
    void work(char* const buffers[2], cudaStream_t stream) {
        Part open;
        for (int turn = 0;; turn ^= 1) {
            const Part next = take(buffers[turn]);
            if (next.rows && !toDevice_) note(fetch(next, stream));
            // The bus carries one piece while this thread moves the other.
            if (open.rows && !toDevice_) store(open);
            if (next.rows && toDevice_) {
                load(next);
                note(cudaStreamSynchronize(stream));  // the other buffer's
                note(send(next, stream));
            }
            if (!toDevice_) note(cudaStreamSynchronize(stream));
            open = next;
            if (!next.rows || error_ != cudaSuccess) break;
        }
        note(cudaStreamSynchronize(stream));
    }

    cudaError_t error() const { return error_; }

  private:
    struct Part {
        std::size_t first = 0, rows = 0;
        char* buffer = nullptr;
    };

    Part take(char* buffer) {
        const std::size_t first = next_.fetch_add(1) * each_;
        return {first, first < rows_.height ? std::min(each_, rows_.height - first) : 0, buffer};
    }
    char* to(std::size_t row) const { return static_cast<char*>(rows_.to) + row * rows_.toPitch; }
    const char* from(std::size_t row) const {
        return static_cast<const char*>(rows_.from) + row * rows_.fromPitch;
    }
    void load(const Part& p) const {
        move(p.buffer, rows_.width, from(p.first), rows_.fromPitch, p.rows);
    }
    void store(const Part& p) const {
        move(to(p.first), rows_.toPitch, p.buffer, rows_.width, p.rows);
    }
    void move(char* to, std::size_t toPitch, const char* from, std::size_t fromPitch,
              std::size_t rows) const {
        if (toPitch == fromPitch) {
            std::memcpy(to, from, rows * toPitch);
            return;
        }
        for (std::size_t i = 0; i < rows; ++i)
            std::memcpy(to + i * toPitch, from + i * fromPitch, rows_.width);
    }
    cudaError_t send(const Part& p, cudaStream_t stream) const {
        return transfer(to(p.first), rows_.toPitch, p.buffer, rows_.width, p.rows,
                        cudaMemcpyHostToDevice, stream);
    }
    cudaError_t fetch(const Part& p, cudaStream_t stream) const {
        return transfer(p.buffer, rows_.width, from(p.first), rows_.fromPitch, p.rows,
                        cudaMemcpyDeviceToHost, stream);
    }
    cudaError_t transfer(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                         std::size_t rows, cudaMemcpyKind kind, cudaStream_t stream) const {
        return toPitch == fromPitch ? cudaMemcpyAsync(to, from, rows * toPitch, kind, stream)
                                    : cudaMemcpy2DAsync(to, toPitch, from, fromPitch, rows_.width,
                                                        rows, kind, stream);
    }
    // Keeps the first error.
    void note(cudaError_t error) {
        cudaError_t none = cudaSuccess;
        if (error != cudaSuccess) error_.compare_exchange_strong(none, error);
    }

    const Rows rows_;
    const bool toDevice_;
    const std::size_t each_;
    std::atomic<std::size_t> next_{0};
    std::atomic<cudaError_t> error_{cudaSuccess};
};

// What a thread needs, had before any byte is copied.
class Lane {
  public:
    Lane() = default;
    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;
    ~Lane() {
        for (char* buffer : buffers_)
            if (buffer) freeHost(buffer);
        if (stream_) giveCopyStream(stream_);
    }
    bool prepare(std::size_t bytes) {
        void* all[2] = {};
        const bool had = pageLockedBlocks().take(&all[0], bytes) == cudaSuccess &&
                         pageLockedBlocks().take(&all[1], bytes) == cudaSuccess;
        for (int i = 0; i < 2; ++i) buffers_[i] = static_cast<char*>(all[i]);
        if (had && takeCopyStream(stream_) == cudaSuccess) return true;
        cudaGetLastError();
        return false;
    }
    void work(StagedCopy& copy) { copy.work(buffers_, stream_); }

  private:
    char* buffers_[2] = {};
    cudaStream_t stream_ = nullptr;
};

}  // namespace

bool copyStaged(const Rows& given, cudaError_t& error) {
    if (given.height == 0 || given.width * given.height < least) return false;
    const Side to = sideOf(given.to), from = sideOf(given.from);
    const bool toDevice = to == Side::device && from == Side::pageable;
    if (!toDevice && !(from == Side::device && to == Side::pageable)) return false;

    StagedCopy copy(byRows(given), toDevice);
    const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
    std::vector<Lane> lanes(std::min<std::size_t>({threadsAtMost, processors, copy.pieces()}));
    for (Lane& lane : lanes)
        if (!lane.prepare(copy.pieceBytes())) return false;

    error = cudaStreamSynchronize(nullptr);
    if (error != cudaSuccess) return true;
    std::vector<std::thread> helpers;
    helpers.reserve(lanes.size());
    try {
        for (std::size_t i = 1; i < lanes.size(); ++i)
            helpers.emplace_back([&copy, &lane = lanes[i]] {
                OnDevice here;
                lane.work(copy);
            });
    } catch (const std::system_error&) {  // fewer will do
    }
    lanes[0].work(copy);
    for (std::thread& helper : helpers) helper.join();
    error = copy.error();
    return true;
}

}  // namespace gpu
