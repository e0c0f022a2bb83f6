/* Lumo: dense linear algebra on NVIDIA GPUs.
 *
 * Every function here returns a lumoStatus, except those that cannot fail. Matrices are
 * column-major; a leading dimension counts elements and is at least max(1, rows). Sizes, leading
 * dimensions and pivots are 32-bit; pivots are 1-based, as in LAPACK.
 *
 * lumoX...       takes matrices in host memory. They are copied to the device, worked on, and
 *                copied back before the function returns.
 * lumoDeviceX... takes matrices in device memory, aligned to whole elements (8 or 16 bytes for
 *                complex ones), and works on them in place.
 *
 * Character arguments may be upper or lower case. Every call is synchronous. Each thread that
 * calls a compute function calls lumoInitialize first and lumoShutdown when it is done.
 */
#ifndef LUMO_H
#define LUMO_H

#if defined(__GNUC__)
#define LUMO_API __attribute__((visibility("default")))
#else
#define LUMO_API
#endif

/* To C++ an enumeration has only so many bits as its values; a caller's may be any int. */
#if defined(__cplusplus) && __cplusplus >= 201103L
#define LUMO_ANY_INT : int
#else
#define LUMO_ANY_INT
#endif

#ifdef __cplusplus
#ifdef LUMO_COMPLEX_NATIVE
#include <complex>
#endif
extern "C" {
#endif

/* The outcome of a call. `info`, read by lumoGetErrorInfo, says more about some of them; it is 0
 * for 0, 2, 3, 5 and 6, and left as it was by 1 and 4. */
typedef enum lumoStatus LUMO_ANY_INT {
    lumoNoError = 0,
    lumoNotInitialized = 1,
    lumoNoHardware = 2,
    lumoInsufficientRuntime = 3,           /* CUDA runtime or driver too old */
    lumoInsufficientComputeCapability = 4, /* double precision on a device without it */
    lumoInsufficientMemory = 5,            /* on the device or on the host */
    lumoFeatureNotImplemented = 6,
    lumoArgumentError = 7, /* info: minus the 1-based position of the bad argument */
    lumoDataError = 8,     /* info: a positive position in the data, e.g. of a zero pivot */
    lumoBlasError = 9,     /* info: the CUBLAS status */
    lumoRuntimeError = 10  /* info: the CUDA error code, or -1 for an unknown failure */
} lumoStatus;

/* Complex numbers: real part, imaginary part; the layout of C99's and C++'s complex types. A
 * program that defines LUMO_COMPLEX_NATIVE before it includes this header has these types
 * themselves here, float _Complex or std::complex<float>. By value, too, they are passed as the
 * structures are on x86-64 (System V) and AArch64; that is not promised elsewhere. */
#ifndef LUMO_COMPLEX_NATIVE
typedef struct lumoFloatComplex {
    float re, im;
} lumoFloatComplex;
typedef struct lumoDoubleComplex {
    double re, im;
} lumoDoubleComplex;
#elif !defined(__x86_64__) && !defined(__aarch64__)
#error "LUMO_COMPLEX_NATIVE: not known to be passed by value as the structures are"
#elif defined(__cplusplus)
typedef std::complex<float> lumoFloatComplex;
typedef std::complex<double> lumoDoubleComplex;
#else
typedef float _Complex lumoFloatComplex;
typedef double _Complex lumoDoubleComplex;
#endif

/* ---- Initialisation ---------------------------------------------------------------------- */

/* Registers the calling thread; the first success also picks the best device (unless one was
 * selected), starts CUBLAS and makes every compute function available. May be called again.
 * Status 2: no usable device. 3: CUDA runtime or driver older than 3.2, or driver older than the
 * runtime. 5: no memory to start CUBLAS. 10: another CUDA error, in info. After a failure it may
 * be called again. */
LUMO_API lumoStatus lumoInitialize(void);

/* Unregisters the calling thread and frees its cached buffers; the last registered thread shuts
 * the library down. Safe to call at any time. */
LUMO_API void lumoShutdown(void);

/* Frees the device buffers that the library keeps for this thread's next calls. */
LUMO_API void lumoFreeBuffers(void);

/* ---- What happened ----------------------------------------------------------------------- */

/* The last status and its info, as the most recent call of any thread stored them. Those of the
 * calling thread alone are in lumo_thread.h. */
LUMO_API lumoStatus lumoGetLastStatus(void);
LUMO_API int lumoGetErrorInfo(void);

/* The text of a status; "Invalid lumoStatus" for any other value. Never null. */
LUMO_API const char* lumoGetStatusString(lumoStatus status);

/* Writes what `status` and `info` mean together to buffer[0 .. bufferSize-1], cut to fit and
 * always terminated. It is a call like any other: the last status and info are its own afterwards,
 * so read the info first. Status 7, info -1: no such status; -3: null buffer; -4: bufferSize < 1.
 */
LUMO_API lumoStatus lumoGetErrorInfoString(lumoStatus status, int info, char* buffer,
                                           int bufferSize);

/* ---- Devices ----------------------------------------------------------------------------- */

/* Those that need no initialisation return status 10, info 35, where CUDA was asked for and cannot
 * run (lumoInitialize: status 3), and report errors of the device left over from earlier calls. */

/* The number of usable devices, 0 without error where there is none. Status 7, info -1: null. */
LUMO_API lumoStatus lumoGetDeviceCount(int* count);

/* Chooses the device to run on, before lumoInitialize. Status 7, info -1: no such device.
 * Status 10, info 36: a device is already active in this process, be it the same one. */
LUMO_API lumoStatus lumoSelectDevice(int device);

/* The device in use. Status 1 before lumoInitialize; status 7, info -1: null. */
LUMO_API lumoStatus lumoGetExecutingDevice(int* device);

/* Writes a device's name and memory, as "GeForce (4 GB)", to buffer[0 .. bufferSize-1], cut to
 * fit and always terminated. Status 7, info -1: no such device; -2: null buffer;
 * -3: bufferSize < 1. */
LUMO_API lumoStatus lumoGetDeviceInfo(int device, char* buffer, int bufferSize);

/* ---- BLAS --------------------------------------------------------------------------------- */

/* Arguments and storage are those of the reference BLAS, scalars are passed by value. op(X) is X,
 * its transpose or its conjugate transpose as a letter is "N", "T" or "C"; X' is a transpose, the
 * conjugate one where a letter or a comment says so. Of a symmetric, Hermitian or triangular matrix
 * only the triangle that uplo names is read or written.
 *
 * D and Z need a device of capability 1.3 (status 4, before any argument is looked at). Status 7
 * comes from the argument checks, with the first bad argument in info; they differ a little from
 * each other: some take a leading dimension of 0 for a matrix without rows, some want 1. Null
 * operands are fine where the sizes leave nothing to do, and status 10, info 11, where only C is
 * left to scale and is null. Status 9: CUBLAS failed, its status in info. The host functions leave
 * the result as it was if an argument is bad or the device has no memory (status 5).
 *
 * A large product may be several of CUBLAS's. If one of these fails (status 9 or 10), a result that
 * is also read is left partly updated, in host memory, too; the host functions leave one that is
 * only written as it was. Of all host functions of this header: if copying a result back fails when
 * the work has succeeded, the call returns 0 nevertheless, and the result is not written. */

/* C = alpha op(A) op(B) + beta C, C m x n, op(A) m x k, op(B) k x n. With beta = 0 C is not read,
 * and a host C not copied to the device.
 *
 * Status 7, info -1, -2: transa, transb; -3, -4, -5: m, n, k < 0; -8: lda < rows of A; -10:
 * ldb < rows of B; -13: ldc < m; -7, -9, -12: null a, b, c while m, n, k > 0. The device functions
 * check nothing of this and leave it to CUBLAS: status 9, info 7. Null operands: status 10. */
LUMO_API lumoStatus lumoSgemm(char transa, char transb, int m, int n, int k, float alpha,
                              const float* a, int lda, const float* b, int ldb, float beta,
                              float* c, int ldc);
LUMO_API lumoStatus lumoDgemm(char transa, char transb, int m, int n, int k, double alpha,
                              const double* a, int lda, const double* b, int ldb, double beta,
                              double* c, int ldc);
LUMO_API lumoStatus lumoCgemm(char transa, char transb, int m, int n, int k, lumoFloatComplex alpha,
                              const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                              int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZgemm(char transa, char transb, int m, int n, int k,
                              lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                              const lumoDoubleComplex* b, int ldb, lumoDoubleComplex beta,
                              lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceSgemm(char transa, char transb, int m, int n, int k, float alpha,
                                    const float* a, int lda, const float* b, int ldb, float beta,
                                    float* c, int ldc);
LUMO_API lumoStatus lumoDeviceDgemm(char transa, char transb, int m, int n, int k, double alpha,
                                    const double* a, int lda, const double* b, int ldb, double beta,
                                    double* c, int ldc);
LUMO_API lumoStatus lumoDeviceCgemm(char transa, char transb, int m, int n, int k,
                                    lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                                    const lumoFloatComplex* b, int ldb, lumoFloatComplex beta,
                                    lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZgemm(char transa, char transb, int m, int n, int k,
                                    lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                                    const lumoDoubleComplex* b, int ldb, lumoDoubleComplex beta,
                                    lumoDoubleComplex* c, int ldc);

/* y = alpha op(A) x + beta y, A m x n. If m or n is 0, y is left as it is, whatever beta, as in the
 * reference BLAS. Increments may be negative, as in BLAS: the first element is
 * then the last in memory. With an increment of 0 CUBLAS refuses: status 9, info 7.
 *
 * Status 7, info -1: trans; -2, -3: m, n < 0; -5: null a; -6: lda < max(1, m); -7, -10: null x, y,
 * even if m or n is 0. */
LUMO_API lumoStatus lumoSgemv(char trans, int m, int n, float alpha, const float* a, int lda,
                              const float* x, int incx, float beta, float* y, int incy);
LUMO_API lumoStatus lumoDgemv(char trans, int m, int n, double alpha, const double* a, int lda,
                              const double* x, int incx, double beta, double* y, int incy);
LUMO_API lumoStatus lumoCgemv(char trans, int m, int n, lumoFloatComplex alpha,
                              const lumoFloatComplex* a, int lda, const lumoFloatComplex* x,
                              int incx, lumoFloatComplex beta, lumoFloatComplex* y, int incy);
LUMO_API lumoStatus lumoZgemv(char trans, int m, int n, lumoDoubleComplex alpha,
                              const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* x,
                              int incx, lumoDoubleComplex beta, lumoDoubleComplex* y, int incy);
LUMO_API lumoStatus lumoDeviceSgemv(char trans, int m, int n, float alpha, const float* a, int lda,
                                    const float* x, int incx, float beta, float* y, int incy);
LUMO_API lumoStatus lumoDeviceDgemv(char trans, int m, int n, double alpha, const double* a,
                                    int lda, const double* x, int incx, double beta, double* y,
                                    int incy);
LUMO_API lumoStatus lumoDeviceCgemv(char trans, int m, int n, lumoFloatComplex alpha,
                                    const lumoFloatComplex* a, int lda, const lumoFloatComplex* x,
                                    int incx, lumoFloatComplex beta, lumoFloatComplex* y, int incy);
LUMO_API lumoStatus lumoDeviceZgemv(char trans, int m, int n, lumoDoubleComplex alpha,
                                    const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* x,
                                    int incx, lumoDoubleComplex beta, lumoDoubleComplex* y,
                                    int incy);

/* C = alpha A B + beta C (side "L") or alpha B A + beta C (side "R"), C m x n. With beta = 0 C is
 * not read. A is symmetric for S and D. For C and Z, A IS HERMITIAN: lumoCsymm and lumoZsymm
 * compute what lumoChemm and lumoZhemm compute, unlike the reference BLAS.
 *
 * Status 7, info -1, -2: side, uplo; -3, -4: m, n < 0; -7: lda < order of A; -9, -12: ldb, ldc < m;
 * -6, -8, -11: null a, b, c while m, n > 0. */
LUMO_API lumoStatus lumoSsymm(char side, char uplo, int m, int n, float alpha, const float* a,
                              int lda, const float* b, int ldb, float beta, float* c, int ldc);
LUMO_API lumoStatus lumoDsymm(char side, char uplo, int m, int n, double alpha, const double* a,
                              int lda, const double* b, int ldb, double beta, double* c, int ldc);
LUMO_API lumoStatus lumoCsymm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                              const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                              int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZsymm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                              const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                              int ldb, lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceSsymm(char side, char uplo, int m, int n, float alpha, const float* a,
                                    int lda, const float* b, int ldb, float beta, float* c,
                                    int ldc);
LUMO_API lumoStatus lumoDeviceDsymm(char side, char uplo, int m, int n, double alpha,
                                    const double* a, int lda, const double* b, int ldb, double beta,
                                    double* c, int ldc);
LUMO_API lumoStatus lumoDeviceCsymm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                                    const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                                    int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZsymm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                                    const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                                    int ldb, lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoChemm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                              const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                              int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZhemm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                              const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                              int ldb, lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceChemm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                                    const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                                    int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZhemm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                                    const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                                    int ldb, lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc);

/* C = alpha A A' + beta C (trans "N", A n x k) or alpha A' A + beta C (otherwise, A k x n), C n x
 * n. syrk: trans "N" or "T", C symmetric, also where it is complex. herk: trans "N" or "C", A' the
 * conjugate transpose, C Hermitian, alpha and beta real.
 *
 * Status 7, info -1, -2: uplo, trans; -3, -4: n, k < 0; -7: lda < max(1, rows of A);
 * -10: ldc < max(1, n); -6, -9: null a, c while n, k > 0. */
LUMO_API lumoStatus lumoSsyrk(char uplo, char trans, int n, int k, float alpha, const float* a,
                              int lda, float beta, float* c, int ldc);
LUMO_API lumoStatus lumoDsyrk(char uplo, char trans, int n, int k, double alpha, const double* a,
                              int lda, double beta, double* c, int ldc);
LUMO_API lumoStatus lumoCsyrk(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                              const lumoFloatComplex* a, int lda, lumoFloatComplex beta,
                              lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZsyrk(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                              const lumoDoubleComplex* a, int lda, lumoDoubleComplex beta,
                              lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceSsyrk(char uplo, char trans, int n, int k, float alpha,
                                    const float* a, int lda, float beta, float* c, int ldc);
LUMO_API lumoStatus lumoDeviceDsyrk(char uplo, char trans, int n, int k, double alpha,
                                    const double* a, int lda, double beta, double* c, int ldc);
LUMO_API lumoStatus lumoDeviceCsyrk(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                                    const lumoFloatComplex* a, int lda, lumoFloatComplex beta,
                                    lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZsyrk(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                                    const lumoDoubleComplex* a, int lda, lumoDoubleComplex beta,
                                    lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoCherk(char uplo, char trans, int n, int k, float alpha,
                              const lumoFloatComplex* a, int lda, float beta, lumoFloatComplex* c,
                              int ldc);
LUMO_API lumoStatus lumoZherk(char uplo, char trans, int n, int k, double alpha,
                              const lumoDoubleComplex* a, int lda, double beta,
                              lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceCherk(char uplo, char trans, int n, int k, float alpha,
                                    const lumoFloatComplex* a, int lda, float beta,
                                    lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZherk(char uplo, char trans, int n, int k, double alpha,
                                    const lumoDoubleComplex* a, int lda, double beta,
                                    lumoDoubleComplex* c, int ldc);

/* C = alpha A B' + alpha B A' + beta C (trans "N", A and B n x k) or alpha A' B + alpha B' A + beta
 * C (otherwise, k x n), C n x n. syr2k: trans "N" or "T". her2k: trans "N" or "C", A' and B'
 * conjugate transposes, the second alpha conjugated, beta real, C Hermitian. For C and Z, SYR2K IS
 * HERMITIAN: lumoCsyr2k and lumoZsyr2k compute what lumoCher2k and lumoZher2k compute, with "T" for
 * "C" and the real part of beta, unlike the reference BLAS.
 *
 * Status 7, info -1, -2: uplo, trans; -3, -4: n, k < 0; -7, -9: lda, ldb < rows of A; -12: ldc < n;
 * -6, -8, -11: null a, b, c while n, k > 0. */
LUMO_API lumoStatus lumoSsyr2k(char uplo, char trans, int n, int k, float alpha, const float* a,
                               int lda, const float* b, int ldb, float beta, float* c, int ldc);
LUMO_API lumoStatus lumoDsyr2k(char uplo, char trans, int n, int k, double alpha, const double* a,
                               int lda, const double* b, int ldb, double beta, double* c, int ldc);
LUMO_API lumoStatus lumoCsyr2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                               const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                               int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZsyr2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                               const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                               int ldb, lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceSsyr2k(char uplo, char trans, int n, int k, float alpha,
                                     const float* a, int lda, const float* b, int ldb, float beta,
                                     float* c, int ldc);
LUMO_API lumoStatus lumoDeviceDsyr2k(char uplo, char trans, int n, int k, double alpha,
                                     const double* a, int lda, const double* b, int ldb,
                                     double beta, double* c, int ldc);
LUMO_API lumoStatus lumoDeviceCsyr2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                                     const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                                     int ldb, lumoFloatComplex beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZsyr2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                                     const lumoDoubleComplex* a, int lda,
                                     const lumoDoubleComplex* b, int ldb, lumoDoubleComplex beta,
                                     lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoCher2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                               const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                               int ldb, float beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZher2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                               const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                               int ldb, double beta, lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceCher2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                                     const lumoFloatComplex* a, int lda, const lumoFloatComplex* b,
                                     int ldb, float beta, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZher2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                                     const lumoDoubleComplex* a, int lda,
                                     const lumoDoubleComplex* b, int ldb, double beta,
                                     lumoDoubleComplex* c, int ldc);

/* trmm: B = alpha op(A) B (side "L") or alpha B op(A) (side "R"), B m x n, A triangular, with ones
 * on its diagonal if diag is "U". trsm: the same with the inverse of op(A), which is not tested for
 * singularity.
 *
 * Status 7, info -1, -2, -3, -4: side, uplo, transa, diag; -5, -6: m, n < 0; -9: lda < order of A;
 * -11: ldb < m (trmm: either < 1 as well); -8, -10: null a, b while m, n > 0. */
LUMO_API lumoStatus lumoStrmm(char side, char uplo, char transa, char diag, int m, int n,
                              float alpha, const float* a, int lda, float* b, int ldb);
LUMO_API lumoStatus lumoDtrmm(char side, char uplo, char transa, char diag, int m, int n,
                              double alpha, const double* a, int lda, double* b, int ldb);
LUMO_API lumoStatus lumoCtrmm(char side, char uplo, char transa, char diag, int m, int n,
                              lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                              lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoZtrmm(char side, char uplo, char transa, char diag, int m, int n,
                              lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                              lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceStrmm(char side, char uplo, char transa, char diag, int m, int n,
                                    float alpha, const float* a, int lda, float* b, int ldb);
LUMO_API lumoStatus lumoDeviceDtrmm(char side, char uplo, char transa, char diag, int m, int n,
                                    double alpha, const double* a, int lda, double* b, int ldb);
LUMO_API lumoStatus lumoDeviceCtrmm(char side, char uplo, char transa, char diag, int m, int n,
                                    lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                                    lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceZtrmm(char side, char uplo, char transa, char diag, int m, int n,
                                    lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                                    lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoStrsm(char side, char uplo, char transa, char diag, int m, int n,
                              float alpha, const float* a, int lda, float* b, int ldb);
LUMO_API lumoStatus lumoDtrsm(char side, char uplo, char transa, char diag, int m, int n,
                              double alpha, const double* a, int lda, double* b, int ldb);
LUMO_API lumoStatus lumoCtrsm(char side, char uplo, char transa, char diag, int m, int n,
                              lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                              lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoZtrsm(char side, char uplo, char transa, char diag, int m, int n,
                              lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                              lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceStrsm(char side, char uplo, char transa, char diag, int m, int n,
                                    float alpha, const float* a, int lda, float* b, int ldb);
LUMO_API lumoStatus lumoDeviceDtrsm(char side, char uplo, char transa, char diag, int m, int n,
                                    double alpha, const double* a, int lda, double* b, int ldb);
LUMO_API lumoStatus lumoDeviceCtrsm(char side, char uplo, char transa, char diag, int m, int n,
                                    lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                                    lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceZtrsm(char side, char uplo, char transa, char diag, int m, int n,
                                    lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                                    lumoDoubleComplex* b, int ldb);

/* ---- LU factorisation (LAPACK xGETRF) ---------------------------------------------------- */

/* A = P L U with partial pivoting. a: m x n, overwritten by L (unit diagonal not stored) and U.
 * ipiv: min(m, n) pivots; row i was exchanged with row ipiv[i-1]. For the device functions ipiv
 * lies in device memory or in host memory, as the caller likes.
 *
 * Status 7, info -1: m < 0; -2: n < 0; -4: lda < max(1, m); -3, -5: null a, ipiv while m, n > 0.
 * Status 8, info j > 0: U(j, j) is exactly zero, the first such; the factorisation is complete,
 * but U is singular. */
LUMO_API lumoStatus lumoSgetrf(int m, int n, float* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoCgetrf(int m, int n, lumoFloatComplex* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoDeviceSgetrf(int m, int n, float* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoDeviceCgetrf(int m, int n, lumoFloatComplex* a, int lda, int* ipiv);

/* ---- Linear systems (LAPACK xGESV) ------------------------------------------------------- */

/* Solves A X = B by LU factorisation. a: n x n, overwritten by L and U; ipiv: n pivots, as for
 * getrf; b: n x nrhs, overwritten by X.
 *
 * Status 7, info -1: n < 0; -2: nrhs < 0; -4: lda < max(1, n); -7: ldb < max(1, n);
 * -3, -5, -6: null a, ipiv, b while n > 0.
 * Status 8, info j > 0: U(j, j) is exactly zero; a and ipiv hold the factors, b is unchanged. An
 * infinite U(j, j) is no error: its unknown is 0, as in LAPACK's routine. */
LUMO_API lumoStatus lumoSgesv(int n, int nrhs, float* a, int lda, int* ipiv, float* b, int ldb);
LUMO_API lumoStatus lumoCgesv(int n, int nrhs, lumoFloatComplex* a, int lda, int* ipiv,
                              lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceSgesv(int n, int nrhs, float* a, int lda, int* ipiv, float* b,
                                    int ldb);
LUMO_API lumoStatus lumoDeviceCgesv(int n, int nrhs, lumoFloatComplex* a, int lda, int* ipiv,
                                    lumoFloatComplex* b, int ldb);

/* ---- QR factorisation (LAPACK xGEQRF) ---------------------------------------------------- */

/* A = Q R. a: m x n, overwritten by R in its upper triangle (trapezoid) and below it by the
 * vectors of the Householder reflectors H(i) = I - tau(i) v v^H, the leading 1 of v not stored;
 * Q = H(1) ... H(k), k = min(m, n). tau: k factors.
 *
 * Status 7, info -1: m < 0; -2: n < 0; -4: lda < max(1, m); -3, -5: null a, tau unless the matrix
 * is empty or 1 x 1; status 10, info 11 for a null operand of a 1 x 1 one.
 * Device memory beside the operands: none for k <= nb (96 columns for S, 64 for C), else
 * 2 nb^2 + nb (m + n) elements. Here and below, each of up to ten workspaces is rounded up to
 * 4096 bytes. */
LUMO_API lumoStatus lumoSgeqrf(int m, int n, float* a, int lda, float* tau);
LUMO_API lumoStatus lumoCgeqrf(int m, int n, lumoFloatComplex* a, int lda, lumoFloatComplex* tau);
LUMO_API lumoStatus lumoDeviceSgeqrf(int m, int n, float* a, int lda, float* tau);
LUMO_API lumoStatus lumoDeviceCgeqrf(int m, int n, lumoFloatComplex* a, int lda,
                                     lumoFloatComplex* tau);

/* ---- Least squares (LAPACK xGELS) -------------------------------------------------------- */

/* For op(A) = A (trans "N") or its conjugate transpose, for real elements its transpose (trans "T"
 * or "C"), a matrix of full rank: the X that minimises || B - op(A) X || if op(A) has at least as
 * many rows as columns, else the shortest X of those with op(A) X = B. Unlike LAPACK's routine it
 * does not scale: keep the largest elements of A and of B between 1e-31 and 1e31.
 *
 * a: m x n, overwritten by its QR (m >= n) or LQ factors (m < n). b: ldb x nrhs, B in its first m
 * (trans "N") or n rows, overwritten by X in its first n or m; below a least-squares X the squares
 * of the remaining rows of a column sum up to the square of its residual norm. If m, n or nrhs is
 * 0, max(m, n) rows of b become zero.
 *
 * Status 7, info -1: trans; -2: m < 0; -3: n < 0; -4: nrhs < 0; -6: lda < max(1, m);
 * -8: ldb < max(1, m, n); -5, -7: null a, b while m, n, nrhs > 0. Status 10, info 11: a null b of
 * which rows are to become zero.
 * Status 8, info i > 0: A has not full rank, the i-th diagonal element of its triangular factor is
 * exactly zero; b is partly transformed. Infinities are no error: what depends on one may be 0.
 * Device memory beside the operands: at most min(m, n) + 2 nb^2 + nb (m + n + nrhs) elements, with
 * nb as for geqrf or min(m, n) if that is less. */
LUMO_API lumoStatus lumoSgels(char trans, int m, int n, int nrhs, float* a, int lda, float* b,
                              int ldb);
LUMO_API lumoStatus lumoCgels(char trans, int m, int n, int nrhs, lumoFloatComplex* a, int lda,
                              lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceSgels(char trans, int m, int n, int nrhs, float* a, int lda, float* b,
                                    int ldb);
LUMO_API lumoStatus lumoDeviceCgels(char trans, int m, int n, int nrhs, lumoFloatComplex* a,
                                    int lda, lumoFloatComplex* b, int ldb);

/* ---- Least squares with linear constraints (LAPACK xGGLSE) -------------------------------- */

/* The x that minimises || c - A x || among those with B x = d; p <= n <= m + p, B and (A; B) of
 * full rank. a: m x n; b: p x n; c: m elements; d: p; x: n, output only. a, b and d are
 * overwritten; the squares of the last m - n + p elements of c sum up to the square of the
 * residual norm.
 *
 * Status 7, info -1: m < 0; -3: n or p out of bounds; -5: lda < max(1, m); -7: ldb < max(1, p);
 * and for n > 0 -4: null a; -6: null b while p > 0; -8: null c; -9: null d while p > 0;
 * -10: null x.
 * Status 8, info 1: B has not full rank; info 2: (A; B) has not. x then holds what was found, the
 * host functions' x zeros elsewhere. Infinities are no error: what depends
 * on one may be 0.
 * Device memory beside the operands: at most p + min(m, n) + 4 nb^2 + nb (2 m + 2 n + p) elements,
 * with nb as for geqrf or n if that is less. */
LUMO_API lumoStatus lumoSgglse(int m, int n, int p, float* a, int lda, float* b, int ldb, float* c,
                               float* d, float* x);
LUMO_API lumoStatus lumoCgglse(int m, int n, int p, lumoFloatComplex* a, int lda,
                               lumoFloatComplex* b, int ldb, lumoFloatComplex* c,
                               lumoFloatComplex* d, lumoFloatComplex* x);
LUMO_API lumoStatus lumoDeviceSgglse(int m, int n, int p, float* a, int lda, float* b, int ldb,
                                     float* c, float* d, float* x);
LUMO_API lumoStatus lumoDeviceCgglse(int m, int n, int p, lumoFloatComplex* a, int lda,
                                     lumoFloatComplex* b, int ldb, lumoFloatComplex* c,
                                     lumoFloatComplex* d, lumoFloatComplex* x);

/* ---- Singular value decomposition (LAPACK xGESVD) ----------------------------------------- */

/* A = U S V^H for an m x n matrix, with k = min(m, n) singular values. jobu tells what becomes of
 * the left singular vectors, the columns of U, and jobvt of the right ones, the rows of V^H:
 *   "A"  all m (n) of them go to u (vt),      m x m (n x n);
 *   "S"  the first k of them go to u (vt),    m x k (k x n);
 *   "O"  the first k of them overwrite a;     not both;
 *   "N"  none is computed.
 * a: m x n, overwritten. s: the k singular values, descending. u and vt are output only and are not
 * looked at where the job is "O" or "N"; ldu, ldvt are at least 1 then. Unlike LAPACK's routine it
 * does not scale: keep the largest element between 1e-12 and 1e12, between which LAPACK does not
 * scale either. Smaller ones lose accuracy, larger ones may overflow.
 *
 * Status 7, info -1: jobu; -2: jobvt, or "O" twice; -3: m < 0; -4: n < 0; -6: lda < max(1, m);
 * -9: ldu < 1, or < m where u is used; -11: ldvt < 1, or < n ("A"), < k ("S"); and for m, n > 0
 * -5: null a; -7: null s; -8: null u where it is used; -10: null vt likewise.
 * Status 8, info i > 0: A holds a NaN or an infinity, or the reduction to bidiagonal form has
 * overflowed, and s holds NaN; or i off-diagonals of an
 * intermediate bidiagonal matrix did not converge to zero: s is its diagonal, neither sorted nor
 * positive, and the vectors are those of the transformations made so far.
 * Device memory beside the operands: at most 4 k^2 + 3 nb (m + n) + 6 nb^2 + 8 k elements and
 * reals, with nb = 96 for S, 64 for C, and no n^2 for a matrix much wider than tall or m^2 for one
 * much taller than wide. */
LUMO_API lumoStatus lumoSgesvd(char jobu, char jobvt, int m, int n, float* a, int lda, float* s,
                               float* u, int ldu, float* vt, int ldvt);
LUMO_API lumoStatus lumoCgesvd(char jobu, char jobvt, int m, int n, lumoFloatComplex* a, int lda,
                               float* s, lumoFloatComplex* u, int ldu, lumoFloatComplex* vt,
                               int ldvt);
LUMO_API lumoStatus lumoDeviceSgesvd(char jobu, char jobvt, int m, int n, float* a, int lda,
                                     float* s, float* u, int ldu, float* vt, int ldvt);
LUMO_API lumoStatus lumoDeviceCgesvd(char jobu, char jobvt, int m, int n, lumoFloatComplex* a,
                                     int lda, float* s, lumoFloatComplex* u, int ldu,
                                     lumoFloatComplex* vt, int ldvt);

#ifdef __cplusplus
}
#endif

#endif
