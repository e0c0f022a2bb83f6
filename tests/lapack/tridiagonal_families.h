// The numbers of tridiagonal and bidiagonal matrices that divide and conquer may find hard.
#pragma once

#include <functional>

#include "lapack/tuning.h"
#include "support/kernels.h"

namespace test {

using Elements = std::function<double(int)>;  // by their place

inline Elements all(double value) {
    return [=](int) { return value; };
}
inline Elements uniform(unsigned seed) {
    return [numbers = Random(seed)](int) mutable { return numbers.next<double>(); };
}
inline Elements powers(double base, int first = 0) {
    return [=](int i) { return std::pow(base, first + i); };
}

template <class R>
std::vector<R> vectorOf(int n, const Elements& f) {
    std::vector<R> x(std::size_t(std::max(n, 0)));
    for (int i = 0; i < n; ++i) x[i] = R(f(i));
    return x;
}

struct Family {
    std::string name;
    Elements d, e;
};

// What all deflates from, nothing, nearly all; numbers over all the range; poles as close as they
// may be; roots next to their poles.
template <class R>
std::vector<Family> hardFamilies() {
    const double eps = epsilon<R>, most = std::numeric_limits<R>::max() / 64,
                 least = std::numeric_limits<R>::min();
    const Elements wilkinson = [](int i) { return std::abs(i % 21 - 10); };
    return {
        {"random", uniform(1), uniform(2)},
        {"zero", all(0), all(0)},
        {"unit", all(1), all(0)},
        {"zero diagonal", all(0), all(1)},
        {"Toeplitz", all(2), all(-1)},
        {"Wilkinson's, glued", wilkinson, [=](int i) { return i % 21 == 20 ? std::sqrt(eps) : 1; }},
        {"Wilkinson's, loosely glued", wilkinson, [](int i) { return i % 21 == 20 ? 1e-3 : 1; }},
        {"one cluster", [=](int i) { return 1 + i * eps; }, all(eps)},
        {"two and three times", [](int i) { return i % 3; },
         [=](int i) { return i % 7 == 6 ? 1e-8
                             : i % 2    ? 8 * eps
                                        : 0.5; }},
        {"nearly diagonal", [](int i) { return i; }, all(1e-2)},
        {"parts", uniform(3), [](int i) { return i % 5 == 4 ? 0 : i % 3 - 1.5; }},
        {"graded down", powers(0.5), powers(0.5)},
        {"graded up", powers(2, -120), powers(2, -120)},
        {"large", [=](int i) { return most / (1 + i); }, all(most / 3)},
        {"tiny", [=](int i) { return least * (1 + i); }, all(least)},
        {"Hermite's", all(0), [](int i) { return std::sqrt(i + 1.0); }},
    };
}

// Where much is equal, zero or close.
template <class R>
Elements ofFewNumbers(unsigned seed) {
    return [engine = std::mt19937(seed)](int) mutable {
        const double numbers[] = {0, 1, 1, -1, 0.5, 1e-3, epsilon<R>, 1 + 4 * epsilon<R>};
        return numbers[engine() % 8];
    };
}

// Tests of a routine in blocks of 3 rows; check(n, diagonal, off-diagonal) is what it does to one.
template <class R>
class DividedMatrices : public OnMachine {
  protected:
    using Check = void (*)(int, const Elements&, const Elements&);
    static constexpr double bound = 50;  // LAPACK sep.in (xSTT21, xSTECH), svd.in

    void SetUp() override {
        OnMachine::SetUp();
        leaf_ = temporarily(lumo::stedcLeaf, 3);
    }

    void checkHard(Check check) {
        for (const Family& f : hardFamilies<R>())
            for (int n : {1, 2, 4, 21, 64, 130}) {
                SCOPED_TRACE(f.name + (" " + std::to_string(n)));
                check(n, f.d, f.e);
            }
    }
    void checkOnMachines(Check check) {
        for (int capability : {20, 90})
            for (Schedule schedule : {Schedule::earliest, Schedule::latest}) {
                if (onSoftwareDevice()) start(machine(capability), schedule);
                check(70, uniform(4), uniform(5));
                check(45, all(1), all(0.25));
            }
    }
    // Others each time of --gtest_shuffle --gtest_repeat=100.
    void checkRandomStructures(Check check) {
        const Elements any =
            ofFewNumbers<R>(7 + unsigned(::testing::UnitTest::GetInstance()->random_seed()));
        for (int i = 0; i < 1000 && !HasFailure(); ++i) check(2 + i % 19, any, any);
    }

  private:
    std::shared_ptr<void> leaf_;
};

}  // namespace test
