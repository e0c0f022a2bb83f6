// getrf and gesv through the harness.
#include "lapack/lu.h"

namespace test {
namespace {

// A matrix whose column `zero` is zero: the factorisation meets an exactly zero pivot there.
template <class T>
Matrix<T> singular(int n, int zero) {
    auto a = Matrix<T>::random(n, n, n + 1);
    for (int i = 0; i < n; ++i) a(i, zero) = T(0);
    return a;
}

template <class T>
std::vector<GoodCase> getrfGoodCases() {
    // Both sides of every switch with panels of 8 columns: one panel, exactly k panels, a last one
    // of one column, tall and wide, both sides of the transposed path's least order.
    const Shapes small{{1, 1},   {1, 9},   {9, 1},   {7, 8},   {8, 8},   {9, 9},
                       {15, 15}, {16, 16}, {17, 17}, {19, 19}, {20, 20}, {21, 21},
                       {24, 24}, {33, 33}, {40, 17}, {17, 40}, {64, 9},  {9, 64},
                       {50, 33}, {33, 50}, {30, 16}, {16, 30}};
    auto make = [](int m, int n, Interface interface) {
        return getrfCall(Matrix<T>::random(m, n, m + 3), interface);
    };
    auto cases = casesOf("getrf", small, make, shrinkLu<T>) +
                 casesOf("getrf", small, make, shrinkLuThere<T>);
    // The blocks that users get, around the switch to the transposed path.
    for (auto [m, n] : {std::pair{512, 512}, {513, 513}, {600, 700}, {700, 193}})
        cases.push_back({label("getrf", m, n, inHost),
                         [=, m = m, n = n] { return getrfCall(Matrix<T>::random(m, n), inHost); }});
    return cases;
}

template <class T>
void getrfFailing() {
    // In the first panel, at its end, in a later one, in the last; the transposed path and not.
    for (auto [n, zero] :
         {std::pair{6, 2}, {17, 2}, {17, 7}, {17, 16}, {33, 0}, {33, 12}, {33, 32}})
        for (Interface interface : {inHost, inDevice}) {
            SCOPED_TRACE(label("singular", n, zero, interface));
            auto call = getrfCall(singular<T>(n, zero), interface);
            EXPECT_EQ(Outcome(lumoDataError, zero + 1), outcome(call->run()));
            call->checkResult();
        }
    auto twice = singular<T>(33, 20);  // the first one counts
    for (int i = 0; i < 33; ++i) twice(i, 3) = T(0);
    EXPECT_EQ(Outcome(lumoDataError, 4), outcome(getrfCall(twice, inDevice)->run()));
    auto a = Matrix<T>::random(30, 30);
    a(11, 12) = scalar<T>(std::nan(""));
    auto call = getrfCall(a, inHost);
    const lumoStatus status = call->run();
    EXPECT_TRUE(status == lumoNoError || status == lumoDataError);
    EXPECT_TRUE(std::isnan(norm1(WideMatrix(call->template result<2>()))));
}

template <class T>
std::vector<GoodCase> gesvGoodCases() {
    Shapes shapes;
    for (int n : {1, 2, 8, 9, 17, 20, 33})
        for (int nrhs : {1, 5, 40}) shapes.push_back({n, nrhs});
    auto cases = casesOf(
        "gesv", shapes,
        [](int n, int nrhs, Interface interface) { return gesvCall<T>(n, nrhs, 2, interface); },
        shrinkLu<T>);
    cases.push_back({"gesv 530", [] { return gesvCall<T>(530, 3, 0, inHost); }});
    return cases;
}

template <class T>
void gesvFailing() {
    for (int n : {6, 17, 33})
        for (Interface interface : {inHost, inDevice}) {
            SCOPED_TRACE(label("singular", n, n, interface));
            auto call = gesvCall(singular<T>(n, 3), Matrix<T>::random(n, 2), interface);
            EXPECT_EQ(Outcome(lumoDataError, 4), outcome(call->run()));
            EXPECT_EQ(lumoDataError, lumoGetLastStatus());
            call->look([](auto, auto, auto& a, auto& ipiv, auto& b) {
                checkFactors(a, ipiv);
                EXPECT_TRUE(b.untouched());
            });
        }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    auto getrf = [](int m, int n, Interface i) {
        return getrfCall(Matrix<T>::random(m, n, m + 1), i);
    };
    registerRoutine({letter + "getrf", getrfGoodCases<T>(), getrfFailing<T>,
                     casesOf("getrf", {{6, 6}, {17, 17}, {21, 21}, {25, 17}}, getrf), isDouble<T>,
                     shrinkLuThere<T>});
    auto gesv = [](int n, int nrhs, Interface i) { return gesvCall<T>(n, nrhs, 1, i); };
    registerRoutine({letter + "gesv", gesvGoodCases<T>(), gesvFailing<T>,
                     casesOf("gesv", {{6, 2}, {17, 2}, {21, 2}}, gesv), isDouble<T>, shrinkLu<T>});
});

}  // namespace
}  // namespace test
