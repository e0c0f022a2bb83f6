// What the secular equations of eigenvalues and of singular values measure by.
#pragma once

#include <cmath>

#include "cudalib/block.h"

namespace lumo {

// Eigenvalues by their differences, singular values by those of their squares. A value is known as
// origin + offset.
struct Eigenvalues {
    template <class R>
    LUMO_DEVICE static R distance(R pole, R origin, R offset) {
        return (pole - origin) - offset;
    }
    // The offset from a value that lies so far off in the equation's measure.
    template <class R>
    LUMO_DEVICE static R offset(R /*value*/, R away) {
        return away;
    }
    // How much the equation's measure changes with the offset.
    template <class R>
    LUMO_DEVICE static R scale(R /*value*/) {
        return 1;
    }
};
struct SingularValues {
    template <class R>
    LUMO_DEVICE static R distance(R pole, R origin, R offset) {
        return ((pole - origin) - offset) * ((pole + origin) + offset);
    }
    template <class R>
    LUMO_DEVICE static R offset(R value, R away) {
        const R square = value * value + away;
        return away / (value + std::sqrt(square < 0 ? R(0) : square));
    }
    template <class R>
    LUMO_DEVICE static R scale(R value) {
        return 2 * value;
    }
};

}  // namespace lumo
