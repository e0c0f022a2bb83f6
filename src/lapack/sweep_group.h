// Sweeps of rotations on their way from the host to the device, many at a time.
#pragma once

#include <algorithm>
#include <array>

#include "basic/ApplySweeps/shape.h"
#include "cudalib/managed_memory.h"
#include "cudalib/workspace_pool.h"
#include "lapack/bdsqr_iteration.h"

namespace lumo {

// Gathers sweeps of one direction in the table that applySweeps() reads: the iteration writes its
// rotations to their places, which follow the chase. Backwards, lines are seen from their other
// end, with the sines negated. A sweep that turns fewer planes than the group has identities there.
//
// The host writes into page-locked memory, which it takes in turn, and waits for when it starts
// anew. Copies and kernels go to the default stream, so that the device needs one table only.
template <class Real>
class SweepGroup {
  public:
    // For vectors of length n of one side or both; neither takes no memory.
    SweepGroup(int n, bool right, bool left)
        : n_(n),
          left_(right ? sweepsAtOnce : 0),
          pitch_(left_ + (left ? sweepsAtOnce : 0)),
          size_(pitch_ ? std::size_t(sweepTableRows(n + elementsAtOnce, mostStages)) *
                             std::size_t(pitch_)
                       : 0),
          host_({unsigned(size_), slots}),
          device_(size_) {}
    // A copy under way would read freed memory. What fails here shows at the caller's next check.
    ~SweepGroup() {
        if (size_) cudaStreamSynchronize(nullptr);
    }
    SweepGroup(const SweepGroup&) = delete;
    SweepGroup& operator=(const SweepGroup&) = delete;

    bool empty() const { return count_ == 0; }
    bool takes(char direct) const {
        return empty() || (count_ < sweepsAtOnce && direct == direct_);
    }
    char direct() const { return direct_; }

    // Where the rotations of the next sweep go, on `count` planes from (first, first + 1) on; those
    // of the right ones only if they are turned.
    Sweep<Real> add(int first, int count, char direct, bool turnsRight) {
        if (empty()) begin(direct);
        const bool forward = direct == 'F';
        const int begin = forward ? first : n_ - 1 - first - count, end = begin + count;
        begin_ = std::min(begin_, begin);
        end_ = std::max(end_, end);
        ranges_[std::size_t(count_)] = {begin, end, turnsRight};
        Rotation<Real>* const at = entry(forward ? begin : end - 1, count_);
        ++count_;
        auto side = [&](Rotation<Real>* r) -> SweepSide<Real> {
            const std::ptrdiff_t step = 2 * std::ptrdiff_t(pitch_);
            return {&r->c, &r->s, forward ? step : -step, Real(forward ? 1 : -1)};
        };
        Sweep<Real> sweep;
        if (left_ && turnsRight) sweep.right = side(at);
        if (left_ < pitch_) sweep.left = side(at + left_);
        return sweep;
    }

    // The group on the device, and the part of a line that it turns: `elements` columns from
    // `first` on, one before the other if `forward`.
    struct Sent {
        int first, elements, stages;
        bool forward;
        const Rotation<Real>*right, *left;
        int pitch;
    };
    // Ends the group. Kernels launched before the next send() may read it.
    Sent send() {
        const int stages = (count_ - 1) / sweepsOfStage + 1, elements = end_ - begin_ + 1;
        const int rows = sweepTableRows(elements, stages);
        for (int j = 0; j < stages * sweepsOfStage; ++j) complete(j, rows);
        const std::size_t size = std::size_t(rows) * std::size_t(pitch_) * sizeof(Rotation<Real>);
        cudalib::checkCudaError(
            cudaMemcpyAsync(device_.data(), row(begin_), size, cudaMemcpyHostToDevice, nullptr));
        count_ = 0;
        const bool forward = direct_ == 'F';
        return {forward ? begin_ : n_ - 1 - begin_,
                elements,
                stages,
                forward,
                device_.data(),
                device_.data() + left_,
                pitch_};
    }

  private:
    static constexpr unsigned slots = 4;

    // Planes as the chase meets them.
    struct Range {
        int begin, end;
        bool right;
    };

    void begin(char direct) {
        if (slot_ == slots) cudalib::checkCudaError(cudaStreamSynchronize(nullptr));
        slot_ = slot_ % slots + 1;
        direct_ = direct;
        begin_ = n_;
        end_ = 0;
    }
    Rotation<Real>* row(int i) const {
        return host_.data() + (slot_ - 1) * size_ + std::size_t(i) * std::size_t(pitch_);
    }
    // Of a plane in sweep j.
    Rotation<Real>* entry(int plane, int j) const { return row(plane + 1 + j) + j; }

    // Makes sweep j the identity where it does not turn anything.
    void complete(int j, int rows) {
        const Range none{begin_, begin_, false};
        const Range range = j < count_ ? ranges_[std::size_t(j)] : none;
        const int begin = range.begin + 1 + j, end = range.end + 1 + j;
        for (int i = begin_; i < begin_ + rows; ++i) {
            const bool turned = i >= begin && i < end;
            if (left_ && !(turned && range.right)) row(i)[j] = {1, 0};
            if (left_ < pitch_ && !turned) row(i)[left_ + j] = {1, 0};
        }
    }

    const int n_;
    const int left_, pitch_;  // where the left side's rotations are in a row of the table; the row
    const std::size_t size_;  // of a table
    int count_ = 0;           // of the group's sweeps
    char direct_ = 'F';
    int begin_ = 0, end_ = 0;  // the planes that the group turns
    unsigned slot_ = 0;        // counted from 1
    std::array<Range, sweepsAtOnce> ranges_;
    cudalib::ManagedMemory<Rotation<Real>, cudalib::PageLockedAllocator> host_;
    cudalib::Workspace<Rotation<Real>> device_;
};

}  // namespace lumo
