// Every BLAS operation through the harness.
#include <random>

#include "blas/blas_call.h"

namespace test {
namespace {

constexpr Wide scalars[] = {0, 1, {0.7, -0.9}};
constexpr int sizes[] = {0, 1, 2, 3, 5, 9, 35};
constexpr int increments[] = {1, 2, -1, -3};

std::string text(const Problem& p, Interface where, bool blocked) {
    std::ostringstream out;
    out << p.letters << " m " << p.m << " n " << p.n << " k " << p.k << " alpha " << p.alpha
        << " beta " << p.beta << " padding " << p.padding << " incx " << p.incx << " incy "
        << p.incy << nameOf(where) << (blocked ? ", blocked" : "");
    return out.str();
}

template <class T>
GoodCase goodCase(const Operation<T>& operation, const Problem& p, Interface where, bool blocked) {
    return {text(p, where, blocked),
            [=] { return std::make_unique<BlasCall<T>>(operation, p, where, blocked); }};
}

// f(letters) for every combination of an operation's letters.
template <class F>
void combine(const std::vector<std::string>& choices, F f, std::string letters = "") {
    if (letters.size() == choices.size()) return f(letters);
    for (char letter : choices[letters.size()]) combine(choices, f, letters + letter);
}

// Every combination of letters with every pair of scalars in turn; the rest is drawn.
template <class T>
std::vector<GoodCase> goodCases(const Operation<T>& operation) {
    std::vector<GoodCase> cases;
    std::mt19937 engine(1);
    auto pick = [&](const auto& values) { return values[engine() % std::size(values)]; };
    const int draws = operation.letters.size() > 2 ? 18 : 36;
    int pair = 0;
    combine(operation.letters, [&](std::string letters) {
        for (int draw = 0; draw < draws; ++draw) {
            for (char& letter : letters)
                if (engine() % 3 == 0) letter = char(std::tolower(letter));
            const bool blocked = operation.blocked && draw % 2;
            Problem p{letters, pick(sizes), pick(sizes), pick(sizes)};
            if (blocked)
                for (int* size : {&p.m, &p.n, &p.k}) *size = 8 + int(engine() % 6);
            p.alpha = scalars[pair % 3];
            p.beta = scalars[pair++ / 3 % 3];
            p.padding = int(engine() % 3) * 2;
            p.incx = pick(increments);
            p.incy = pick(increments);
            cases.push_back(goodCase(operation, p, engine() % 2 ? inHost : inDevice, blocked));
        }
    });
    return cases;
}

// With C read and not, and by blocks.
template <class T>
std::vector<GoodCase> sweep(const Operation<T>& operation) {
    const std::string letters = operation.firstLetters();
    std::vector<GoodCase> cases;
    for (Interface where : {inHost, inDevice}) {
        for (const Wide& beta : scalars)
            cases.push_back(
                goodCase(operation, {letters, 5, 4, 3, 1, beta, 1, 2, -2}, where, false));
        if (operation.blocked)
            cases.push_back(goodCase(operation, {letters, 9, 10, 8, 1, 1, 1}, where, true));
    }
    return cases;
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    for (const Operation<T>& operation : operations<T>())
        registerRoutine({letter + operation.name, goodCases(operation), nullptr, sweep(operation),
                         isDouble<T>, shrinkBlas});
});

}  // namespace
}  // namespace test
