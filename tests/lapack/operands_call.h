// A call of a routine whose operands are all matrices of one element type, by any interface.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "lapack/harness.h"
#include "residuals.h"
#include "routine/frame.h"
#include "support/matrix.h"

namespace test {

// The interfaces a LAPACK routine of a type is reached by; in double precision it is internal.
template <class T>
std::vector<Interface> interfaces() {
    if constexpr (isDouble<T>)
        return {inDevice};
    else
        return {inHost, inDevice};
}

// By the export that `exportOf` finds or, where there is none, in the frame of one.
template <class Routine, class Find, class... A>
lumoStatus callRoutine(Interface where, Find exportOf, A... arguments) {
    using T = typename Routine::Element;
    if constexpr (isDouble<T>)
        return lumo::onDevice(Routine{arguments...});
    else
        return callExport(exportOf(Exports<T>())[where], arguments...);
}

// Elements that nothing has been written to, by default a vector.
template <class T>
Matrix<T> blank(int m, int n = 1, int ld = 0) {
    return filled(m, n, Matrix<T>::mark(), ld);
}

inline std::string label(const std::string& name, int m, int n, Interface interface) {
    return name + " " + std::to_string(m) + " x " + std::to_string(n) + nameOf(interface);
}

// Each shape by each interface; make(m, n, interface) makes the call.
using Shapes = std::vector<std::pair<int, int>>;
template <class T, class Make>
std::vector<GoodCase> casesOf(const std::string& name, const Shapes& shapes, Make make) {
    std::vector<GoodCase> cases;
    for (Interface interface : interfaces<T>())
        for (auto [m, n] : shapes)
            cases.push_back({label(name, m, n, interface),
                             [=, m = m, n = n] { return make(m, n, interface); }});
    return cases;
}

inline std::vector<GoodCase> operator+(std::vector<GoodCase> a, const std::vector<GoodCase>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

template <class T>
class OperandsCall : public Call {
  public:
    using Operands = std::vector<Matrix<T>>;
    using Run = std::function<lumoStatus(Interface, const std::vector<T*>&)>;
    // Looks at the operands before and after.
    using Check = std::function<void(const Operands&, const Operands&)>;

    OperandsCall(Operands operands, Interface interface, Run run, Check check)
        : before_(std::move(operands)),
          after_(before_),
          interface_(interface),
          run_(std::move(run)),
          check_(std::move(check)) {
        for (Matrix<T>& a : after_) {
            if (interface == inDevice) onDevice_.push_back(std::make_unique<OnDevice<T>>(a));
            pointers_.push_back(interface == inDevice ? onDevice_.back()->data() : a.data.data());
        }
    }

    lumoStatus run() override { return run_(interface_, pointers_); }
    void checkResult() override {
        fetch();
        check_(before_, after_);
        for (const Matrix<T>& a : after_) EXPECT_TRUE(a.paddingUntouched());
    }
    bool untouched() override {
        fetch();
        return after_ == before_;
    }
    const Operands& before() const { return before_; }
    const Operands& results() {
        fetch();
        return after_;
    }

  private:
    void fetch() {
        for (std::size_t i = 0; i < onDevice_.size(); ++i) after_[i] = onDevice_[i]->download();
    }

    const Operands before_;
    Operands after_;
    Interface interface_;
    Run run_;
    Check check_;
    std::vector<std::unique_ptr<OnDevice<T>>> onDevice_;
    std::vector<T*> pointers_;
};

}  // namespace test
