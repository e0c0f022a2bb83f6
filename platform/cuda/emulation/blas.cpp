// The routines of CUBLAS that the library uses, over the CPU's BLAS, and handles.
#include "platform/cuda/emulation/blas_call.h"

#include <set>

#include "platform/cpu/blas.h"

namespace emulated {
namespace {

constexpr std::ptrdiff_t handleBytes = std::ptrdiff_t(32) << 20;  // that CUBLAS takes of the device

std::set<cublasHandle_t>& handles() {
    static auto* all = new std::set<cublasHandle_t>;
    return *all;
}

char letter(cublasOperation_t o) {
    return o == CUBLAS_OP_N ? 'N' : o == CUBLAS_OP_T ? 'T' : 'C';
}
char letter(cublasFillMode_t f) {
    return f == CUBLAS_FILL_MODE_LOWER ? 'L' : 'U';
}
char letter(cublasSideMode_t s) {
    return s == CUBLAS_SIDE_LEFT ? 'L' : 'R';
}
char letter(cublasDiagType_t d) {
    return d == CUBLAS_DIAG_UNIT ? 'U' : 'N';
}

// CUBLAS's own numbers.
template <class T>
using Native = decltype(platform::ofType<T>(float(), double(), cuComplex(), cuDoubleComplex()));

// By the names of platform/entries.inc; "Sgemm" for each type.
template <class T>
struct Names {
#define BLAS_ENTRY(name, S, D, C, Z, parameters) \
    static constexpr const char* name = platform::ofType<T>(#S, #D, #C, #Z);
#include "platform/entries.inc"
};

template <class T>
struct Cublas {
    using N = Native<T>;
    using Real = platform::RealOf<T>;
    using Handle = cublasHandle_t;
    using Names = emulated::Names<T>;

    static cublasStatus_t copy(Handle h, int n, const N* x, int incx, N* y, int incy) {
        const Call call;
        return blasCall<T>(h, Names::copy, platform::vectorOperands(n, x, incx, y, incy), '-',
                           [=](auto at) { cpu::copy<T>(n, at[0], incx, at[1], incy); });
    }
    static cublasStatus_t swap(Handle h, int n, N* x, int incx, N* y, int incy) {
        const Call call;
        return blasCall<T>(h, Names::swap, platform::vectorOperands(n, x, incx, y, incy), '-',
                           [=](auto at) { cpu::swap<T>(n, at[0], incx, at[1], incy); });
    }
    static cublasStatus_t scal(Handle h, int n, const N* alpha, N* x, int incx) {
        const Call call;
        return blasCall<T>(
            h, Names::scal, platform::vectorOperands(n, x, incx), '-',
            [=, a = scalar<T>(alpha, Names::scal)](auto at) { cpu::scal<T>(n, a, at[0], incx); });
    }
    static cublasStatus_t axpy(Handle h, int n, const N* alpha, const N* x, int incx, N* y,
                               int incy) {
        const Call call;
        return blasCall<T>(h, Names::axpy, platform::vectorOperands(n, x, incx, y, incy), '-',
                           [=, a = scalar<T>(alpha, Names::axpy)](auto at) {
                               cpu::axpy<T>(n, a, at[0], incx, at[1], incy);
                           });
    }
    static cublasStatus_t rot(Handle h, int n, N* x, int incx, N* y, int incy, const Real* c,
                              const Real* s) {
        const Call call;
        return blasCall<T>(
            h, Names::rot, platform::vectorOperands(n, x, incx, y, incy), '-',
            [=, cosine = scalar<Real>(c, Names::rot), sine = scalar<Real>(s, Names::rot)](auto at) {
                cpu::rot<T>(n, at[0], incx, at[1], incy, cosine, sine);
            });
    }
    static cublasStatus_t symv(Handle h, cublasFillMode_t uplo, int n, const N* alpha, const N* a,
                               int lda, const N* x, int incx, const N* beta, N* y, int incy) {
        const Call call;
        const char u = letter(uplo);
        return blasCall<T>(
            h, Names::symv, platform::symvOperands(u, n, a, lda, x, incx, y, incy), 'A',
            [=, al = scalar<T>(alpha, Names::symv), be = scalar<T>(beta, Names::symv)](auto at) {
                cpu::symv<T>(u, n, al, at[0], lda, at[1], incx, be, at[2], incy);
            });
    }
    static cublasStatus_t trmv(Handle h, cublasFillMode_t uplo, cublasOperation_t trans,
                               cublasDiagType_t diag, int n, const N* a, int lda, N* x, int incx) {
        const Call call;
        const char u = letter(uplo), t = letter(trans), d = letter(diag);
        return blasCall<T>(h, Names::trmv, platform::trmvOperands(u, t, d, n, a, lda, x, incx), 'A',
                           [=](auto at) { cpu::trmv<T>(u, t, d, n, at[0], lda, at[1], incx); });
    }
    static cublasStatus_t gemv(Handle h, cublasOperation_t trans, int m, int n, const N* alpha,
                               const N* a, int lda, const N* x, int incx, const N* beta, N* y,
                               int incy) {
        const Call call;
        const char t = letter(trans);
        return blasCall<T>(
            h, Names::gemv, platform::gemvOperands(t, m, n, a, lda, x, incx, y, incy), 'A',
            [=, al = scalar<T>(alpha, Names::gemv), be = scalar<T>(beta, Names::gemv)](auto at) {
                cpu::gemv<T>(t, m, n, al, at[0], lda, at[1], incx, be, at[2], incy);
            });
    }
    static cublasStatus_t gemm(Handle h, cublasOperation_t transa, cublasOperation_t transb, int m,
                               int n, int k, const N* alpha, const N* a, int lda, const N* b,
                               int ldb, const N* beta, N* c, int ldc) {
        const Call call;
        const char ta = letter(transa), tb = letter(transb);
        return blasCall<T>(
            h, Names::gemm, platform::gemmOperands(ta, tb, m, n, k, a, lda, b, ldb, c, ldc), 'A',
            [=, al = scalar<T>(alpha, Names::gemm), be = scalar<T>(beta, Names::gemm)](auto at) {
                cpu::gemm<T>(ta, tb, m, n, k, al, at[0], lda, at[1], ldb, be, at[2], ldc);
            });
    }
    static cublasStatus_t symm(Handle h, cublasSideMode_t side, cublasFillMode_t uplo, int m, int n,
                               const N* alpha, const N* a, int lda, const N* b, int ldb,
                               const N* beta, N* c, int ldc) {
        const Call call;
        const char s = letter(side), u = letter(uplo);
        return blasCall<T>(
            h, Names::symm, platform::symmOperands(s, u, m, n, a, lda, b, ldb, c, ldc), 'A',
            [=, al = scalar<T>(alpha, Names::symm), be = scalar<T>(beta, Names::symm)](auto at) {
                cpu::symm<T>(s, u, m, n, al, at[0], lda, at[1], ldb, be, at[2], ldc);
            });
    }
    static cublasStatus_t syrk(Handle h, cublasFillMode_t uplo, cublasOperation_t trans, int n,
                               int k, const N* alpha, const N* a, int lda, const N* beta, N* c,
                               int ldc) {
        const Call call;
        const char u = letter(uplo), t = letter(trans);
        return blasCall<T>(
            h, Names::syrk,
            platform::syrkOperands(u, t, platform::symmetricTransposes<T>, n, k, a, lda, c, ldc), u,
            [=, al = scalar<T>(alpha, Names::syrk), be = scalar<T>(beta, Names::syrk)](auto at) {
                cpu::syrk<T>(u, t, n, k, al, at[0], lda, be, at[1], ldc);
            });
    }
    // The diagonal is real: no noise, which would make it complex.
    static cublasStatus_t herk(Handle h, cublasFillMode_t uplo, cublasOperation_t trans, int n,
                               int k, const Real* alpha, const N* a, int lda, const Real* beta,
                               N* c, int ldc) {
        const Call call;
        const char u = letter(uplo), t = letter(trans);
        return blasCall<T>(
            h, Names::herk,
            platform::syrkOperands(u, t, platform::hermitianTransposes<T>, n, k, a, lda, c, ldc),
            '-',
            [=, al = scalar<Real>(alpha, Names::herk), be = scalar<Real>(beta, Names::herk)](
                auto at) { cpu::herk<T>(u, t, n, k, al, at[0], lda, be, at[1], ldc); });
    }
    static cublasStatus_t syr2k(Handle h, cublasFillMode_t uplo, cublasOperation_t trans, int n,
                                int k, const N* alpha, const N* a, int lda, const N* b, int ldb,
                                const Real* beta, N* c, int ldc) {
        const Call call;
        const char u = letter(uplo), t = letter(trans);
        return blasCall<T>(h, Names::syr2k,
                           platform::syr2kOperands(u, t, platform::hermitianTransposes<T>, n, k, a,
                                                   lda, b, ldb, c, ldc),
                           platform::isComplex<T> ? '-' : u,
                           [=, al = scalar<T>(alpha, Names::syr2k),
                            be = scalar<Real>(beta, Names::syr2k)](auto at) {
                               cpu::syr2k<T>(u, t, n, k, al, at[0], lda, at[1], ldb, be, at[2],
                                             ldc);
                           });
    }
    // Out of place, or with B as the place.
    static cublasStatus_t trmm(Handle h, cublasSideMode_t side, cublasFillMode_t uplo,
                               cublasOperation_t trans, cublasDiagType_t diag, int m, int n,
                               const N* alpha, const N* a, int lda, const N* b, int ldb, N* c,
                               int ldc) {
        const Call call;
        const char s = letter(side), u = letter(uplo), t = letter(trans), d = letter(diag);
        const auto two = platform::triangularOperands(s, u, t, d, m, n, a, lda, b, ldb);
        const auto three = platform::operands(two.valid, two.each[0], two.each[1],
                                              platform::BlasOperand{c, m, n, ldc});
        return blasCall<T>(
            h, Names::trmm, three, 'A', [=, al = scalar<T>(alpha, Names::trmm)](auto at) {
                for (int j = 0; j < n && at[1] != at[2]; ++j)
                    std::copy_n(at[1] + std::size_t(j) * ldb, m, at[2] + std::size_t(j) * ldc);
                cpu::trmm<T>(s, u, t, d, m, n, al, at[0], lda, at[2], ldc);
            });
    }
    static cublasStatus_t trsm(Handle h, cublasSideMode_t side, cublasFillMode_t uplo,
                               cublasOperation_t trans, cublasDiagType_t diag, int m, int n,
                               const N* alpha, const N* a, int lda, N* b, int ldb) {
        const Call call;
        const char s = letter(side), u = letter(uplo), t = letter(trans), d = letter(diag);
        return blasCall<T>(h, Names::trsm,
                           platform::triangularOperands(s, u, t, d, m, n, a, lda, b, ldb), 'A',
                           [=, al = scalar<T>(alpha, Names::trsm)](auto at) {
                               cpu::trsm<T>(s, u, t, d, m, n, al, at[0], lda, at[1], ldb);
                           });
    }
};

// CUBLAS's names for the functions above, which have CUBLAS's types.
#define ALIAS(symbol, ...)                                                                     \
    static_assert(std::is_same_v<decltype(&__VA_ARGS__), decltype(&symbol)>);                  \
    asm volatile(".globl " NAME(symbol) "\n\t.type " NAME(symbol) ", @function\n\t.set " NAME( \
        symbol) ", %c0" ::"i"(&__VA_ARGS__))
#define NAME(symbol) TEXT(symbol)
#define TEXT(symbol) #symbol

[[gnu::used]] void exports() {
    using C8 = std::complex<float>;
    using C16 = std::complex<double>;
#define BLAS_ENTRY(name, S, D, C, Z, parameters) \
    ALIAS(S, Cublas<float>::name);               \
    ALIAS(D, Cublas<double>::name);              \
    COMPLEX_BLAS_ENTRY(name, S, D, C, Z, parameters)
#define COMPLEX_BLAS_ENTRY(name, S, D, C, Z, parameters) \
    ALIAS(C, Cublas<C8>::name);                          \
    ALIAS(Z, Cublas<C16>::name);
#include "platform/entries.inc"
}

}  // namespace

bool usable(cublasHandle_t handle, const char* name, cublasStatus_t& status) {
    constexpr std::size_t prefix = 6;  // "cublas"
    count("cublas");
    count(std::string("cublas ") + (name + prefix));
    if (!handles().count(handle)) {
        found(Kind::operand, "%s: a handle that does not exist", name);
        status = CUBLAS_STATUS_NOT_INITIALIZED;
    } else if (stickyError()) {
        status = CUBLAS_STATUS_EXECUTION_FAILED;
    } else if (failsNow("cublas")) {
        status = CUBLAS_STATUS_INTERNAL_ERROR;
    } else {
        if (handle->device != currentDevice())
            found(Kind::device, "%s: a handle of device %d on device %d", name, handle->device,
                  currentDevice());
        return true;
    }
    return false;
}

}  // namespace emulated

using namespace emulated;

extern "C" {

cublasStatus_t cublasCreate_v2(cublasHandle_t* handle) {
    const Call call;
    *handle = nullptr;
    if (stickyError() || shortOfMemory(handleBytes)) return CUBLAS_STATUS_NOT_INITIALIZED;
    count("handle");
    useMemory(handleBytes);
    *handle = new cublasContext{currentDevice(), nullptr};
    handles().insert(*handle);
    return CUBLAS_STATUS_SUCCESS;
}

cublasStatus_t cublasDestroy_v2(cublasHandle_t handle) {
    const Call call;
    if (!handles().erase(handle)) {
        found(Kind::operand, "cublasDestroy: a handle that does not exist");
        return CUBLAS_STATUS_NOT_INITIALIZED;
    }
    completeDevice(handle->device);
    useMemory(-handleBytes);
    delete handle;
    return CUBLAS_STATUS_SUCCESS;
}

cublasStatus_t cublasSetStream_v2(cublasHandle_t handle, cudaStream_t stream) {
    const Call call;
    if (!handles().count(handle)) return CUBLAS_STATUS_NOT_INITIALIZED;
    if (!streamOf(stream)) return CUBLAS_STATUS_INVALID_VALUE;
    handle->stream = stream;
    return CUBLAS_STATUS_SUCCESS;
}
}
