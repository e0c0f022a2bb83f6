// Bad arguments, in the order in which a function looks at them.
#pragma once

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

}  // namespace test
