// The speeds that `lumo bench` measures of a routine, by size.
#pragma once

#include <cmath>
#include <string>
#include <vector>

namespace lumo {

struct SpeedCurve {
    std::string name;
    std::vector<int> n;
    std::vector<double> lumo, cpu;  // Gflop/s

    // The size from which on, as far as was measured, Lumo is faster: between two sizes, where the
    // line through the logarithms of the speeds' ratios crosses zero. 0 if there is none.
    double crossover() const {
        const auto advantage = [&](std::size_t k) { return std::log(lumo[k] / cpu[k]); };
        std::size_t k = n.size();
        while (k > 0 && advantage(k - 1) > 0) --k;
        if (k == n.size()) return 0;
        if (k == 0) return n[0];
        const double before = advantage(k - 1), along = before / (before - advantage(k));
        return n[k - 1] * std::pow(double(n[k]) / n[k - 1], along);
    }
};

}  // namespace lumo
