#include "platform/host_lapack.h"

#include <optional>

#include "platform/blas_threads.h"
#include "platform/cpu/lapack.h"
#include "platform/cpu/qr_panel.h"

namespace platform {
namespace {

// An array of the element type that a routine takes it for.
struct Array {
    void* elements;
    template <class T>
    operator T*() const {
        return static_cast<T*>(elements);
    }
};

// The info of call(a zero of the letter's type), on so many threads.
template <PanelThreads threads, class Call>
int infoOf(char type, Call call) {
    std::optional<OneBlasThread> alone;
    if (threads == PanelThreads::one) alone.emplace();
    return withType(type, call);
}

template <PanelThreads threads>
void fill(Table& t) {
    if (!t.luPanel)
        t.luPanel = [](char type, int m, int n, void* a, int lda, int* ipiv) {
            return infoOf<threads>(type, [&](auto zero) {
                return cpu::getrf<decltype(zero)>(m, n, Array{a}, lda, ipiv);
            });
        };
    if (!t.luSystem)
        t.luSystem = [](char type, int n, int nrhs, void* a, int lda, int* ipiv, void* b, int ldb) {
            return infoOf<threads>(type, [&](auto zero) {
                return cpu::gesv<decltype(zero)>(n, nrhs, Array{a}, lda, ipiv, Array{b}, ldb);
            });
        };
    if (!t.qrPanel)
        t.qrPanel = [](char type, int m, int n, void* a, int lda, void* factor, int ld) {
            return infoOf<threads>(type, [&](auto zero) {
                cpu::qrPanel<decltype(zero)>(m, n, Array{a}, lda, Array{factor}, ld);
                return 0;
            });
        };
    if (!t.choleskyBlock)
        t.choleskyBlock = [](char type, char uplo, int n, void* a, int lda) {
            return infoOf<threads>(type, [&](auto zero) {
                return cpu::potrf<decltype(zero)>(uplo, n, Array{a}, lda);
            });
        };
    if (!t.tridiagonal)
        t.tridiagonal = [](char type, int n, void* d, void* e, void* z, int ldz, void* work) {
            return infoOf<threads>(type, [&](auto zero) {
                using R = RealOf<decltype(zero)>;
                if (!z) return cpu::sterf<R>(n, Array{d}, Array{e});
                return cpu::steqr<R>('I', n, Array{d}, Array{e}, Array{z}, ldz, Array{work});
            });
        };
    if (!t.bidiagonal)
        t.bidiagonal = [](char type, int extra, int n, void* d, void* e, void* vt, int ldvt,
                          void* u, int ldu, void* work) {
            return infoOf<threads>(type, [&](auto zero) {
                using R = RealOf<decltype(zero)>;
                return cpu::lasdq<R>('U', extra, n, n + extra, n, 0, Array{d}, Array{e}, Array{vt},
                                     ldvt, Array{u}, ldu, Array{work}, 1, Array{work});
            });
        };
    if (!t.qrTail)
        t.qrTail = [](char type, int m, int n, void* a, int lda, void* tau, void* work, int size) {
            return infoOf<threads>(type, [&](auto zero) {
                return cpu::geqrf<decltype(zero)>(m, n, Array{a}, lda, Array{tau}, Array{work},
                                                  size);
            });
        };
    if (!t.bidiagonalTail)
        t.bidiagonalTail = [](char type, int m, int n, void* a, int lda, void* d, void* e,
                              void* tauq, void* taup, void* work, int size) {
            return infoOf<threads>(type, [&](auto zero) {
                return cpu::gebrd<decltype(zero)>(m, n, Array{a}, lda, Array{d}, Array{e},
                                                  Array{tauq}, Array{taup}, Array{work}, size);
            });
        };
    if (!t.svd)
        t.svd = [](char type, char jobu, char jobvt, int m, int n, void* a, int lda, void* s,
                   void* u, int ldu, void* vt, int ldvt, void* work, int size, void* rwork) {
            return infoOf<threads>(type, [&](auto zero) {
                const auto call = [&](auto... realWork) {
                    return cpu::gesvd<decltype(zero)>(jobu, jobvt, m, n, Array{a}, lda, Array{s},
                                                      Array{u}, ldu, Array{vt}, ldvt, Array{work},
                                                      size, realWork...);
                };
                if constexpr (isComplex<decltype(zero)>)
                    return call(Array{rwork});
                else
                    return call();
            });
        };
    if (!t.dividedSvd)
        t.dividedSvd = [](char type, char jobz, int m, int n, void* a, int lda, void* s, void* u,
                          int ldu, void* vt, int ldvt, void* work, int size, void* rwork,
                          int* iwork) {
            return infoOf<threads>(type, [&](auto zero) {
                const auto call = [&](auto... realWork) {
                    return cpu::gesdd<decltype(zero)>(jobz, m, n, Array{a}, lda, Array{s}, Array{u},
                                                      ldu, Array{vt}, ldvt, Array{work}, size,
                                                      realWork..., iwork);
                };
                if constexpr (isComplex<decltype(zero)>)
                    return call(Array{rwork});
                else
                    return call();
            });
        };
    if (!t.eigenproblem)
        t.eigenproblem = [](char type, char jobz, char uplo, int n, void* a, int lda, void* w,
                            void* work, int size, void* rwork, int realSize, int* iwork,
                            int integers) {
            return infoOf<threads>(type, [&](auto zero) {
                const auto call = [&](auto... realWork) {
                    return cpu::syevd<decltype(zero)>(jobz, uplo, n, Array{a}, lda, Array{w},
                                                      Array{work}, size, realWork..., iwork,
                                                      integers);
                };
                if constexpr (isComplex<decltype(zero)>)
                    return call(Array{rwork}, realSize);
                else
                    return call();
            });
        };
    if (!t.panelWidth) t.panelWidth = [](Panel, char, int, int) { return 0; };
    if (!t.sharesMemory) t.sharesMemory = [] { return 0; };
}

}  // namespace

void fillOptional(Table& table, PanelThreads threads) {
    if (threads == PanelThreads::one)
        fill<PanelThreads::one>(table);
    else
        fill<PanelThreads::ofLibrary>(table);
}

}  // namespace platform
