// Which part of the device's processors is free when. They go to what was issued first: a kernel
// has what the earlier ones leave, waits where that is nothing, and is slowed where it is less than
// it could use.
#pragma once

#include <map>
#include <utility>

namespace timeline {

// A moment, and the activity that made it so late.
struct Reached {
    double end = 0;
    int last = -1;

    void include(const Reached& other) {
        if (other.end > end) *this = other;
    }
};

// What a kernel takes: so long by itself, and that part of the processors.
struct Load {
    double seconds, share = 1;
};

class Processors {
  public:
    // Gives them to an activity from `ready` on, `gap` later if it has to wait for another one.
    // When it begins, and because of whom, and when it ends.
    std::pair<Reached, double> take(Reached ready, Load load, double gap, int activity);
    void forgetBefore(double time);

  private:
    struct Level {
        double free;
        int last;  // whose end made it
    };
    using Levels = std::map<double, Level>;
    Levels::iterator split(double time);

    Levels levels_{{0, {1, -1}}};  // each from a time on
};

}  // namespace timeline
