// Every BLAS operation through the harness.
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
        << p.incy << (where == inHost ? ", host" : ", device") << (blocked ? ", blocked" : "");
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

// Bad arguments in their order, by operation. `given` names the operands that are not null;
// letters of the row are the operation's own where it has "*".
struct Row {
    const char* names;
    const char* letters;
    int m, n, k;
    const char* given;
    int lda, ldb, ldc;
    int info;
};
constexpr Row rows[] = {
    {"gemm", "XX", -1, -1, -1, "", 0, 0, 0, -1},
    {"gemm", "tX", -1, -1, -1, "", 0, 0, 0, -2},
    {"gemm", "tn", -1, -1, -1, "", 0, 0, 0, -3},
    {"gemm", "NN", 3, -1, -1, "", 0, 0, 0, -4},
    {"gemm", "NN", 3, 2, -1, "", 0, 0, 0, -5},
    {"gemm", "NN", 3, 2, 4, "", 2, 3, 2, -8},
    {"gemm", "CN", 3, 2, 4, "", 3, 3, 2, -8},
    {"gemm", "NN", 3, 2, 4, "", 3, 3, 2, -10},
    {"gemm", "NC", 3, 2, 4, "", 3, 1, 2, -10},
    {"gemm", "NT", 3, 2, 4, "", 3, 2, 2, -13},
    {"gemm", "NN", 3, 2, 4, "", 3, 4, 3, -7},
    {"gemm", "NN", 3, 2, 4, "a", 3, 4, 3, -9},
    {"gemm", "NN", 3, 2, 4, "ab", 3, 4, 3, -12},
    {"gemm", "NN", 0, 2, 4, "", 0, 4, 0, 0},
    {"gemm", "TT", 3, 0, 0, "", 0, 0, 3, 0},
    {"gemv", "X", -1, -1, 0, "", 0, 0, 0, -1},
    {"gemv", "c", -1, -1, 0, "", 0, 0, 0, -2},
    {"gemv", "N", 0, -1, 0, "", 0, 0, 0, -3},
    {"gemv", "N", 0, 0, 0, "", 0, 0, 0, -5},
    {"gemv", "N", 0, 0, 0, "a", 0, 0, 0, -6},
    {"gemv", "N", 3, 0, 0, "a", 2, 0, 0, -6},
    {"gemv", "N", 0, 3, 0, "a", 1, 0, 0, -7},
    {"gemv", "N", 3, 0, 0, "ab", 3, 0, 0, -10},
    {"symm hemm", "XX", -1, -1, 0, "", 0, 0, 0, -1},
    {"symm hemm", "rX", -1, -1, 0, "", 0, 0, 0, -2},
    {"symm hemm", "Lu", -1, -1, 0, "", 0, 0, 0, -3},
    {"symm hemm", "LU", 3, -1, 0, "", 0, 0, 0, -4},
    {"symm hemm", "LU", 3, 2, 0, "", 2, 2, 2, -7},
    {"symm hemm", "RU", 3, 2, 0, "", 1, 2, 2, -7},
    {"symm hemm", "RU", 3, 2, 0, "", 2, 2, 2, -9},
    {"symm hemm", "RU", 3, 2, 0, "", 2, 3, 2, -12},
    {"symm hemm", "LU", 3, 2, 0, "", 3, 3, 3, -6},
    {"symm hemm", "LU", 3, 2, 0, "a", 3, 3, 3, -8},
    {"symm hemm", "LU", 3, 2, 0, "ab", 3, 3, 3, -11},
    {"symm hemm", "LU", 0, 2, 0, "", 0, 0, 0, 0},
    {"symm hemm", "LU", 3, 0, 0, "", 3, 3, 3, 0},
    {"syrk herk", "XX", 0, -1, -1, "", 0, 0, 0, -1},
    {"syrk herk", "uX", 0, -1, -1, "", 0, 0, 0, -2},
    {"syrk", "UC", 0, -1, -1, "", 0, 0, 0, -2},
    {"herk", "UT", 0, -1, -1, "", 0, 0, 0, -2},
    {"syrk herk", "Un", 0, -1, -1, "", 0, 0, 0, -3},
    {"syrk herk", "LN", 0, 3, -1, "", 0, 0, 0, -4},
    {"syrk herk", "LN", 0, 3, 5, "", 2, 0, 0, -7},
    {"syrk herk", "LN", 0, 0, 5, "", 0, 0, 0, -7},
    {"syrk", "LT", 0, 3, 5, "", 4, 0, 0, -7},
    {"herk", "LC", 0, 3, 0, "", 0, 0, 0, -7},
    {"syrk herk", "LN", 0, 3, 5, "", 3, 0, 2, -10},
    {"syrk herk", "LN", 0, 0, 5, "", 1, 0, 0, -10},
    {"syrk herk", "LN", 0, 3, 5, "", 3, 0, 3, -6},
    {"syrk herk", "LN", 0, 3, 5, "a", 3, 0, 3, -9},
    {"syrk herk", "LN", 0, 0, 5, "", 1, 0, 1, 0},
    {"syr2k her2k", "XX", 0, -1, -1, "", 0, 0, 0, -1},
    {"syr2k", "UC", 0, -1, -1, "", 0, 0, 0, -2},
    {"her2k", "UT", 0, -1, -1, "", 0, 0, 0, -2},
    {"syr2k her2k", "un", 0, -1, -1, "", 0, 0, 0, -3},
    {"syr2k her2k", "LN", 0, 3, -1, "", 0, 0, 0, -4},
    {"syr2k her2k", "LN", 0, 3, 5, "", 2, 2, 2, -7},
    {"syr2k her2k", "LN", 0, 3, 5, "", 3, 2, 2, -9},
    {"syr2k", "LT", 0, 3, 5, "", 5, 4, 2, -9},
    {"her2k", "LC", 0, 3, 5, "", 4, 5, 2, -7},
    {"syr2k her2k", "LN", 0, 3, 5, "", 3, 3, 2, -12},
    {"syr2k her2k", "LN", 0, 3, 5, "", 3, 3, 3, -6},
    {"syr2k her2k", "LN", 0, 3, 5, "a", 3, 3, 3, -8},
    {"syr2k her2k", "LN", 0, 3, 5, "ab", 3, 3, 3, -11},
    {"syr2k her2k", "LN", 0, 0, 5, "", 0, 0, 0, 0},
    {"trmm trsm", "XXXX", -1, -1, 0, "", 0, 0, 0, -1},
    {"trmm trsm", "lXXX", -1, -1, 0, "", 0, 0, 0, -2},
    {"trmm trsm", "LuXX", -1, -1, 0, "", 0, 0, 0, -3},
    {"trmm trsm", "LUcX", -1, -1, 0, "", 0, 0, 0, -4},
    {"trmm trsm", "LUNn", -1, -1, 0, "", 0, 0, 0, -5},
    {"trmm trsm", "LUNN", 3, -1, 0, "", 0, 0, 0, -6},
    {"trmm trsm", "LUNN", 3, 2, 0, "", 2, 0, 2, -9},
    {"trmm trsm", "RUNN", 3, 2, 0, "", 1, 0, 2, -9},
    {"trmm trsm", "RUNN", 3, 2, 0, "", 2, 0, 2, -11},
    {"trmm trsm", "LUNN", 3, 2, 0, "", 3, 0, 3, -8},
    {"trmm trsm", "LUNN", 3, 2, 0, "a", 3, 0, 3, -10},
    {"trmm trsm", "LUNN", 3, 0, 0, "", 3, 0, 3, 0},
    {"trmm", "LUNN", 0, 2, 0, "", 0, 0, 1, -9},
    {"trmm", "RUNN", 0, 2, 0, "", 2, 0, 0, -11},
    {"trsm", "RUNN", 0, 2, 0, "", 2, 0, 0, 0},
};

bool among(const std::string& name, const std::string& names) {
    return (" " + names + " ").find(" " + name + " ") != std::string::npos;
}

template <class T>
std::vector<ArgumentCase> argumentCases(const Operation<T>& operation) {
    std::vector<ArgumentCase> cases;
    for (const Row& row : rows)
        for (Interface where : {inHost, inDevice}) {
            if (!among(operation.name, row.names)) continue;
            // The device's gemm is CUBLAS's own.
            if (operation.name == "gemm" && where == inDevice) continue;
            auto call = [=] {
                T element[1];
                auto given = [&](char letter) {
                    return std::strchr(row.given, letter) ? element : nullptr;
                };
                return operation.call(
                    where, {row.letters, row.m, row.n, row.k, T(1), given('a'), row.lda, given('b'),
                            row.ldb, T(1), given('c'), row.ldc});
            };
            cases.push_back({operation.name + " " + row.letters + ", info " +
                                 std::to_string(row.info) +
                                 (where == inHost ? ", host" : ", device"),
                             call, row.info});
        }
    return cases;
}

// With C read and not, and by blocks.
template <class T>
std::vector<GoodCase> sweep(const Operation<T>& operation) {
    std::string letters;
    for (const std::string& choice : operation.letters) letters += choice[0];
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
    for (const Operation<T>& operation : operations<T>())
        registerRoutine({letter + operation.name,
                         goodCases(operation),
                         argumentCases(operation),
                         {},
                         sweep(operation),
                         std::is_same_v<RealOf<T>, double>,
                         shrinkBlas});
    return true;
}

const bool registered = registerBlas<float>("S") && registerBlas<Complex<float>>("C") &&
                        registerBlas<double>("D") && registerBlas<Complex<double>>("Z");

}  // namespace
}  // namespace test
