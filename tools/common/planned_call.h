// A call made from a routine's description, on operands whose memory somebody else has: as it is
// planned, not as it is measured.
#pragma once

#include <algorithm>
#include <functional>
#include <type_traits>

#include "common/plain_pivots.h"
#include "common/routines.h"
#include "routine/c_interface.h"
#include "routine/description.h"

namespace lumo {

// Gives each operand of the description memory, and the leading dimension, or the increment, that
// goes with it. Pivots stay with the host.
template <class Routine>
void reserveOperands(Routine& routine, const Reserve& reserve) {
    const auto provide = [&](auto& pointer, int rows, int columns) {
        using E = std::remove_const_t<std::remove_reference_t<decltype(*pointer)>>;
        const std::size_t bytes = std::size_t(rows) * std::size_t(columns) * sizeof(E);
        pointer = static_cast<E*>(reserve(bytes, std::is_same_v<E, int>));
    };
    const auto one = [&](const auto& o) {
        if constexpr (isVector<std::decay_t<decltype(o)>>) {
            o.increment = 1;
            provide(o.pointer, o.length, 1);
        } else {
            if (o.ld) *o.ld = std::max(1, o.rows);
            provide(o.pointer, o.rows, o.columns);
        }
    };
    routine.operands([&](auto... operands) { (one(operands), ...); });
}

template <class Routine, class Function>
PlannedCall plannedCall(Routine routine, Function function, const Reserve& reserve) {
    reserveOperands(routine, reserve);
    fillPivots(routine);
    return [routine, function]() mutable {
        return routine.arguments([&](auto... a) { return int(function(external(a)...)); });
    };
}

}  // namespace lumo
