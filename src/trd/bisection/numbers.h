// The numbers of a type, counted: bisection of their places is bisection to the last bit.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "cudalib/block.h"

namespace lumo {

// Zero has place 0, the least normal number place 1, its negative -1: denormal ones have none.
template <class R>
class Numbers {
    using Limits = std::numeric_limits<R>;

  public:
    using Place = std::conditional_t<sizeof(R) == 4, std::int32_t, std::int64_t>;
    using Distance = std::make_unsigned_t<Place>;

    static constexpr R leastNormal = Limits::min();
    static constexpr Place ofFour = (Place(3 - Limits::min_exponent) << (Limits::digits - 1)) + 1;
    static constexpr Distance range = 2 * Distance(ofFour);  // from -4 to 4

    LUMO_DEVICE static R at(Place place) {
        const Place least = Place(1) << (Limits::digits - 1);
        const Place bits = place == 0 ? 0 : (place < 0 ? -place : place) + least - 1;
        R x;
        std::memcpy(&x, &bits, sizeof x);
        return place < 0 ? -x : x;
    }

    // The distance of so many numbers within a range from each other and from its ends, if they cut
    // it into equal parts: the last one may be shorter, or none.
    LUMO_DEVICE static constexpr Distance part(Distance range, int cuts) {
        return (range + Distance(cuts)) / Distance(cuts + 1);
    }
};

}  // namespace lumo
