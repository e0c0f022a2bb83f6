#include "platform/host_lapack.h"

#include <optional>

#include "platform/blas_threads.h"

extern "C" {
void sgetrf_(const int* m, const int* n, void* a, const int* lda, int* ipiv, int* info);
decltype(sgetrf_) dgetrf_, cgetrf_, zgetrf_;
void sgesv_(const int* n, const int* nrhs, void* a, const int* lda, int* ipiv, void* b,
            const int* ldb, int* info);
decltype(sgesv_) dgesv_, cgesv_, zgesv_;
void sgeqrt3_(const int* m, const int* n, void* a, const int* lda, void* t, const int* ldt,
              int* info);
decltype(sgeqrt3_) dgeqrt3_, cgeqrt3_, zgeqrt3_;
void sgeqrf_(const int* m, const int* n, void* a, const int* lda, void* tau, void* work,
             const int* lwork, int* info);
decltype(sgeqrf_) dgeqrf_, cgeqrf_, zgeqrf_;
void sgebrd_(const int* m, const int* n, void* a, const int* lda, void* d, void* e, void* tauq,
             void* taup, void* work, const int* lwork, int* info);
decltype(sgebrd_) dgebrd_, cgebrd_, zgebrd_;
void sgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, void* a,
             const int* lda, void* s, void* u, const int* ldu, void* vt, const int* ldvt,
             void* work, const int* lwork, int* info, std::size_t, std::size_t);
decltype(sgesvd_) dgesvd_;
void cgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, void* a,
             const int* lda, void* s, void* u, const int* ldu, void* vt, const int* ldvt,
             void* work, const int* lwork, void* rwork, int* info, std::size_t, std::size_t);
decltype(cgesvd_) zgesvd_;
}

namespace platform {
namespace {

template <class Routine>
Routine* select(char type, Routine* s, Routine* d, Routine* c, Routine* z) {
    return type == 'S' ? s : type == 'D' ? d : type == 'C' ? c : z;
}

// call(&info) on so many threads.
template <PanelThreads threads, class Call>
int infoOf(Call call) {
    std::optional<OneBlasThread> alone;
    if (threads == PanelThreads::one) alone.emplace();
    int info = 0;
    call(&info);
    return info;
}

template <PanelThreads threads>
void fill(Table& t) {
    if (!t.luPanel)
        t.luPanel = [](char type, int m, int n, void* a, int lda, int* ipiv) {
            auto* getrf = select(type, sgetrf_, dgetrf_, cgetrf_, zgetrf_);
            return infoOf<threads>([&](int* info) { getrf(&m, &n, a, &lda, ipiv, info); });
        };
    if (!t.luSystem)
        t.luSystem = [](char type, int n, int nrhs, void* a, int lda, int* ipiv, void* b, int ldb) {
            auto* gesv = select(type, sgesv_, dgesv_, cgesv_, zgesv_);
            return infoOf<threads>(
                [&](int* info) { gesv(&n, &nrhs, a, &lda, ipiv, b, &ldb, info); });
        };
    if (!t.qrPanel)
        t.qrPanel = [](char type, int m, int n, void* a, int lda, void* factor, int ld) {
            auto* geqrt3 = select(type, sgeqrt3_, dgeqrt3_, cgeqrt3_, zgeqrt3_);
            return infoOf<threads>([&](int* info) { geqrt3(&m, &n, a, &lda, factor, &ld, info); });
        };
    if (!t.qrTail)
        t.qrTail = [](char type, int m, int n, void* a, int lda, void* tau, void* work, int size) {
            auto* geqrf = select(type, sgeqrf_, dgeqrf_, cgeqrf_, zgeqrf_);
            return infoOf<threads>(
                [&](int* info) { geqrf(&m, &n, a, &lda, tau, work, &size, info); });
        };
    if (!t.bidiagonalTail)
        t.bidiagonalTail = [](char type, int m, int n, void* a, int lda, void* d, void* e,
                              void* tauq, void* taup, void* work, int size) {
            auto* gebrd = select(type, sgebrd_, dgebrd_, cgebrd_, zgebrd_);
            return infoOf<threads>(
                [&](int* info) { gebrd(&m, &n, a, &lda, d, e, tauq, taup, work, &size, info); });
        };
    if (!t.svd)
        t.svd = [](char type, char jobu, char jobvt, int m, int n, void* a, int lda, void* s,
                   void* u, int ldu, void* vt, int ldvt, void* work, int size, void* rwork) {
            return infoOf<threads>([&](int* info) {
                if (type == 'S' || type == 'D')
                    (type == 'S' ? sgesvd_ : dgesvd_)(&jobu, &jobvt, &m, &n, a, &lda, s, u, &ldu,
                                                      vt, &ldvt, work, &size, info, 1, 1);
                else
                    (type == 'C' ? cgesvd_ : zgesvd_)(&jobu, &jobvt, &m, &n, a, &lda, s, u, &ldu,
                                                      vt, &ldvt, work, &size, rwork, info, 1, 1);
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
