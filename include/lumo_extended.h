/* The extension of the interface in lumo.h: LAPACK in all four types, what is done with factors,
 * and Cholesky's factorisation.
 *
 * All that lumo.h says of its functions holds for these: host and device functions, LAPACK's
 * arguments without workspaces, letters, statuses. D and Z need a device of capability 1.3 (status
 * 4, before any argument is looked at). Vectors that go with a device matrix (tau, s) lie in device
 * memory; ipiv and iter in device or in host memory, as the caller likes; rcond in host memory, for
 * the device functions too.
 */
#ifndef LUMO_EXTENDED_H
#define LUMO_EXTENDED_H

#include "lumo.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- LU factorisation and linear systems in double precision -------------------------------- */

/* As lumoSgetrf and lumoSgesv (lumo.h). */
LUMO_API lumoStatus lumoDgetrf(int m, int n, double* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoZgetrf(int m, int n, lumoDoubleComplex* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoDeviceDgetrf(int m, int n, double* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoDeviceZgetrf(int m, int n, lumoDoubleComplex* a, int lda, int* ipiv);
LUMO_API lumoStatus lumoDgesv(int n, int nrhs, double* a, int lda, int* ipiv, double* b, int ldb);
LUMO_API lumoStatus lumoZgesv(int n, int nrhs, lumoDoubleComplex* a, int lda, int* ipiv,
                              lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceDgesv(int n, int nrhs, double* a, int lda, int* ipiv, double* b,
                                    int ldb);
LUMO_API lumoStatus lumoDeviceZgesv(int n, int nrhs, lumoDoubleComplex* a, int lda, int* ipiv,
                                    lumoDoubleComplex* b, int ldb);

/* ---- QR factorisation and least squares in double precision --------------------------------- */

/* As lumoSgeqrf, lumoSgels and lumoSgglse (lumo.h), with nb = 64 for D, 32 for Z in what is said of
 * device memory. For gels keep the largest elements of A and of B between 1e-291 and 1e291. */
LUMO_API lumoStatus lumoDgeqrf(int m, int n, double* a, int lda, double* tau);
LUMO_API lumoStatus lumoZgeqrf(int m, int n, lumoDoubleComplex* a, int lda, lumoDoubleComplex* tau);
LUMO_API lumoStatus lumoDeviceDgeqrf(int m, int n, double* a, int lda, double* tau);
LUMO_API lumoStatus lumoDeviceZgeqrf(int m, int n, lumoDoubleComplex* a, int lda,
                                     lumoDoubleComplex* tau);
LUMO_API lumoStatus lumoDgels(char trans, int m, int n, int nrhs, double* a, int lda, double* b,
                              int ldb);
LUMO_API lumoStatus lumoZgels(char trans, int m, int n, int nrhs, lumoDoubleComplex* a, int lda,
                              lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceDgels(char trans, int m, int n, int nrhs, double* a, int lda,
                                    double* b, int ldb);
LUMO_API lumoStatus lumoDeviceZgels(char trans, int m, int n, int nrhs, lumoDoubleComplex* a,
                                    int lda, lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDgglse(int m, int n, int p, double* a, int lda, double* b, int ldb,
                               double* c, double* d, double* x);
LUMO_API lumoStatus lumoZgglse(int m, int n, int p, lumoDoubleComplex* a, int lda,
                               lumoDoubleComplex* b, int ldb, lumoDoubleComplex* c,
                               lumoDoubleComplex* d, lumoDoubleComplex* x);
LUMO_API lumoStatus lumoDeviceDgglse(int m, int n, int p, double* a, int lda, double* b, int ldb,
                                     double* c, double* d, double* x);
LUMO_API lumoStatus lumoDeviceZgglse(int m, int n, int p, lumoDoubleComplex* a, int lda,
                                     lumoDoubleComplex* b, int ldb, lumoDoubleComplex* c,
                                     lumoDoubleComplex* d, lumoDoubleComplex* x);

/* ---- Singular value decomposition in double precision --------------------------------------- */

/* As lumoSgesvd (lumo.h), with nb = 64 for D, 32 for Z in what is said of device memory. Keep the
 * largest element of A between 1e-138 and 1e138. */
LUMO_API lumoStatus lumoDgesvd(char jobu, char jobvt, int m, int n, double* a, int lda, double* s,
                               double* u, int ldu, double* vt, int ldvt);
LUMO_API lumoStatus lumoZgesvd(char jobu, char jobvt, int m, int n, lumoDoubleComplex* a, int lda,
                               double* s, lumoDoubleComplex* u, int ldu, lumoDoubleComplex* vt,
                               int ldvt);
LUMO_API lumoStatus lumoDeviceDgesvd(char jobu, char jobvt, int m, int n, double* a, int lda,
                                     double* s, double* u, int ldu, double* vt, int ldvt);
LUMO_API lumoStatus lumoDeviceZgesvd(char jobu, char jobvt, int m, int n, lumoDoubleComplex* a,
                                     int lda, double* s, lumoDoubleComplex* u, int ldu,
                                     lumoDoubleComplex* vt, int ldvt);

/* ---- Solution with LU factors (LAPACK xGETRS) ----------------------------------------------- */

/* Solves op(A) X = B with the factors and pivots of a square matrix, as getrf and gesv leave them:
 * op(A) is A, its transpose or its conjugate transpose as trans is "N", "T" or "C". a: n x n;
 * ipiv: n pivots; b: n x nrhs, overwritten by X.
 *
 * Status 7, info -1: trans; -2: n < 0; -3: nrhs < 0; -5: lda < max(1, n); -8: ldb < max(1, n);
 * -4, -6, -7: null a, ipiv, b while n, nrhs > 0; -6: a pivot that is no row, too.
 * A zero on the diagonal of U is no error here: X is infinite or not a number then.
 * Device memory beside the operands: n integers and the larger of n and n nrhs elements, the latter
 * up to 2^22. */
LUMO_API lumoStatus lumoSgetrs(char trans, int n, int nrhs, const float* a, int lda,
                               const int* ipiv, float* b, int ldb);
LUMO_API lumoStatus lumoDgetrs(char trans, int n, int nrhs, const double* a, int lda,
                               const int* ipiv, double* b, int ldb);
LUMO_API lumoStatus lumoCgetrs(char trans, int n, int nrhs, const lumoFloatComplex* a, int lda,
                               const int* ipiv, lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoZgetrs(char trans, int n, int nrhs, const lumoDoubleComplex* a, int lda,
                               const int* ipiv, lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceSgetrs(char trans, int n, int nrhs, const float* a, int lda,
                                     const int* ipiv, float* b, int ldb);
LUMO_API lumoStatus lumoDeviceDgetrs(char trans, int n, int nrhs, const double* a, int lda,
                                     const int* ipiv, double* b, int ldb);
LUMO_API lumoStatus lumoDeviceCgetrs(char trans, int n, int nrhs, const lumoFloatComplex* a,
                                     int lda, const int* ipiv, lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceZgetrs(char trans, int n, int nrhs, const lumoDoubleComplex* a,
                                     int lda, const int* ipiv, lumoDoubleComplex* b, int ldb);

/* ---- Linear systems in mixed precision (LAPACK DSGESV, ZCGESV) ------------------------------ */

/* Solves A X = B for matrices in double precision: by LU factorisation in single precision and
 * iterative refinement to double precision's backward error or, where that does not come about, by
 * LU factorisation in double precision (Langou, Langou, Luszczek, Kurzak, Buttari and Dongarra,
 * Supercomputing 2006). a: n x n; unchanged if *iter >= 0, else overwritten by L and U in double
 * precision; ipiv: n pivots of the factorisation that was used, as for getrf; b: n x nrhs,
 * unchanged; x: n x nrhs, output only.
 *
 * *iter >= 0: so many steps refined the solution. *iter < 0: it comes from double precision,
 * because a number was too large for single precision (-2), the matrix was singular in it (-3), or
 * 30 steps were not enough (-31).
 *
 * Status 7, info -1: n < 0; -2: nrhs < 0; -4: lda < max(1, n); -7: ldb < max(1, n);
 * -9: ldx < max(1, n); -10: null iter; and -3, -5 while n > 0, -6, -8 while n, nrhs > 0: null a,
 * ipiv, b, x.
 * Status 8, info j > 0: U(j, j) is exactly zero, in double precision as well; x is not written.
 * Device memory beside the operands: n^2 + 2 n nrhs single-precision and n nrhs + n + 2 nrhs
 * double-precision elements, and n integers. */
LUMO_API lumoStatus lumoDsgesv(int n, int nrhs, double* a, int lda, int* ipiv, const double* b,
                               int ldb, double* x, int ldx, int* iter);
LUMO_API lumoStatus lumoZcgesv(int n, int nrhs, lumoDoubleComplex* a, int lda, int* ipiv,
                               const lumoDoubleComplex* b, int ldb, lumoDoubleComplex* x, int ldx,
                               int* iter);
LUMO_API lumoStatus lumoDeviceDsgesv(int n, int nrhs, double* a, int lda, int* ipiv,
                                     const double* b, int ldb, double* x, int ldx, int* iter);
LUMO_API lumoStatus lumoDeviceZcgesv(int n, int nrhs, lumoDoubleComplex* a, int lda, int* ipiv,
                                     const lumoDoubleComplex* b, int ldb, lumoDoubleComplex* x,
                                     int ldx, int* iter);

/* ---- Cholesky factorisation (LAPACK xPOTRF) ------------------------------------------------- */

/* A = U^H U (uplo "U") or L L^H (uplo "L") for a symmetric or Hermitian positive definite matrix.
 * a: n x n, of which the triangle that uplo names is overwritten by the factor; the other one is
 * neither read nor written, nor is the imaginary part of the diagonal read.
 *
 * Status 7, info -1: uplo; -2: n < 0; -4: lda < max(1, n); -3: null a while n > 0.
 * Status 8, info j > 0: the leading minor of order j is not positive; the factorisation stopped
 * there. */
LUMO_API lumoStatus lumoSpotrf(char uplo, int n, float* a, int lda);
LUMO_API lumoStatus lumoDpotrf(char uplo, int n, double* a, int lda);
LUMO_API lumoStatus lumoCpotrf(char uplo, int n, lumoFloatComplex* a, int lda);
LUMO_API lumoStatus lumoZpotrf(char uplo, int n, lumoDoubleComplex* a, int lda);
LUMO_API lumoStatus lumoDeviceSpotrf(char uplo, int n, float* a, int lda);
LUMO_API lumoStatus lumoDeviceDpotrf(char uplo, int n, double* a, int lda);
LUMO_API lumoStatus lumoDeviceCpotrf(char uplo, int n, lumoFloatComplex* a, int lda);
LUMO_API lumoStatus lumoDeviceZpotrf(char uplo, int n, lumoDoubleComplex* a, int lda);

/* ---- Solution with a Cholesky factor (LAPACK xPOTRS) ---------------------------------------- */

/* Solves A X = B with the factor that potrf or posv left in the triangle uplo of a, n x n. b:
 * n x nrhs, overwritten by X.
 *
 * Status 7, info -1: uplo; -2: n < 0; -3: nrhs < 0; -5: lda < max(1, n); -7: ldb < max(1, n);
 * -4, -6: null a, b while n, nrhs > 0. */
LUMO_API lumoStatus lumoSpotrs(char uplo, int n, int nrhs, const float* a, int lda, float* b,
                               int ldb);
LUMO_API lumoStatus lumoDpotrs(char uplo, int n, int nrhs, const double* a, int lda, double* b,
                               int ldb);
LUMO_API lumoStatus lumoCpotrs(char uplo, int n, int nrhs, const lumoFloatComplex* a, int lda,
                               lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoZpotrs(char uplo, int n, int nrhs, const lumoDoubleComplex* a, int lda,
                               lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceSpotrs(char uplo, int n, int nrhs, const float* a, int lda, float* b,
                                     int ldb);
LUMO_API lumoStatus lumoDeviceDpotrs(char uplo, int n, int nrhs, const double* a, int lda,
                                     double* b, int ldb);
LUMO_API lumoStatus lumoDeviceCpotrs(char uplo, int n, int nrhs, const lumoFloatComplex* a, int lda,
                                     lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceZpotrs(char uplo, int n, int nrhs, const lumoDoubleComplex* a,
                                     int lda, lumoDoubleComplex* b, int ldb);

/* ---- Positive definite linear systems (LAPACK xPOSV) ---------------------------------------- */

/* Solves A X = B by potrf and potrs. a: n x n, of which the triangle that uplo names is overwritten
 * by the factor; b: n x nrhs, overwritten by X.
 *
 * Status 7, info -1: uplo; -2: n < 0; -3: nrhs < 0; -5: lda < max(1, n); -7: ldb < max(1, n);
 * -4, -6: null a, b while n > 0.
 * Status 8, info j > 0: the leading minor of order j is not positive; b is unchanged. */
LUMO_API lumoStatus lumoSposv(char uplo, int n, int nrhs, float* a, int lda, float* b, int ldb);
LUMO_API lumoStatus lumoDposv(char uplo, int n, int nrhs, double* a, int lda, double* b, int ldb);
LUMO_API lumoStatus lumoCposv(char uplo, int n, int nrhs, lumoFloatComplex* a, int lda,
                              lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoZposv(char uplo, int n, int nrhs, lumoDoubleComplex* a, int lda,
                              lumoDoubleComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceSposv(char uplo, int n, int nrhs, float* a, int lda, float* b,
                                    int ldb);
LUMO_API lumoStatus lumoDeviceDposv(char uplo, int n, int nrhs, double* a, int lda, double* b,
                                    int ldb);
LUMO_API lumoStatus lumoDeviceCposv(char uplo, int n, int nrhs, lumoFloatComplex* a, int lda,
                                    lumoFloatComplex* b, int ldb);
LUMO_API lumoStatus lumoDeviceZposv(char uplo, int n, int nrhs, lumoDoubleComplex* a, int lda,
                                    lumoDoubleComplex* b, int ldb);

/* ---- Q as a matrix (LAPACK xORGQR, xUNGQR) -------------------------------------------------- */

/* Overwrites an m x n matrix, whose first k columns hold reflectors as geqrf leaves them, by the
 * first n columns of Q = H(1) ... H(k); m >= n >= k. tau: the k factors of geqrf.
 *
 * Status 7, info -1: m < 0; -2: n < 0 or n > m; -3: k < 0 or k > n; -5: lda < max(1, m);
 * -4: null a while n > 0; -6: null tau while k > 0.
 * Device memory beside the operands: 2 nb^2 + nb (m + n) elements, nb at most as for geqrf. */
LUMO_API lumoStatus lumoSorgqr(int m, int n, int k, float* a, int lda, const float* tau);
LUMO_API lumoStatus lumoDorgqr(int m, int n, int k, double* a, int lda, const double* tau);
LUMO_API lumoStatus lumoCungqr(int m, int n, int k, lumoFloatComplex* a, int lda,
                               const lumoFloatComplex* tau);
LUMO_API lumoStatus lumoZungqr(int m, int n, int k, lumoDoubleComplex* a, int lda,
                               const lumoDoubleComplex* tau);
LUMO_API lumoStatus lumoDeviceSorgqr(int m, int n, int k, float* a, int lda, const float* tau);
LUMO_API lumoStatus lumoDeviceDorgqr(int m, int n, int k, double* a, int lda, const double* tau);
LUMO_API lumoStatus lumoDeviceCungqr(int m, int n, int k, lumoFloatComplex* a, int lda,
                                     const lumoFloatComplex* tau);
LUMO_API lumoStatus lumoDeviceZungqr(int m, int n, int k, lumoDoubleComplex* a, int lda,
                                     const lumoDoubleComplex* tau);

/* ---- Products with Q (LAPACK xORMQR, xUNMQR) ------------------------------------------------ */

/* C := op(Q) C (side "L") or C op(Q) (side "R") for an m x n matrix C and Q = H(1) ... H(k) of
 * order q = m (side "L") or n; op(Q) is Q (trans "N") or Q^H (trans "C", for real elements "T" as
 * well). a: q x k, the reflectors as geqrf leaves them in the first k columns; tau: k factors; k <=
 * q.
 *
 * Status 7, info -1: side; -2: trans; -3: m < 0; -4: n < 0; -5: k < 0 or k > q;
 * -7: lda < max(1, q); -10: ldc < max(1, m); -6, -8, -9: null a, tau, c while m, n, k > 0.
 * Device memory beside the operands: 2 nb^2 + nb (m + n) elements, nb at most as for geqrf. */
LUMO_API lumoStatus lumoSormqr(char side, char trans, int m, int n, int k, const float* a, int lda,
                               const float* tau, float* c, int ldc);
LUMO_API lumoStatus lumoDormqr(char side, char trans, int m, int n, int k, const double* a, int lda,
                               const double* tau, double* c, int ldc);
LUMO_API lumoStatus lumoCunmqr(char side, char trans, int m, int n, int k,
                               const lumoFloatComplex* a, int lda, const lumoFloatComplex* tau,
                               lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoZunmqr(char side, char trans, int m, int n, int k,
                               const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* tau,
                               lumoDoubleComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceSormqr(char side, char trans, int m, int n, int k, const float* a,
                                     int lda, const float* tau, float* c, int ldc);
LUMO_API lumoStatus lumoDeviceDormqr(char side, char trans, int m, int n, int k, const double* a,
                                     int lda, const double* tau, double* c, int ldc);
LUMO_API lumoStatus lumoDeviceCunmqr(char side, char trans, int m, int n, int k,
                                     const lumoFloatComplex* a, int lda,
                                     const lumoFloatComplex* tau, lumoFloatComplex* c, int ldc);
LUMO_API lumoStatus lumoDeviceZunmqr(char side, char trans, int m, int n, int k,
                                     const lumoDoubleComplex* a, int lda,
                                     const lumoDoubleComplex* tau, lumoDoubleComplex* c, int ldc);

/* ---- Symmetric and Hermitian eigenproblems (LAPACK xSYEVD, xHEEVD) --------------------------- */

/* Eigenvalues, and for jobz "V" eigenvectors, of a symmetric or Hermitian matrix of which a holds
 * the triangle that uplo names, n x n. w: n elements, becomes the eigenvalues, ascending. For "V" a
 * becomes the orthonormal eigenvectors, column by column, in the order of the values; for "N" the
 * triangle is destroyed. The imaginary part of the diagonal is not read. A matrix whose largest
 * element is so small or so large that squares would leave the range is scaled.
 *
 * Vectors come by divide and conquer (Gu and Eisenstat, SIAM J. Matrix Anal. Appl. 16, 1995).
 *
 * Status 7, info -1: jobz; -2: uplo; -3: n < 0; -5: lda < max(1, n); and while n > 0 -4, -6: null
 * a, w.
 * Status 8, info n: the matrix holds a NaN or an infinity; w becomes NaN. Another info > 0: an
 * iteration did not converge; for "N" info off-diagonals of a tridiagonal matrix are not zero, for
 * "V" it was in the submatrix of rows info / (n + 1) to info mod (n + 1). In both cases a is
 * undefined.
 * Device memory beside the operands: for "V" 3 n^2 elements for S and D; for C and Z n^2, and 3 n^2
 * real ones; some 140 n for panels. */
LUMO_API lumoStatus lumoSsyevd(char jobz, char uplo, int n, float* a, int lda, float* w);
LUMO_API lumoStatus lumoDsyevd(char jobz, char uplo, int n, double* a, int lda, double* w);
LUMO_API lumoStatus lumoCheevd(char jobz, char uplo, int n, lumoFloatComplex* a, int lda, float* w);
LUMO_API lumoStatus lumoZheevd(char jobz, char uplo, int n, lumoDoubleComplex* a, int lda,
                               double* w);
LUMO_API lumoStatus lumoDeviceSsyevd(char jobz, char uplo, int n, float* a, int lda, float* w);
LUMO_API lumoStatus lumoDeviceDsyevd(char jobz, char uplo, int n, double* a, int lda, double* w);
LUMO_API lumoStatus lumoDeviceCheevd(char jobz, char uplo, int n, lumoFloatComplex* a, int lda,
                                     float* w);
LUMO_API lumoStatus lumoDeviceZheevd(char jobz, char uplo, int n, lumoDoubleComplex* a, int lda,
                                     double* w);

/* ---- Condition from LU factors (LAPACK xGECON) ---------------------------------------------- */

/* *rcond becomes an estimate of 1 / (|| A || || A^-1 ||) in the 1-norm (norm "1" or "O") or the
 * infinity norm (norm "I"), by a few solutions with the factors that getrf or gesv left in a, n x n
 * (Higham, ACM TOMS 14, 1988). anorm: || A || in that norm. The estimate is 1 for n = 0, and 0 for
 * a singular matrix or one that is so in this precision.
 *
 * Status 7, info -1: norm; -2: n < 0; -4: lda < max(1, n); -5: anorm < 0 or not a number;
 * -3: null a while n > 0; -6: null rcond.
 * Device memory beside the operands: n elements. */
LUMO_API lumoStatus lumoSgecon(char norm, int n, const float* a, int lda, float anorm,
                               float* rcond);
LUMO_API lumoStatus lumoDgecon(char norm, int n, const double* a, int lda, double anorm,
                               double* rcond);
LUMO_API lumoStatus lumoCgecon(char norm, int n, const lumoFloatComplex* a, int lda, float anorm,
                               float* rcond);
LUMO_API lumoStatus lumoZgecon(char norm, int n, const lumoDoubleComplex* a, int lda, double anorm,
                               double* rcond);
LUMO_API lumoStatus lumoDeviceSgecon(char norm, int n, const float* a, int lda, float anorm,
                                     float* rcond);
LUMO_API lumoStatus lumoDeviceDgecon(char norm, int n, const double* a, int lda, double anorm,
                                     double* rcond);
LUMO_API lumoStatus lumoDeviceCgecon(char norm, int n, const lumoFloatComplex* a, int lda,
                                     float anorm, float* rcond);
LUMO_API lumoStatus lumoDeviceZgecon(char norm, int n, const lumoDoubleComplex* a, int lda,
                                     double anorm, double* rcond);

/* ---- Condition from a Cholesky factor (LAPACK xPOCON) --------------------------------------- */

/* The same in the 1-norm from the factor that potrf or posv left in the triangle uplo of a.
 *
 * Status 7 as for gecon, info -1: uplo. */
LUMO_API lumoStatus lumoSpocon(char uplo, int n, const float* a, int lda, float anorm,
                               float* rcond);
LUMO_API lumoStatus lumoDpocon(char uplo, int n, const double* a, int lda, double anorm,
                               double* rcond);
LUMO_API lumoStatus lumoCpocon(char uplo, int n, const lumoFloatComplex* a, int lda, float anorm,
                               float* rcond);
LUMO_API lumoStatus lumoZpocon(char uplo, int n, const lumoDoubleComplex* a, int lda, double anorm,
                               double* rcond);
LUMO_API lumoStatus lumoDeviceSpocon(char uplo, int n, const float* a, int lda, float anorm,
                                     float* rcond);
LUMO_API lumoStatus lumoDeviceDpocon(char uplo, int n, const double* a, int lda, double anorm,
                                     double* rcond);
LUMO_API lumoStatus lumoDeviceCpocon(char uplo, int n, const lumoFloatComplex* a, int lda,
                                     float anorm, float* rcond);
LUMO_API lumoStatus lumoDeviceZpocon(char uplo, int n, const lumoDoubleComplex* a, int lda,
                                     double anorm, double* rcond);

#ifdef __cplusplus
}
#endif

#endif
