#include "platform/timeline/panels.h"

#include <algorithm>

#include "platform/timeline/costs.h"
#include "platform/timeline/state.h"

namespace timeline {
namespace {

void spend(double seconds) {
    State& s = state();
    ++s.counts.panels;
    s.clock.host(Kind::panel, seconds);
}

// An answer to the question for a workspace's size: what is least.
template <class F>
int answering(char type, void* work, int size, F f) {
    if (size != -1) {
        f();
        return 0;
    }
    return platform::withType(type, [&](auto zero) {
        *static_cast<decltype(zero)*>(work) = 1;
        return 0;
    });
}

void writeOnes(char type, int n, void* a, int lda) {
    platform::withType(type, [&](auto one) {
        one = 1;
        for (int i = 0; i < n; ++i)
            static_cast<decltype(one)*>(a)[std::size_t(i) * std::size_t(lda + 1)] = one;
        return 0;
    });
}

// n norms as a random matrix of `length` rows and fewer leaves them on a diagonal.
void norms(char type, void* to, int n, int length) {
    platform::withType(type, [&](auto zero) {
        using T = decltype(zero);
        auto* const values = static_cast<platform::RealOf<T>*>(to);
        for (int i = 0; i < n; ++i)
            values[i] =
                platform::RealOf<T>(randomNorm((length - i) * (platform::isComplex<T> ? 2. : 1.)));
        return 0;
    });
}

}  // namespace

int luPanel(char type, int m, int n, void* /*a*/, int /*lda*/, int* ipiv) {
    const Entry entry;
    spend(luPanelSeconds(state().machine, elementOf(type), m, n));
    randomPivots(m, n, ipiv);
    return 0;
}

// Half the work of an LU factorisation. The diagonal, which is looked at, becomes ones.
int choleskyBlock(char type, char /*uplo*/, int n, void* a, int lda) {
    const Entry entry;
    spend(luPanelSeconds(state().machine, elementOf(type), n, n) / 2);
    writeOnes(type, n, a, lda);
    return 0;
}

int qrPanel(char type, int m, int n, void* /*a*/, int /*lda*/, void* /*t*/, int /*ldt*/) {
    const Entry entry;
    spend(qrPanelSeconds(state().machine, elementOf(type), m, n));
    return 0;
}

int qrTail(char type, int m, int n, void* /*a*/, int /*lda*/, void* /*tau*/, void* work, int size) {
    const Entry entry;
    return answering(type, work, size, [&] {
        spend(qrPanelSeconds(state().machine, elementOf(type), std::max(m, n), std::min(m, n)));
    });
}

int bidiagonalTail(char type, int m, int n, void* /*a*/, int /*lda*/, void* d, void* e,
                   void* /*tauq*/, void* /*taup*/, void* work, int size) {
    const Entry entry;
    return answering(type, work, size, [&] {
        const double k = std::min(m, n), longer = std::max(m, n);
        spend(bidiagonalSeconds(state().machine, elementOf(type), 4 * k * k * (longer - k / 3)));
        norms(type, d, int(k), int(longer));
        norms(type, e, int(k) - 1, int(k) - 1);
    });
}

// The diagonal, which is looked at, becomes ones.
int luSystem(char type, int n, int nrhs, void* a, int lda, int* ipiv, void* /*b*/, int /*ldb*/) {
    const Entry entry;
    const Element e = elementOf(type);
    spend(luPanelSeconds(state().machine, e, n, n) +
          double(n) * n * nrhs * e.flops / state().machine.luTall.at(n));
    randomPivots(n, n, ipiv);
    writeOnes(type, n, a, lda);
    return 0;
}

int eigenproblem(char type, char jobz, char /*uplo*/, int n, void* /*a*/, int /*lda*/, void* /*w*/,
                 void* /*work*/, int /*size*/, void* /*rwork*/, int /*realSize*/, int* /*iwork*/,
                 int /*integers*/) {
    const Entry entry;
    spend(bidiagonalSeconds(state().machine, elementOf(type),
                            (jobz == 'N' ? 4. / 3 : 14. / 3) * n * n * n));
    return 0;
}

// Asked for its workspace, it takes no time and leaves the caller's question as it was.
int dividedSvd(char type, char jobz, int m, int n, void* /*a*/, int /*lda*/, void* /*s*/,
               void* /*u*/, int /*ldu*/, void* /*vt*/, int /*ldvt*/, void* /*work*/, int size,
               void* /*rwork*/, int* /*iwork*/) {
    if (size < 0) return 0;
    const Entry entry;
    const double k = std::min(m, n), longer = std::max(m, n);
    spend(bidiagonalSeconds(state().machine, elementOf(type),
                            4 * k * k * longer + (jobz == 'N' ? 0 : 9) * k * k * k));
    return 0;
}

int svd(char type, char jobu, char jobvt, int m, int n, void* /*a*/, int /*lda*/, void* /*s*/,
        void* /*u*/, int /*ldu*/, void* /*vt*/, int /*ldvt*/, void* /*work*/, int /*size*/,
        void* /*rwork*/) {
    const Entry entry;
    const double k = std::min(m, n), longer = std::max(m, n);
    const bool vectors = jobu != 'N' || jobvt != 'N';
    spend(bidiagonalSeconds(state().machine, elementOf(type),
                            (vectors ? 13 : 4) * k * k * longer + (vectors ? 8 : 0) * k * k * k));
    return 0;
}

}  // namespace timeline
