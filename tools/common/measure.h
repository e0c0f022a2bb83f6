// What every measurement needs: data, a clock, medians, two calls in turn.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace lumo {

inline double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// Uniform in [-1, 1]; T is a real number or a pair of two.
template <class T>
std::vector<T> randomElements(std::size_t count) {
    std::mt19937 engine(1);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::vector<T> elements(count);
    for (T& x : elements) {
        const double re = uniform(engine);
        if constexpr (std::is_floating_point_v<T>) {
            x = T(re);
        } else {
            using Real = std::conditional_t<sizeof(T) == 2 * sizeof(float), float, double>;
            x = T{Real(re), Real(uniform(engine))};
        }
    }
    return elements;
}

template <class Call>
double secondsOf(Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The medians of two calls' seconds, each after `prepare()`, in turn, so that a change of the
// machine's pace meets both: `least` rounds or more, until `enough` seconds are spent, after a
// first round that warms up and does not count.
template <class Prepare, class One, class Other>
std::pair<double, double> pairedMedians(int least, double enough, Prepare prepare, One one,
                                        Other other) {
    std::vector<double> ones, others;
    double spent = 0;
    for (int round = 0; round <= least || (spent < enough && round <= 10 * least); ++round) {
        prepare();
        const double first = secondsOf(one);
        prepare();
        const double second = secondsOf(other);
        if (round == 0) continue;
        ones.push_back(first);
        others.push_back(second);
        spent += first + second;
    }
    return {median(ones), median(others)};
}

}  // namespace lumo
