// getrf and gesv through the harness.
#include "lapack/lu.h"

namespace test {
namespace {

using lumo::Complex;

std::string label(const char* name, int m, int n, Interface interface) {
    return std::string(name) + " " + std::to_string(m) + " x " + std::to_string(n) +
           (interface == Interface::host ? ", host" : ", device");
}

// A good case with small blocks: they are shrunk while the call runs.
template <class T>
class Shrunk : public Call {
  public:
    explicit Shrunk(std::unique_ptr<Call> call) : call_(std::move(call)) {}
    lumoStatus run() override {
        const auto blocks = shrinkLu<T>();
        return call_->run();
    }
    void checkResult() override { call_->checkResult(); }
    bool untouched() override { return call_->untouched(); }

  private:
    std::unique_ptr<Call> call_;
};

// Both sides of every switch with panels of 8 columns: one panel, exactly k panels, a last one
// of one column, tall and wide, both sides of the transposed path's least order.
constexpr std::pair<int, int> shapes[] = {
    {1, 1},   {1, 9},   {9, 1},   {7, 8},   {8, 8},   {9, 9},   {15, 15}, {16, 16},
    {17, 17}, {19, 19}, {20, 20}, {21, 21}, {24, 24}, {33, 33}, {40, 17}, {17, 40},
    {64, 9},  {9, 64},  {50, 33}, {33, 50}, {30, 16}, {16, 30}};

// A matrix whose column `zero` is zero: the factorisation meets an exactly zero pivot there.
template <class T>
Matrix<T> singular(int n, int zero) {
    auto a = Matrix<T>::random(n, n, n + 1);
    for (int i = 0; i < n; ++i) a(i, zero) = T(0);
    return a;
}

template <class T>
std::vector<GoodCase> getrfGoodCases() {
    std::vector<GoodCase> cases;
    for (Interface interface : interfaces<T>())
        for (auto [m, n] : shapes)
            cases.push_back({label("getrf", m, n, interface), [=, m = m, n = n] {
                                 return std::make_unique<Shrunk<T>>(
                                     getrfCall<T>(m, n, m + 3, interface));
                             }});
    // The blocks that users get, around the switch to the transposed path.
    for (auto [m, n] : {std::pair{512, 512}, {513, 513}, {600, 700}, {700, 193}})
        cases.push_back({label("getrf", m, n, interfaces<T>()[0]),
                         [=, m = m, n = n] { return getrfCall<T>(m, n, 0, interfaces<T>()[0]); }});
    return cases;
}

template <class T>
std::vector<ArgumentCase> getrfArgumentCases() {
    std::vector<T> a(64);
    std::vector<int> p(8);
    std::vector<ArgumentCase> cases;
    for (auto f : {LuExports<T>::getrf, LuExports<T>::deviceGetrf}) {
        auto call = [=](int m, int n, bool hasA, int lda, bool hasPivots) {
            return [=]() mutable {
                return f(m, n, hasA ? exported(a.data()) : nullptr, lda,
                         hasPivots ? p.data() : nullptr);
            };
        };
        cases.insert(cases.end(), {{"m before all", call(-1, -1, false, 0, false), -1},
                                   {"n before lda", call(5, -1, false, 0, false), -2},
                                   {"lda before a", call(5, 5, false, 4, false), -4},
                                   {"lda of no rows", call(0, 5, false, 0, false), -4},
                                   {"a before ipiv", call(5, 5, false, 5, false), -3},
                                   {"ipiv", call(5, 5, true, 5, false), -5},
                                   {"no columns", call(5, 0, false, 5, false), 0},
                                   {"no rows", call(0, 5, false, 1, false), 0}});
    }
    return cases;
}

template <class T>
std::vector<FailingCase> getrfFailingCases() {
    std::vector<FailingCase> cases;
    // In the first panel, at its end, in a later one, in the last; the transposed path and not.
    for (auto [n, zero] :
         {std::pair{6, 2}, {17, 2}, {17, 7}, {17, 16}, {33, 0}, {33, 12}, {33, 32}})
        for (Interface interface : interfaces<T>())
            cases.push_back({label("singular", n, zero, interface), [=, n = n, zero = zero] {
                                 GetrfCall<T> call(singular<T>(n, zero), interface);
                                 EXPECT_EQ(Outcome(lumoDataError, zero + 1), outcome(call.run()));
                                 call.checkResult();
                             }});
    cases.push_back({"not a number in, not a number out", [] {
                         auto a = Matrix<T>::random(30, 30);
                         a(11, 12) = scalar<T>(std::nan(""));
                         GetrfCall<T> call(a, interfaces<T>()[0]);
                         const lumoStatus status = call.run();
                         EXPECT_TRUE(status == lumoNoError || status == lumoDataError);
                         EXPECT_TRUE(call.resultHasNan());
                     }});
    return cases;
}

template <class T>
std::vector<GoodCase> getrfSweep() {
    std::vector<GoodCase> cases;
    for (Interface interface : interfaces<T>())
        for (auto [m, n] : {std::pair{6, 6}, {17, 17}, {21, 21}, {25, 17}})
            cases.push_back({label("getrf", m, n, interface),
                             [=, m = m, n = n] { return getrfCall<T>(m, n, m + 1, interface); }});
    return cases;
}

template <class T>
std::vector<GoodCase> gesvGoodCases() {
    std::vector<GoodCase> cases;
    for (Interface interface : interfaces<T>())
        for (int n : {1, 2, 8, 9, 17, 20, 33})
            for (int nrhs : {1, 5, 40})
                cases.push_back({label("gesv", n, nrhs, interface), [=] {
                                     return std::make_unique<Shrunk<T>>(
                                         gesvCall<T>(n, nrhs, 2, interface));
                                 }});
    cases.push_back({"gesv 530", [] { return gesvCall<T>(530, 3, 0, interfaces<T>()[0]); }});
    return cases;
}

template <class T>
std::vector<ArgumentCase> gesvArgumentCases() {
    std::vector<T> a(64), b(64);
    std::vector<int> p(8);
    std::vector<ArgumentCase> cases;
    for (auto f : {LuExports<T>::gesv, LuExports<T>::deviceGesv}) {
        struct Has {
            bool a, ipiv, b;
        };
        auto call = [=](int n, int nrhs, int lda, int ldb, Has has) {
            return [=]() mutable {
                return f(n, nrhs, has.a ? exported(a.data()) : nullptr, lda,
                         has.ipiv ? p.data() : nullptr, has.b ? exported(b.data()) : nullptr, ldb);
            };
        };
        const Has none{false, false, false}, all{true, true, true};
        cases.insert(cases.end(),
                     {{"n before all", call(-1, -1, 0, 0, none), -1},
                      {"nrhs before lda", call(3, -1, 0, 0, none), -2},
                      {"nrhs of an empty system", call(0, -1, 1, 1, none), -2},
                      {"lda before ldb", call(3, 1, 2, 2, all), -4},
                      {"ldb before a", call(3, 1, 3, 2, none), -7},
                      {"a before ipiv", call(3, 1, 3, 3, none), -3},
                      {"ipiv before b", call(3, 1, 3, 3, {true, false, false}), -5},
                      {"b", call(3, 1, 3, 3, {true, true, false}), -6},
                      {"b of no right-hand sides", call(3, 0, 3, 3, {true, true, false}), -6},
                      {"empty", call(0, 3, 1, 1, none), 0}});
    }
    return cases;
}

template <class T>
std::vector<FailingCase> gesvFailingCases() {
    std::vector<FailingCase> cases;
    for (int n : {6, 17, 33})
        for (Interface interface : interfaces<T>())
            cases.push_back({label("singular", n, n, interface), [=] {
                                 GesvCall<T> call(singular<T>(n, 3), Matrix<T>::random(n, 2),
                                                  interface);
                                 EXPECT_EQ(Outcome(lumoDataError, 4), outcome(call.run()));
                                 EXPECT_EQ(lumoDataError, lumoGetLastStatus());
                                 call.checkSingular();
                             }});
    return cases;
}

template <class T>
std::vector<GoodCase> gesvSweep() {
    std::vector<GoodCase> cases;
    for (Interface interface : interfaces<T>())
        for (int n : {6, 17, 21})
            cases.push_back(
                {label("gesv", n, 2, interface), [=] { return gesvCall<T>(n, 2, 1, interface); }});
    return cases;
}

template <class T>
bool registerLu(const std::string& letter) {
    std::vector<ArgumentCase> getrfArguments, gesvArguments;
    constexpr bool isDouble = std::is_same_v<RealOf<T>, double>;
    if constexpr (!isDouble) {
        getrfArguments = getrfArgumentCases<T>();
        gesvArguments = gesvArgumentCases<T>();
    }
    registerRoutine({letter + "getrf", getrfGoodCases<T>(), getrfArguments, getrfFailingCases<T>(),
                     getrfSweep<T>(), isDouble, shrinkLu<T>});
    return registerRoutine({letter + "gesv", gesvGoodCases<T>(), gesvArguments,
                            gesvFailingCases<T>(), gesvSweep<T>(), isDouble, shrinkLu<T>});
}

const bool registered = registerLu<float>("S") && registerLu<Complex<float>>("C") &&
                        registerLu<double>("D") && registerLu<Complex<double>>("Z");

}  // namespace
}  // namespace test
