// Every BLAS operation through the harness.
#include <map>
#include <random>

#include "blas/blas_call.h"

namespace test {
namespace {

using lumo::Complex;

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

// A good case that runs with small blocks.
template <class T>
class Blocked : public BlasCall<T> {
  public:
    using BlasCall<T>::BlasCall;
    lumoStatus run() override {
        const auto shrunk = shrinkBlas();
        return BlasCall<T>::run();
    }
};

template <class T>
GoodCase goodCase(const Operation<T>& operation, const Problem& p, Interface where, bool blocked) {
    return {text(p, where, blocked), [=]() -> std::unique_ptr<Call> {
                if (blocked) return std::make_unique<Blocked<T>>(operation, p, where);
                return std::make_unique<BlasCall<T>>(operation, p, where);
            }};
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

// By operation.
template <class T>
std::map<std::string, std::vector<ArgumentCase>> badArguments() {
    using E = Exports<T>;
    std::map<std::string, std::vector<ArgumentCase>> cases;
    // The device's gemm is CUBLAS's own.
    cases["gemm"] =
        argumentCases({E::gemm[inHost]}, {1, 2, 3, 4, 5, 8, 10, 13, 7, 9, 12},
                      {'X', 'X', -1, -1, -1, some, none, 2, none, 3, some, none, 2},
                      {'n', 'N', 3, 2, 4, some, some, 3, some, 4, some, some, 3},
                      {{-8, {'C', 'N', 3, 2, 4, some, none, 3, none, 3, some, none, 2}},
                       {-10, {'t', 'C', 3, 2, 4, some, none, 4, none, 1, some, none, 2}},
                       {-13, {'N', 'T', 3, 2, 4, some, none, 3, none, 2, some, none, 2}},
                       {0, {'N', 'N', 0, 2, 4, some, none, 0, none, 4, some, none, 0}},
                       {0, {'T', 'T', 3, 0, 0, some, none, 0, none, 0, some, none, 3}}});
    cases["gemv"] = argumentCases(E::gemv, {1, 2, 3, 5, 6, 7, 10},
                                  {'X', -1, -1, some, none, 2, none, 0, some, none, 0},
                                  {'c', 3, 0, some, some, 3, some, 0, some, some, 0},
                                  {{-5, {'N', 0, 0, some, none, 0, none, 0, some, none, 0}},
                                   {-6, {'N', 0, 0, some, some, 0, none, 0, some, none, 0}},
                                   {-7, {'N', 0, 3, some, some, 1, none, 0, some, none, 0}}});
    auto sided = [](const auto& f) {
        return argumentCases(f, {1, 2, 3, 4, 7, 9, 12, 6, 8, 11},
                             {'X', 'X', -1, -1, some, none, 2, none, 2, some, none, 2},
                             {'L', 'u', 3, 2, some, some, 3, some, 3, some, some, 3},
                             {{-7, {'r', 'U', 3, 2, some, none, 1, none, 2, some, none, 2}},
                              {-9, {'R', 'U', 3, 2, some, none, 2, none, 2, some, none, 2}},
                              {0, {'L', 'U', 0, 2, some, none, 0, none, 0, some, none, 0}},
                              {0, {'L', 'U', 3, 0, some, none, 3, none, 3, some, none, 3}}});
    };
    auto rank = [](const auto& f, char transpose, char other) {
        return argumentCases(f, {1, 2, 3, 4, 7, 10, 6, 9},
                             {'X', 'X', -1, -1, some, none, 2, some, none, 2},
                             {'u', 'n', 3, 5, some, some, 3, some, some, 3},
                             {{-2, {'U', other, -1, -1, some, none, 0, some, none, 0}},
                              {-7, {'L', 'N', 0, 5, some, none, 0, some, none, 0}},
                              {-7, {'L', transpose, 3, 5, some, none, 4, some, none, 0}},
                              {-7, {'L', transpose, 3, 0, some, none, 0, some, none, 0}},
                              {-10, {'L', 'N', 0, 5, some, none, 1, some, none, 0}},
                              {0, {'L', 'N', 0, 5, some, none, 1, some, none, 1}}});
    };
    auto rank2 = [](const auto& f, char transpose, char other) {
        return argumentCases(f, {1, 2, 3, 4, 7, 9, 12, 6, 8, 11},
                             {'X', 'X', -1, -1, some, none, 2, none, 2, some, none, 2},
                             {'u', 'n', 3, 5, some, some, 3, some, 3, some, some, 3},
                             {{-2, {'U', other, -1, -1, some, none, 0, none, 0, some, none, 0}},
                              {-7, {'L', transpose, 3, 5, some, none, 4, none, 5, some, none, 2}},
                              {-9, {'L', transpose, 3, 5, some, none, 5, none, 4, some, none, 2}},
                              {0, {'L', 'N', 0, 5, some, none, 0, none, 0, some, none, 0}}});
    };
    auto triangular = [](const auto& f, int infoWithoutRows, int infoWithoutResult) {
        return argumentCases(
            f, {1, 2, 3, 4, 5, 6, 9, 11, 8, 10},
            {'X', 'X', 'X', 'X', -1, -1, some, none, 2, none, 2},
            {'l', 'u', 'c', 'n', 3, 2, some, some, 3, some, 3},
            {{-9, {'R', 'U', 'N', 'N', 3, 2, some, none, 1, none, 2}},
             {-11, {'R', 'U', 'N', 'N', 3, 2, some, none, 2, none, 2}},
             {0, {'L', 'U', 'N', 'N', 3, 0, some, none, 3, none, 3}},
             {infoWithoutRows, {'L', 'U', 'N', 'N', 0, 2, some, none, 0, none, 1}},
             {infoWithoutResult, {'R', 'U', 'N', 'N', 0, 2, some, none, 2, none, 0}}});
    };
    cases["symm"] = sided(E::symm);
    cases["syrk"] = rank(E::syrk, 'T', 'C');
    cases["syr2k"] = rank2(E::syr2k, 'T', 'C');
    cases["trmm"] = triangular(E::trmm, -9, -11);
    cases["trsm"] = triangular(E::trsm, 0, 0);
    if constexpr (lumo::isComplex<T>) {
        cases["hemm"] = sided(E::hemm);
        cases["herk"] = rank(E::herk, 'C', 'T');
        cases["her2k"] = rank2(E::her2k, 'C', 'T');
    }
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

template <class T>
bool registerBlas(const std::string& letter) {
    auto arguments = badArguments<T>();
    for (const Operation<T>& operation : operations<T>())
        registerRoutine({letter + operation.name,
                         goodCases(operation),
                         arguments.at(operation.name),
                         {},
                         sweep(operation),
                         isDouble<T>,
                         shrinkBlas});
    return true;
}

const bool registered = registerBlas<float>("S") && registerBlas<Complex<float>>("C") &&
                        registerBlas<double>("D") && registerBlas<Complex<double>>("Z");

}  // namespace
}  // namespace test
