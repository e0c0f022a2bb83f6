// Random calls, good and bad, of every function on the software device: each has the
// status and info that the model says, bad ones leave their operands alone, none leaves their
// bounds.
#include "call.h"

namespace test {
namespace {

template <class T>
void operate(Choices& choices) {
    static const std::vector<Operation<T>> all = operations<T>();
    const Operation<T>& operation = all[choices.below(all.size())];
    const bool gemv = operation.name == "gemv";
    Call call(choices);
    call.inOrder = gemv;
    const auto least = {"gemv", "syrk", "herk", "trmm"};
    call.least = std::count(least.begin(), least.end(), operation.name) ? 1 : 0;
    call.unchecked = operation.name == "gemm" && call.where == inDevice;  // CUBLAS checks
    Arguments<T> p{};
    std::string letters;
    int position = 1;
    bool bad = false;
    for (const std::string& options : operation.letters) {
        p.letters += call.letter(position++, options);
        letters += folded(p.letters.back());
        bad = bad || !taken(letters.back(), options);
    }
    call.needsNulls = true;
    for (char name : operation.sizes) {
        const int size = call.size(position++);
        (name == 'm' ? p.m : name == 'n' ? p.n : p.k) = size;
        call.needsNulls = call.needsNulls && (size > 0 || gemv);
        bad = bad || size < 0;
    }
    const T scalars[] = {T(1), T(0), T(-2)};
    p.alpha = scalars[choices.below(3)];
    p.beta = scalars[choices.below(3)];
    const Shapes s = operation.shapes(letters, p.m, p.n, p.k);
    const auto draw = [&](Shape shape, int& ld, auto& at, bool vector = false) {
        if (vector) {
            // One element more than it needs: OpenBLAS's zgemv looks for another one in x.
            ld = choices.among({1, 1, -1, 2, -3, 0});
            at = call.operand<T>(position, std::abs(ld) + 1, shape.n);
        } else {
            const Given<T> given = call.matrix<T>(position, shape.m, shape.n);
            std::tie(at, ld) = std::tie(given.at, given.ld);
            bad = bad || ld < std::max(1, shape.m);
        }
        position += 2;
    };
    ++position;  // alpha
    draw(s.a, p.lda, p.a);
    if (operation.operands == 3) draw(s.b, p.ldb, p.b, gemv);
    if (operation.scalars == 2) ++position;
    draw(s.c, p.ldc, p.c, gemv);
    const bool hasResult = s.c.m > 0 && s.c.n > 0;
    if (!hasResult && !gemv) call.nothingToDo();
    if (gemv)
        call.expect(p.ldb == 0 || p.ldc == 0, lumoBlasError, 7);
    else if (hasResult && (!p.c || (call.unchecked && p.k > 0 && (!p.a || !p.b))))
        call.expect(true, lumoRuntimeError, 11);
    else
        call.expect(bad && call.unchecked, lumoBlasError, 7);
    call.run(operation.name, [&] { return operation.call(call.where, p); });
}

template <class T>
void factorize(Choices& choices) {
    using E = Exports<T>;
    Call call(choices);
    const Interface where = call.where;
    const bool square = choices.below(3) == 0, pivoted = choices.below(2) == 0;
    const int m = call.size(1), n = square ? m : call.size(2), nrhs = square ? call.size(2) : 0;
    call.needsNulls = m > 0 && n > 0 && (pivoted || square || m > 1 || n > 1);
    const auto a = call.matrix<T>(3, m, n);
    if (square) {
        int* const ipiv = call.operand<int>(5, n);
        const auto b = call.matrix<T>(6, n, nrhs);
        return call.run("gesv", [&] {
            return callExport(E::gesv[where], n, nrhs, a.at, a.ld, ipiv, b.at, b.ld);
        });
    }
    if (pivoted) {
        int* const ipiv = call.operand<int>(5, std::min(m, n));
        return call.run("getrf",
                        [&] { return callExport(E::getrf[where], m, n, a.at, a.ld, ipiv); });
    }
    T* const tau = call.operand<T>(5, std::min(m, n));
    call.expect(m == 1 && n == 1 && (!a.at || !tau), lumoRuntimeError, 11);
    call.run("geqrf", [&] { return callExport(E::geqrf[where], m, n, a.at, a.ld, tau); });
}

template <class T>
void leastSquares(Choices& choices) {
    Call call(choices);
    const char trans = call.letter(1, "NTC");
    const int m = call.size(2), n = call.size(3), nrhs = call.size(4);
    call.needsNulls = m > 0 && n > 0 && nrhs > 0;
    const auto a = call.matrix<T>(5, m, n), b = call.matrix<T>(7, std::max(m, n), nrhs);
    call.expect(!b.at && std::max(m, n) > 0 && nrhs > 0, lumoRuntimeError, 11);  // to be zero
    call.run("gels", [&] {
        return callExport(Exports<T>::gels[call.where], trans, m, n, nrhs, a.at, a.ld, b.at, b.ld);
    });
}

template <class T>
void leastSquaresOfAnyRank(Choices& choices) {
    Call call(choices);
    const int m = call.size(1), n = call.size(2), nrhs = call.size(3), k = std::min(m, n);
    call.needsNulls = true;
    const auto a = call.matrix<T>(4, m, n, k > 0);
    const auto b = call.matrix<T>(6, std::max({1, m, n}), nrhs, std::max(m, n) > 0 && nrhs > 0);
    auto* const s = call.operand<RealOf<T>>(8, k, 1, 0, k > 0);
    int rank, *const out = choices.rarely() ? nullptr : &rank;
    call.refuse(3, 10, !out);
    call.run("gelsd", [&] {
        return callExport(Exports<T>::gelsd[call.where], m, n, nrhs, a.at, a.ld, b.at, b.ld, s,
                          RealOf<T>(-1), out);
    });
}

template <class T>
void constrained(Choices& choices) {
    Call call(choices);
    const int m = call.size(1), n = call.size(3), p = call.size(3);
    call.refuse(1, 3, p > n || n > double(m) + p);
    call.needsNulls = n > 0;
    const auto a = call.matrix<T>(4, m, n), b = call.matrix<T>(6, p, n, p > 0);
    T* const c = call.operand<T>(8, m);
    T* const d = call.operand<T>(9, p, 1, 0, p > 0);
    T* const x = call.operand<T>(10, n);
    call.run("gglse", [&] {
        return callExport(Exports<T>::gglse[call.where], m, n, p, a.at, a.ld, b.at, b.ld, c, d, x);
    });
}

template <class T>
void singularValues(Choices& choices) {
    Call call(choices);
    const char jobu = call.letter(1, "ASON"), jobvt = call.letter(2, "ASON");
    const bool hasU = taken(folded(jobu), "AS"), hasVt = taken(folded(jobvt), "AS");
    call.refuse(0, 2, folded(jobu) == 'O' && folded(jobvt) == 'O');
    const int m = call.size(3), n = call.size(4), k = std::min(m, n);
    call.needsNulls = m > 0 && n > 0;
    const auto a = call.matrix<T>(5, m, n);
    auto* const s = call.operand<RealOf<T>>(7, k);
    const auto u = call.matrix<T>(8, hasU ? m : 1, folded(jobu) == 'A' ? m : k, hasU);
    const auto vt = call.matrix<T>(10, !hasVt ? 1 : folded(jobvt) == 'A' ? n : k, n, hasVt);
    call.run("gesvd", [&] {
        return callExport(Exports<T>::gesvd[call.where], jobu, jobvt, m, n, a.at, a.ld, s, u.at,
                          u.ld, vt.at, vt.ld);
    });
}

// syevd and, with another matrix, sygvd.
template <class T>
void singularVectors(Choices& choices) {
    Call call(choices);
    const char jobz = call.letter(1, "ASON"), job = folded(jobz);
    const int m = call.size(2), n = call.size(3), k = std::min(m, n);
    const bool hasU = taken(job, "AS") || (job == 'O' && m < n),
               hasVt = taken(job, "AS") || (job == 'O' && m >= n);
    call.needsNulls = m > 0 && n > 0;
    const auto a = call.matrix<T>(4, m, n);
    auto* const s = call.operand<RealOf<T>>(6, k);
    const auto u = call.matrix<T>(7, hasU ? m : 1, job == 'S' ? k : m, hasU);
    const auto vt = call.matrix<T>(9, !hasVt ? 1 : job == 'S' ? k : n, n, hasVt);
    call.run("gesdd", [&] {
        return callExport(Exports<T>::gesdd[call.where], jobz, m, n, a.at, a.ld, s, u.at, u.ld,
                          vt.at, vt.ld);
    });
}

template <class T>
void symmetricEigenproblem(Choices& choices) {
    using E = Exports<T>;
    Call call(choices);
    const bool general = choices.below(2);
    int p = 1;  // the next argument's position
    const int itype = general && choices.rarely() ? choices.among({0, 4}) : 1 + choices.below(3);
    call.refuse(0, 1, itype < 1 || itype > 3);
    p += general;
    const char jobz = call.letter(p++, "NV"), uplo = call.letter(p++, "UL");
    const int n = call.size(p++);
    call.needsNulls = n > 0;
    call.atRandom = general;
    const auto a = call.matrix<T>(p, n, n);
    p += 2;
    const auto b = general ? call.matrix<T>(p, n, n) : a;
    p += 2 * general;
    auto* const w = call.operand<RealOf<T>>(p, n);
    if (general)
        return call.run("sygvd", [&] {
            return callExport(E::sygvd[call.where], itype, jobz, uplo, n, a.at, a.ld, b.at, b.ld,
                              w);
        });
    call.run("syevd",
             [&] { return callExport(E::syevd[call.where], jobz, uplo, n, a.at, a.ld, w); });
}

// Cholesky's, and what is done with factors.
template <class T>
void definite(Choices& choices) {
    using E = Exports<T>;
    Call call(choices);
    const Interface where = call.where;
    const unsigned which = choices.below(4);
    const bool solves = which < 2;
    const char uplo = call.letter(1, "UL");
    const int n = call.size(2), nrhs = solves ? call.size(3) : 0, a0 = solves ? 4 : 3;
    call.needsNulls = n > 0 && (which != 1 || nrhs > 0);
    call.atRandom = which == 0 || which == 2;
    const auto a = call.matrix<T>(a0, n, n);
    if (solves) {
        const auto b = call.matrix<T>(6, n, nrhs);
        if (which == 0)
            return call.run("posv", [&] {
                return callExport(E::posv[where], uplo, n, nrhs, a.at, a.ld, b.at, b.ld);
            });
        return call.run("potrs", [&] {
            return callExport(E::potrs[where], uplo, n, nrhs, a.at, a.ld, b.at, b.ld);
        });
    }
    if (which == 2)
        return call.run("potrf", [&] { return callExport(E::potrf[where], uplo, n, a.at, a.ld); });
    const RealOf<T> norm = choices.rarely() ? std::nan("") : RealOf<T>(choices.below(3));
    RealOf<T> rcond, *const out = choices.rarely() ? nullptr : &rcond;
    call.refuse(2, 5, norm != norm);
    call.refuse(3, 6, !out);
    call.run("pocon", [&] { return callExport(E::pocon[where], uplo, n, a.at, a.ld, norm, out); });
}

template <class T>
void reflected(Choices& choices) {
    Call call(choices);
    const bool generates = choices.below(2) == 0;
    const char side = generates ? 'L' : folded(call.letter(1, "LR"));
    const char trans = generates ? 'N' : call.letter(2, lumo::isComplex<T> ? "NC" : "NTC");
    const int first = generates ? 1 : 3;
    const int m = call.size(first), n = call.size(first + 1), k = call.size(first + 2);
    const int order = side == 'R' ? n : m;
    call.refuse(1, 2, generates && n > m);
    call.refuse(1, first + 2, k > (generates ? n : order));
    if (generates) {
        call.needsNulls = n > 0;
        const auto a = call.matrix<T>(4, m, n);
        T* const tau = call.operand<T>(6, k, 1, 0, k > 0);
        return call.run("orgqr", [&] {
            return callExport(Exports<T>::orgqr[call.where], m, n, k, a.at, a.ld, tau);
        });
    }
    call.needsNulls = m > 0 && n > 0 && k > 0;
    const auto a = call.matrix<T>(6, order, k);
    T* const tau = call.operand<T>(8, k);
    const auto c = call.matrix<T>(9, m, n);
    call.run("ormqr", [&] {
        return callExport(Exports<T>::ormqr[call.where], side, trans, m, n, k, a.at, a.ld, tau,
                          c.at, c.ld);
    });
}

template <class T>
void factorized(Choices& choices) {
    using E = Exports<T>;
    Call call(choices);
    if (choices.below(2) == 0) {
        const char norm = call.letter(1, "1OI");
        const int n = call.size(2);
        call.needsNulls = n > 0;
        const auto a = call.matrix<T>(3, n, n);
        const RealOf<T> of = choices.rarely() ? RealOf<T>(-1) : RealOf<T>(choices.below(3));
        RealOf<T> rcond, *const out = choices.rarely() ? nullptr : &rcond;
        call.refuse(2, 5, of < 0);
        call.refuse(3, 6, !out);
        return call.run("gecon", [&] {
            return callExport(E::gecon[call.where], norm, n, a.at, a.ld, of, out);
        });
    }
    const char trans = call.letter(1, "NTC");
    const int n = call.size(2), nrhs = call.size(3);
    call.needsNulls = n > 0 && nrhs > 0;
    const auto a = call.matrix<T>(4, n, n);
    int* const ipiv = call.operand<int>(6, n);  // random numbers below 1: no pivots
    const auto b = call.matrix<T>(7, n, nrhs);
    call.refuse(4, 6, call.needsNulls);
    call.run("getrs", [&] {
        return callExport(E::getrs[call.where], trans, n, nrhs, a.at, a.ld, ipiv, b.at, b.ld);
    });
}

// The functions without matrices.
void others(Choices& choices) {
    Call call(choices);
    const unsigned which = choices.below(6);
    const int number = choices.among({0, -1, 10, 11, INT_MAX});
    const int size = choices.among({1, 100, 0, -1});
    std::vector<char> text(std::size_t(std::max(size, 1)));
    char* const buffer = choices.rarely() ? nullptr : text.data();
    int answer = -1;
    int* const out = choices.rarely() ? nullptr : &answer;
    const std::function<lumoStatus()> functions[] = {
        [&] { return lumoGetErrorInfoString(lumoStatus(number), size, buffer, size); },
        [&] { return lumoGetDeviceInfo(number, buffer, size); },
        [&] { return lumoSelectDevice(number); },
        [&] { return lumoGetDeviceCount(out); },
        [&] { return lumoGetExecutingDevice(out); },
        [&] {
            require(lumoGetStatusString(lumoStatus(number)) != nullptr, "a status has a text");
            lumoFreeBuffers();
            lumoShutdown();
            return lumoInitialize();
        }};
    call.refuse(0, 1, which < 3 && (number < 0 || number > (which == 0 ? 10 : 0)));
    call.refuse(0, 1, (which == 3 || which == 4) && !out);
    call.refuse(0, which == 0 ? 3 : 2, which < 2 && !buffer);
    call.refuse(0, which == 0 ? 4 : 3, which < 2 && size < 1);
    call.expect(which == 2, lumoRuntimeError, 36);  // the device is in use
    call.run("function " + std::to_string(which) + " of those without matrices", functions[which]);
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
    constexpr void (*ofType[])(Choices&) = {
#define LUMO_KIND(f) f<float>, f<double>, f<lumo::Complex<float>>, f<lumo::Complex<double>>
        LUMO_KIND(operate),         LUMO_KIND(factorize),
        LUMO_KIND(leastSquares),    LUMO_KIND(leastSquaresOfAnyRank),
        LUMO_KIND(constrained),     LUMO_KIND(singularValues),
        LUMO_KIND(singularVectors), LUMO_KIND(symmetricEigenproblem),
        LUMO_KIND(definite),        LUMO_KIND(reflected),
        LUMO_KIND(factorized)};
#undef LUMO_KIND
    Choices choices(data, size);
    const std::size_t kind = choices.below(std::size(ofType) + 1);
    (kind < std::size(ofType) ? ofType[kind] : others)(choices);
    return 0;
}
