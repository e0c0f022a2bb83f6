// A call of a routine with operands of its own, by any interface.
#pragma once

#include <functional>
#include <memory>
#include <tuple>
#include <vector>

#include "residuals.h"
#include "support/harness.h"
#include "support/matrix.h"

namespace test {

// Elements that nothing has been written to, by default a vector.
template <class T>
Matrix<T> blank(int m, int n = 1, int ld = 0) {
    return filled(m, n, Matrix<T>::mark(), ld);
}

inline std::string label(const std::string& name, int m, int n, Interface interface) {
    return name + " " + std::to_string(m) + " x " + std::to_string(n) + nameOf(interface);
}

using Shrink = std::shared_ptr<void> (*)();  // makes blocks small, or null

// Each shape by each interface; make(m, n, interface) makes the call.
using Shapes = std::vector<std::pair<int, int>>;
template <class Make>
std::vector<GoodCase> casesOf(const std::string& name, const Shapes& shapes, Make make,
                              Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (Interface interface : {inHost, inDevice})
        for (auto [m, n] : shapes)
            cases.push_back({label(name, m, n, interface), [=, m = m, n = n] {
                                 auto call = make(m, n, interface);
                                 call->blocks = blocks;
                                 return call;
                             }});
    return cases;
}

inline std::vector<GoodCase> operator+(std::vector<GoodCase> a, const std::vector<GoodCase>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// --- The arguments of a call --------------------------------------------------------------------

// Without a leading dimension among the arguments.
template <class T>
struct Adjacent {
    Matrix<T> elements;
    bool onHost = false;  // whatever the interface
};

// An operand and its leading dimension, if it has one, are one argument here, passed as two.
template <class A>
struct Argument {
    const A value;
    Argument(A a, Interface) : value(a) {}
    operator A() const { return value; }
    std::tuple<A> passed() const { return value; }
    bool untouched() const { return true; }
    bool paddingUntouched() const { return true; }
};
template <class T>
struct Argument<Matrix<T>> : Operand<T> {
    using Operand<T>::Operand;
    std::tuple<T*, int> passed() { return {this->at(), this->before.ld}; }
};
template <class T>
struct Argument<Adjacent<T>> : Operand<T> {
    Argument(Adjacent<T> x, Interface where)
        : Operand<T>(std::move(x.elements), x.onHost ? inHost : where) {}
    std::tuple<T*> passed() { return this->at(); }
};

// run() takes what is passed; check() the arguments, operands as they were and as they are.
template <class Run, class Check, class... A>
class OperandsCall : public Call {
  public:
    OperandsCall(Interface where, Run run, Check check, A... arguments)
        : run_(run), check_(check), arguments_(Argument<A>(std::move(arguments), where)...) {}

    Shrink blocks = nullptr;

    lumoStatus run() override {
        const auto small = blocks ? blocks() : nullptr;
        return look([&](auto&... a) { return std::apply(run_, std::tuple_cat(a.passed()...)); });
    }
    void checkResult() override {
        look(check_);
        EXPECT_TRUE(look([](auto&... a) { return (a.paddingUntouched() && ...); }));
    }
    bool untouched() override {
        return look([](auto&... a) { return (a.untouched() && ...); });
    }
    // f of all arguments.
    template <class F>
    auto look(F f) {
        return std::apply(f, arguments_);
    }
    // The operand that is argument i, counted from 0, as it is now.
    template <std::size_t i>
    auto result() {
        return std::get<i>(arguments_).now();
    }

  private:
    const Run run_;
    const Check check_;
    std::tuple<Argument<A>...> arguments_;
};

template <class Run, class Check, class... A>
auto operandsCall(Interface where, Run run, Check check, A... arguments) {
    return std::make_unique<OperandsCall<Run, Check, A...>>(where, run, check,
                                                            std::move(arguments)...);
}

// By the export that `exportsOf` finds.
template <class T, class Find, class Check, class... A>
auto routineCall(Interface where, Find exportsOf, Check check, A... arguments) {
    auto run = [=](auto... passed) {
        return callExport(exportsOf(Exports<T>())[where], passed...);
    };
    return operandsCall(where, run, check, std::move(arguments)...);
}

}  // namespace test
