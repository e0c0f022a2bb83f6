// What the lanes of a team keep from one region to the next, and what all of it comes to.
#pragma once

#include "cudalib/block.h"

namespace cudalib {

// A value of each lane of a team: a register on a GPU, an array on a CPU.
template <class Team, class T>
class LaneValues {
  public:
#ifdef __CUDACC__
    LUMO_DEVICE T& at(int /*y*/, int /*x*/) {
        return value_;
    }

  private:
    T value_;
#else
    T& at(int y, int x) {
        return value_[y][x];
    }

  private:
    alignas(64) T value_[Team::Y][Team::X];
#endif
};

// combine() of the lanes' values of a team of one row, in pairs, for all of the block.
template <class Team, class T, class Combine>
LUMO_DEVICE T ofLanes(LaneValues<Team, T>& values, Combine combine) {
    static_assert(Team::Y == 1 && (Team::X & (Team::X - 1)) == 0);
    LUMO_SHARED T partial[Team::X];
    Team::lanes(Team::X, [&](int x) { partial[x] = values.at(0, x); });
    Team::barrier();
    for (int half = Team::X / 2; half > 0; half /= 2) {
        Team::lanes(half, [&](int x) { partial[x] = combine(partial[x], partial[x + half]); });
        Team::barrier();
    }
    const T result = partial[0];
    Team::barrier();  // the next one's lanes write there again
    return result;
}

template <class Team, class T>
LUMO_DEVICE T sumOfLanes(LaneValues<Team, T>& values) {
    return ofLanes(values, [](T x, T y) { return x + y; });
}

}  // namespace cudalib
