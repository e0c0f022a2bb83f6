// The CPU LAPACK's part of the algorithms, in time, with results that let the library go on as
// usual.
#pragma once

namespace timeline {

int luPanel(char type, int m, int n, void* a, int lda, int* ipiv);
int choleskyBlock(char type, char uplo, int n, void* a, int lda);
int qrPanel(char type, int m, int n, void* a, int lda, void* t, int ldt);
int qrTail(char type, int m, int n, void* a, int lda, void* tau, void* work, int size);
int bidiagonalTail(char type, int m, int n, void* a, int lda, void* d, void* e, void* tauq,
                   void* taup, void* work, int size);
int luSystem(char type, int n, int nrhs, void* a, int lda, int* ipiv, void* b, int ldb);
int eigenproblem(char type, char jobz, char uplo, int n, void* a, int lda, void* w, void* work,
                 int size, void* rwork, int realSize, int* iwork, int integers);
int svd(char type, char jobu, char jobvt, int m, int n, void* a, int lda, void* s, void* u, int ldu,
        void* vt, int ldvt, void* work, int size, void* rwork);
int dividedSvd(char type, char jobz, int m, int n, void* a, int lda, void* s, void* u, int ldu,
               void* vt, int ldvt, void* work, int size, void* rwork, int* iwork);

}  // namespace timeline
