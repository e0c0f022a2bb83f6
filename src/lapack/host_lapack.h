// The CPU LAPACK's part of an algorithm, as the platform answers for it: templates over the element
// type, arguments by value.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "basic/magnitude.h"
#include "common/complex.h"
#include "common/exceptions.h"
#include "platform/cpu/lapack.h"
#include "platform/cuda3.h"

namespace lumo::host {

// xGETRF. Returns LAPACK's info.
template <class T>
int getrf(int m, int n, T* a, int lda, int* ipiv) {
    return platform::luPanel(platform::letter<T>, m, n, a, lda, ipiv);
}

// xGESV of a small system. Returns LAPACK's info.
template <class T>
int gesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb) {
    return platform::luSystem(platform::letter<T>, n, nrhs, a, lda, ipiv, b, ldb);
}

// xPOTRF. Returns LAPACK's info: some CPU libraries go on with a pivot that is not a number.
template <class T>
int potrf(char uplo, int n, T* a, int lda) {
    const int info = platform::choleskyBlock(platform::letter<T>, uplo, n, a, lda);
    for (int j = 0; j < (info > 0 ? info - 1 : n); ++j) {
        const T pivot = a[std::ptrdiff_t(j) * lda + j];
        if (!(pivot == pivot)) return j + 1;
    }
    return info;
}

// xSTEQR for all vectors of a real matrix, with 2 n - 2 numbers of workspace. Returns LAPACK's
// info.
template <class R>
int steqr(int n, R* d, R* e, R* z, int ldz, R* work) {
    return platform::tridiagonal(platform::letter<R>, n, d, e, z, ldz, work);
}

// xLASDQ: the singular values and vectors of an upper bidiagonal matrix of n rows and n + extra
// columns; vt and u are identities before. With 4 n numbers of workspace. Returns LAPACK's info.
template <class R>
int lasdq(int extra, int n, R* d, R* e, R* vt, int ldvt, R* u, int ldu, R* work) {
    return platform::bidiagonal(platform::letter<R>, extra, n, d, e, vt, ldvt, u, ldu, work);
}

// xSTERF: the values alone. Returns LAPACK's info.
template <class R>
int sterf(int n, R* d, R* e) {
    return platform::tridiagonal(platform::letter<R>, n, d, e, nullptr, 1, nullptr);
}

// xGEQRF.
template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau) {
    checkReturnedInfo(cpu::withWorkspace<T>(n, [&](T* work, int size) {
        return platform::qrTail(platform::letter<T>, m, n, a, lda, tau, work, size);
    }));
}

// The same for m >= n with the triangular factor T of all n reflectors, whose diagonal are their
// scalar factors (as xGEQRT3).
template <class T>
void qrPanel(int m, int n, T* a, int lda, T* t, int ldt) {
    checkReturnedInfo(platform::qrPanel(platform::letter<T>, m, n, a, lda, t, ldt));
}

// Columns that an array needs beyond the matrix that gebrd works on: gemv of a CPU BLAS may read,
// and not use, what lies behind the last element of a row.
constexpr int spareColumns = 1;

// xGEBRD.
template <class T>
void gebrd(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq, T* taup) {
    checkReturnedInfo(cpu::withWorkspace<T>(std::max(m, n), [&](T* work, int size) {
        return platform::bidiagonalTail(platform::letter<T>, m, n, a, lda, d, e, tauq, taup, work,
                                        size);
    }));
}

// A host matrix as xGESVD, xGESDD and xHEEVD work on it: the matrix itself, or for complex elements
// a copy with a spare column, which store() puts back.
template <class T>
class Roomy {
  public:
    Roomy(int m, int n, T* a, int lda) : m_(m), n_(n), a_(a), lda_(lda) {
        if constexpr (isComplex<T>)
            copy_.reset(new T[std::size_t(m) * std::size_t(n + spareColumns)]());
    }
    void load() const { move(a_, lda_, copy_.get(), m_); }
    void store() const { move(copy_.get(), m_, a_, lda_); }
    T* data() const { return isComplex<T> ? copy_.get() : a_; }
    int leadingDimension() const { return isComplex<T> ? std::max(1, m_) : lda_; }

  private:
    void move(const T* from, int fromLd, T* to, int toLd) const {
        if constexpr (isComplex<T>)
            for (std::ptrdiff_t j = 0; j < n_; ++j)
                std::copy_n(from + j * fromLd, m_, to + j * toLd);
    }

    const int m_, n_;
    T* const a_;
    const int lda_;
    std::unique_ptr<T[]> copy_;
};

// Of other matrices the CPU library makes what it likes.
template <class T>
bool isFinite(int m, int n, const T* a, int lda) {
    RealOf<T> sum = 0;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            const T x = a[std::ptrdiff_t(j) * lda + i];
            sum += (realPart(x) + imaginaryPart(x)) * 0;
        }
    return sum == 0;
}

// xSYEVD, xHEEVD of a small matrix. Returns LAPACK's info.
template <class T>
int syevd(char jobz, char uplo, int n, T* a, int lda, RealOf<T>* w) {
    const Roomy<T> A(n, n, a, lda);
    A.load();
    // What it asks for with vectors, and a panel of 32 columns.
    const int reals = 1 + 6 * n + 2 * n * n, integers = 3 + 5 * n;
    const int size = isComplex<T> ? (2 + 32) * n + n * n : reals;
    const std::unique_ptr<T[]> work(new T[std::size_t(size)]);
    std::vector<RealOf<T>> rwork(isComplex<T> ? std::size_t(reals) : 0);
    std::vector<int> iwork(static_cast<std::size_t>(integers));
    const int info =
        platform::eigenproblem(platform::letter<T>, jobz, uplo, n, A.data(), A.leadingDimension(),
                               w, work.get(), size, rwork.data(), reals, iwork.data(), integers);
    A.store();
    return info;
}

// xGESDD of a small matrix, which writes so many columns of u and rows of vt.
template <class T>
void gesdd(char jobz, int m, int n, T* a, int lda, RealOf<T>* s, T* u, int ldu, int columnsOfU,
           T* vt, int ldvt, int rowsOfVt) {
    const std::size_t k = std::size_t(std::min(m, n));
    const Roomy<T> A(m, n, a, lda), U(columnsOfU > 0 ? m : 0, columnsOfU, u, ldu),
        VT(rowsOfVt, rowsOfVt > 0 ? n : 0, vt, ldvt);
    A.load();
    std::vector<RealOf<T>> rwork(isComplex<T> ? (5 * k + 2 * std::size_t(std::max(m, n)) + 7) * k
                                              : 0);
    std::vector<int> iwork(8 * k);
    const auto call = [&](T* work, int size) {
        return platform::dividedSvd(platform::letter<T>, jobz, m, n, A.data(), A.leadingDimension(),
                                    s, U.data(), U.leadingDimension(), VT.data(),
                                    VT.leadingDimension(), work, size, rwork.data(), iwork.data());
    };
    const int info = cpu::withWorkspace<T>(1, call, spareColumns * std::max(m, n));
    A.store();
    U.store();
    VT.store();
    checkReturnedInfo(info);
}

// xGESVD of a small matrix.
template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, RealOf<T>* s, T* u, int ldu, T* vt,
           int ldvt) {
    const int k = std::min(m, n);
    auto vectors = [&](char job, int all) { return job == 'A' ? all : job == 'S' ? k : 0; };
    const int left = vectors(jobu, m), right = vectors(jobvt, n);
    const Roomy<T> A(m, n, a, lda), U(left > 0 ? m : 0, left, u, ldu),
        VT(right, right > 0 ? n : 0, vt, ldvt);
    A.load();
    // What its fastest way takes with blocks of 32, as CPU LAPACKs have them, and a spare column.
    const int longer = std::max(m, n), size = k * k + (2 * 32 + 4) * longer;
    const std::unique_ptr<T[]> work(new T[std::size_t(size + spareColumns * longer)]);
    std::vector<RealOf<T>> rwork(isComplex<T> ? 5 * std::size_t(k) : 0);
    const int info = platform::svd(
        platform::letter<T>, jobu, jobvt, m, n, A.data(), A.leadingDimension(), s, U.data(),
        U.leadingDimension(), VT.data(), VT.leadingDimension(), work.get(), size, rwork.data());
    A.store();
    U.store();
    VT.store();
    checkReturnedInfo(info);
}

}  // namespace lumo::host
