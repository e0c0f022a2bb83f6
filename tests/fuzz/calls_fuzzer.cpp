// Random calls, good and bad, of every function of lumo.h on the software device: each has the
// status and info that the model says, bad ones leave their operands alone, none leaves their
// bounds.
#include "call.h"
#include "support/machine.h"

namespace test {
namespace {

// Where the arguments of the operations of BLAS stand behind their letters: sizes, those of m, n
// and k that are named; operands, 0 for none, each before its leading dimension.
struct Rule {
    const char* names;
    const char* sizeNames;
    int sizes, a, b, c;
    int least;  // leading dimension of a matrix without rows
};
constexpr Rule rules[] = {
    {"gemm", "mnk", 3, 7, 9, 12, 0},       {"gemv", "mn", 2, 5, 7, 10, 1},
    {"symm hemm", "mn", 3, 6, 8, 11, 0},   {"syrk herk", "nk", 3, 6, 0, 9, 1},
    {"syr2k her2k", "nk", 3, 6, 8, 11, 0}, {"trmm", "mn", 5, 8, 0, 10, 1},
    {"trsm", "mn", 5, 8, 0, 10, 0},
};

const Rule& ruleOf(const std::string& name) {
    return *std::find_if(std::begin(rules), std::end(rules), [&](const Rule& rule) {
        return std::string(rule.names).find(name) != std::string::npos;
    });
}

template <class T>
void operate(Choices& choices) {
    static const std::vector<Operation<T>> all = operations<T>();
    const Operation<T>& operation = all[choices.below(all.size())];
    const Rule& rule = ruleOf(operation.name);
    const bool gemv = operation.name == "gemv";
    Call call(choices, operation.name);
    call.inOrder = gemv;
    call.least = rule.least;
    call.unchecked = operation.name == "gemm" && call.where == inDevice;  // CUBLAS checks
    Arguments<T> p{};
    std::string letters;
    bool badLetter = false;
    for (const std::string& options : operation.letters) {
        p.letters += call.letter(int(p.letters.size()) + 1, options);
        letters += folded(p.letters.back());
        badLetter = badLetter || !taken(letters.back(), options);
    }
    call.needsNulls = true;
    for (int at = 0; rule.sizeNames[at]; ++at) {
        const int size = call.size(rule.sizes + at);
        (rule.sizeNames[at] == 'm' ? p.m : rule.sizeNames[at] == 'n' ? p.n : p.k) = size;
        call.needsNulls = call.needsNulls && (size > 0 || gemv);
    }
    const T scalars[] = {T(1), T(0), T(-2)};
    p.alpha = scalars[choices.below(3)];
    p.beta = scalars[choices.below(3)];
    const Shapes s = operation.shapes(letters, p.m, p.n, p.k);
    const auto operand = [&](int position, Shape shape, int& ld, auto& at) {
        if (position == 0) return;
        if (gemv && position != rule.a) {
            ld = choices.among({1, 1, -1, 2, -3, 0});
            // And one element more: OpenBLAS's zgemv looks for another one in x.
            at = call.vector<T>(position, std::abs(ld) + 1, shape.n, std::abs(ld));
        } else {
            const auto given = call.matrix<T>(position, shape.m, shape.n);
            std::tie(at, ld) = std::make_tuple(given.at, given.ld);
        }
    };
    operand(rule.a, s.a, p.lda, p.a);
    operand(rule.b, s.b, p.ldb, p.b);
    operand(rule.c, s.c, p.ldc, p.c);
    const bool hasResult = s.c.m > 0 && s.c.n > 0;
    if (!hasResult && !gemv) call.nothingToDo();
    if (gemv) {
        call.expect(p.ldb == 0 || p.ldc == 0, lumoBlasError, 7);
    } else if (hasResult && (!p.c || (call.unchecked && p.k > 0 && (!p.a || !p.b)))) {
        call.expect(true, lumoRuntimeError, 11);
    } else if (call.unchecked) {
        call.expect(badLetter || std::min({p.m, p.n, p.k}) < 0 || p.lda < std::max(1, s.a.m) ||
                        p.ldb < std::max(1, s.b.m) || p.ldc < std::max(1, p.m),
                    lumoBlasError, 7);
    }
    call.run([&] { return operation.call(call.where, p); });
}

template <class T>
struct LapackExports;
#define LUMO_LAPACK_EXPORTS(letter, T) \
    template <>                        \
    struct LapackExports<T> {          \
        LUMO_EXPORT(letter, getrf);    \
        LUMO_EXPORT(letter, gesv);     \
        LUMO_EXPORT(letter, geqrf);    \
        LUMO_EXPORT(letter, gels);     \
        LUMO_EXPORT(letter, gglse);    \
        LUMO_EXPORT(letter, gesvd);    \
    }
LUMO_LAPACK_EXPORTS(S, float);
LUMO_LAPACK_EXPORTS(C, lumo::Complex<float>);

template <class T>
void getrf(Choices& choices) {
    Call call(choices, "getrf");
    const int m = call.size(1), n = call.size(2);
    call.needsNulls = m > 0 && n > 0;
    const auto a = call.matrix<T>(3, m, n);
    int* const ipiv = call.pivots(5, std::min(m, n));
    call.run([&] { return LapackExports<T>::getrf[call.where](m, n, argument(a.at), a.ld, ipiv); });
}

template <class T>
void gesv(Choices& choices) {
    Call call(choices, "gesv");
    const int n = call.size(1), nrhs = call.size(2);
    call.needsNulls = n > 0;
    const auto a = call.matrix<T>(3, n, n);
    int* const ipiv = call.pivots(5, n);
    const auto b = call.matrix<T>(6, n, nrhs);
    call.run([&] {
        return LapackExports<T>::gesv[call.where](n, nrhs, argument(a.at), a.ld, ipiv,
                                                  argument(b.at), b.ld);
    });
}

template <class T>
void geqrf(Choices& choices) {
    Call call(choices, "geqrf");
    const int m = call.size(1), n = call.size(2);
    call.needsNulls = m > 0 && n > 0 && (m > 1 || n > 1);
    const auto a = call.matrix<T>(3, m, n);
    T* const tau = call.vector<T>(5, std::min(m, n));
    call.expect(m == 1 && n == 1 && (!a.at || !tau), lumoRuntimeError, 11);
    call.run([&] {
        return LapackExports<T>::geqrf[call.where](m, n, argument(a.at), a.ld, argument(tau));
    });
}

template <class T>
void gels(Choices& choices) {
    Call call(choices, "gels");
    const char trans = call.letter(1, "NTC");
    const int m = call.size(2), n = call.size(3), nrhs = call.size(4);
    call.needsNulls = m > 0 && n > 0 && nrhs > 0;
    const auto a = call.matrix<T>(5, m, n), b = call.matrix<T>(7, std::max(m, n), nrhs);
    call.expect(!b.at && std::max(m, n) > 0 && nrhs > 0, lumoRuntimeError, 11);  // to be zero
    call.run([&] {
        return LapackExports<T>::gels[call.where](trans, m, n, nrhs, argument(a.at), a.ld,
                                                  argument(b.at), b.ld);
    });
}

template <class T>
void gglse(Choices& choices) {
    Call call(choices, "gglse");
    const int m = call.size(1), n = call.size(3), p = call.size(3);
    call.refuse(1, 3, p > n || n > double(m) + p);
    call.needsNulls = n > 0;
    const auto a = call.matrix<T>(4, m, n), b = call.matrix<T>(6, p, n, p > 0);
    T* const c = call.vector<T>(8, m);
    T* const d = call.vector<T>(9, p, 1, 1, p > 0);
    T* const x = call.vector<T>(10, n);
    call.run([&] {
        return LapackExports<T>::gglse[call.where](m, n, p, argument(a.at), a.ld, argument(b.at),
                                                   b.ld, argument(c), argument(d), argument(x));
    });
}

template <class T>
void gesvd(Choices& choices) {
    Call call(choices, "gesvd");
    const char jobu = call.letter(1, "ASON"), jobvt = call.letter(2, "ASON");
    const char u = folded(jobu), vt = folded(jobvt);
    call.refuse(0, 2, u == 'O' && vt == 'O');
    const int m = call.size(3), n = call.size(4), k = std::min(m, n);
    const bool hasU = taken(u, "AS"), hasVt = taken(vt, "AS");
    call.needsNulls = m > 0 && n > 0;
    const auto a = call.matrix<T>(5, m, n);
    auto* const s = call.vector<RealOf<T>>(7, k);
    const auto U = call.matrix<T>(8, hasU ? m : 1, !hasU ? 0 : u == 'A' ? m : k, hasU);
    const auto Vt = call.matrix<T>(10, !hasVt ? 1 : vt == 'A' ? n : k, hasVt ? n : 0, hasVt);
    call.run([&] {
        return LapackExports<T>::gesvd[call.where](jobu, jobvt, m, n, argument(a.at), a.ld, s,
                                                   argument(U.at), U.ld, argument(Vt.at), Vt.ld);
    });
}

template <class T>
void lapack(Choices& choices) {
    constexpr void (*routines[])(Choices&) = {getrf<T>, gesv<T>,  geqrf<T>,
                                              gels<T>,  gglse<T>, gesvd<T>};
    routines[choices.below(6)](choices);
}

// The functions without matrices. A text ends within its buffer.
void others(Choices& choices) {
    Call call(choices, "a function without matrices");
    call.computes = false;
    const unsigned which = choices.below(6);
    const int number = choices.among({0, -1, 10, 11, INT_MAX}),
              size = choices.among({1, 300, 0, -1});
    std::vector<char> text(std::size_t(std::max(size, 1)), 'x');
    char* const buffer = choices.rarely() ? nullptr : text.data();
    int answer = -1;
    int* const out = choices.rarely() ? nullptr : &answer;
    const bool writes = which == 1 || which == 2;
    call.refuse(0, 1,
                which == 1  ? number < 0 || number > 10
                : which > 3 ? !out
                            : which > 0 && number != 0);
    call.refuse(0, which == 1 ? 3 : 2, writes && !buffer);
    call.refuse(0, which == 1 ? 4 : 3, writes && size < 1);
    call.expect(which == 3, lumoRuntimeError, 36);  // the device is in use
    call.run([&] {
        switch (which) {
            case 1:
                return lumoGetErrorInfoString(lumoStatus(number), size, buffer, size);
            case 2:
                return lumoGetDeviceInfo(number, buffer, size);
            case 3:
                return lumoSelectDevice(number);
            case 4:
                return lumoGetDeviceCount(out);
            case 5:
                return lumoGetExecutingDevice(out);
            default:
                require(lumoGetStatusString(lumoStatus(number)) != nullptr, "a status has a text");
                lumoFreeBuffers();
                return lumoInitialize();
        }
    });
}

}  // namespace
}  // namespace test

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace test;
    static const bool started = [] {
        setenv("LUMO_PLATFORM", "software", 1);
        startAfresh(machine());
        return lumoInitialize() == lumoNoError;
    }();
    require(started, "the library starts");
    Choices choices(data, size);
    constexpr void (*groups[])(Choices&) = {operate<float>,
                                            operate<double>,
                                            operate<lumo::Complex<float>>,
                                            operate<lumo::Complex<double>>,
                                            lapack<float>,
                                            lapack<lumo::Complex<float>>,
                                            others};
    groups[choices.below(std::size(groups))](choices);
    return 0;
}
