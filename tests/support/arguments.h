// Bad arguments, in the order in which a function looks at them.
#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace test {

template <class... A>
using ArgumentsOf = std::common_type_t<std::tuple<A...>>;  // the function alone says of what type

// The info that a list of arguments must lead to.
template <class... A>
using Checks = std::common_type_t<std::vector<std::pair<int, std::tuple<A...>>>>;

// All are bad at first, and then one after the other, counted from 1, is put right.
template <class... A>
Checks<A...> checksInOrder(const std::vector<int>& order, std::tuple<A...> bad,
                           const std::tuple<A...>& good) {
    Checks<A...> checks;
    for (int next : order) {
        checks.push_back({-next, bad});
        int position = 0;
        auto putRight = [&](auto& argument, const auto& right) {
            if (++position == next) argument = right;
        };
        std::apply(
            [&](auto&... argument) {
                std::apply([&](const auto&... right) { (putRight(argument, right), ...); }, good);
            },
            bad);
    }
    return checks;
}

constexpr std::nullptr_t none = nullptr;

// An operand for a call that does not come to look at it, or a scalar.
struct Some {
    template <class X>
    operator X() const {
        alignas(16) static char memory[256];
        if constexpr (std::is_pointer_v<X>)
            return reinterpret_cast<X>(memory);
        else
            return X{};
    }
};
constexpr Some some;

}  // namespace test
