#include "lapack/getrf.h"

#include <memory>

#include "basic/LASWP/LASWP.h"
#include "basic/Transpose/Transpose.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "lapack/cpu_lapack.h"
#include "lapack/lu_pipeline.h"
#include "lapack/panel_transfer.h"
#include "lapack/pivots.h"
#include "lapack/tuning.h"
#include "routine/exports.h"

namespace lumo {

namespace {

// Rows, columns and pivots below are counted from 0, panels by their first column j.
template <class T>
class LuFactorization {
  public:
    LuFactorization(int m, int n, T* a, int lda, int* ipiv)
        : m_(m), n_(n), a_(a), lda_(lda), ipiv_(ipiv), steps_(std::min(m, n)) {}

    int run() {
        const GetrfTuning& tuning = getrfTuning<T>;
        const int wish = platform::panelWidth(platform::Panel::lu, cpu::letter<T>, m_, n_);
        nb_ = wish ? wish : 2 * tuning.base.current();
        if (nb_ < 2 || nb_ >= steps_)
            unblocked();
        else if (deviceIsModern())
            return pipelinedGetrf(m_, n_, a_, lda_, ipiv_, nb_);
        else if (!wish && m_ == n_ && m_ >= tuning.squareOrder)
            transposed();
        else
            asStored();
        return firstZeroPivot_;
    }

  private:
    static constexpr T one = T(1), minusOne = T(-1);

    T* at(int i, int j) const { return a_ + std::size_t(j) * std::size_t(lda_) + i; }
    int width(int j) const { return std::min(nb_, steps_ - j); }

    // Keeps the first zero pivot; a negative info is a wrong call of ours.
    void record(int info, int j) {
        if (info < 0) checkReturnedInfo(info);
        if (info > 0 && firstZeroPivot_ == 0) firstZeroPivot_ = j + info;
    }

    void unblocked() {
        if (platform::sharesMemory()) {
            cudalib::checkCudaError(cudaStreamSynchronize(nullptr));
            return record(cpu::getrf(m_, n_, a_, lda_, ipiv_), 0);
        }
        const std::size_t rowBytes = std::size_t(m_) * sizeof(T);
        const std::size_t pitch = std::size_t(lda_) * sizeof(T);
        std::unique_ptr<T[]> host(new T[std::size_t(m_) * std::size_t(n_)]);
        cudalib::checkCudaError(cudalib::copy2D(host.get(), rowBytes, a_, pitch, rowBytes,
                                                std::size_t(n_), cudaMemcpyDeviceToHost));
        record(cpu::getrf(m_, n_, host.get(), m_, ipiv_), 0);
        cudalib::checkCudaError(cudalib::copy2D(a_, pitch, host.get(), rowBytes, rowBytes,
                                                std::size_t(n_), cudaMemcpyHostToDevice));
    }

    // Factorises the panel that the stream brings, of columns j ... j + jb - 1 from row j on.
    void factorizePanel(PanelTransfer<T>& panel, int j, int jb) {
        panel.wait();
        record(cpu::getrf(m_ - j, jb, panel.host(), panel.ld(), ipiv_ + j), j);
    }

    // From the panel's own rows to the matrix's.
    void shiftPivots(int j, int jb) {
        for (int i = j; i < j + jb; ++i) ipiv_[i] += j;
    }

    // The panel's interchanges on `columns` columns from column `first` on.
    void interchangeRows(int first, int columns, int j, int jb) {
        if (columns <= 0) return;
        if (jb > 1) {
            LASWP(columns, at(0, first), lda_, j + 1, j + jb, ipiv_, 1);
        } else {
            // The launcher does nothing for a single interchange: put one in front of it that
            // exchanges the row above with itself. There is one, since nb >= 2.
            const int pair[2] = {1, ipiv_[j] - (j - 1)};
            LASWP(columns, at(j - 1, first), lda_, 1, 2, pair, 1);
        }
    }

    void asStored() {
        PanelTransfer<T> panel{unsigned(m_), unsigned(nb_)};
        panel.startDownload(a_, lda_, m_, nb_);
        for (int j = 0; j < steps_; j += nb_) {
            const int jb = width(j), right = j + jb;
            factorizePanel(panel, j, jb);
            panel.startUpload(at(j, j), lda_, m_ - j, jb);
            shiftPivots(j, jb);
            if (!panel.shared()) interchangeRows(0, j, j, jb);
            if (right == n_) break;

            const int next = right < steps_ ? width(right) : 0;
            if (next > 0) interchangeRows(right, next, j, jb);
            panel.wait();
            if (next > 0) {
                update(j, jb, right, next);
                panel.startDownload(at(right, right), lda_, m_ - right, next);
            }
            const int rest = right + next;
            interchangeRows(rest, n_ - rest, j, jb);
            update(j, jb, rest, n_ - rest);
        }
        // Nothing waits for what the panels exchange in those before them.
        for (int j = nb_; panel.shared() && j < steps_; j += nb_)
            interchangeRows(0, j, j, width(j));
    }

    // U12 := L11^-1 A12 and A22 := A22 - L21 U12 for `columns` columns from `first` on.
    void update(int j, int jb, int first, int columns) {
        if (columns <= 0) return;
        const int below = m_ - j - jb;
        cublas::trsm('L', 'L', 'N', 'U', jb, columns, one, at(j, j), lda_, at(j, first), lda_);
        if (below > 0)
            gemm('N', 'N', below, columns, jb, minusOne, at(j + jb, j), lda_, at(j, first), lda_,
                 one, at(j + jb, first), lda_);
    }

    // The same on T = transpose of A, of order n: at(i, j) is A's element (j, i). Interchanges
    // exchange columns of T; a panel is a block of rows, gathered into a column-major workspace.
    void transposed() {
        const int n = n_;
        // All memory before the first transpose: a failure leaves A as it was. The panel is last,
        // so that it waits for its transfers before the workspace goes back.
        cudalib::Workspace<T> workspace(std::size_t(n) * std::size_t(nb_));
        PanelTransfer<T> panel{unsigned(n), unsigned(nb_)};
        T* const w = workspace.data();

        transposeInplace(a_, lda_, n);
        gather(w, 0, nb_, panel);
        for (int j = 0; j < n; j += nb_) {
            const int jb = width(j), right = j + jb;
            factorizePanel(panel, j, jb);
            panel.startUpload(w, n - j, n - j, jb);
            shiftPivots(j, jb);
            interchangeColumns(0, j, j, jb);
            if (right == n) {
                panel.wait();
                scatter(w, j, jb);
                break;
            }
            const int next = width(right);
            interchangeColumns(right, next, j, jb);
            panel.wait();
            scatter(w, j, jb);
            updateTransposed(j, jb, right, next);
            gather(w, right, next, panel);

            const int rest = right + next;
            interchangeColumns(rest, n - rest, j, jb);
            updateTransposed(j, jb, rest, n - rest);
        }
        transposeInplace(a_, lda_, n);
    }

    // The workspace's leading dimension is the host panel's, so that its copies are flat.
    void gather(T* w, int j, int jb, PanelTransfer<T>& panel) {
        const int rows = n_ - j;
        transpose(w, std::size_t(rows), at(j, j), std::size_t(lda_), std::size_t(jb),
                  std::size_t(rows));
        panel.startDownload(w, rows, rows, jb);
    }
    void scatter(const T* w, int j, int jb) {
        const int rows = n_ - j;
        transpose(at(j, j), std::size_t(lda_), w, std::size_t(rows), std::size_t(rows),
                  std::size_t(jb));
    }

    // A last panel one column wide is 1 x 1 here and has nothing to exchange.
    void interchangeColumns(int firstRow, int rows, int j, int jb) {
        if (rows > 0) LASWPCOL(rows, at(firstRow, 0), lda_, j + 1, j + jb, ipiv_, 1);
    }

    void updateTransposed(int j, int jb, int firstRow, int rows) {
        if (rows <= 0) return;
        const int right = j + jb;
        cublas::trsm('R', 'U', 'N', 'U', rows, jb, one, at(j, j), lda_, at(firstRow, j), lda_);
        gemm('N', 'N', rows, n_ - right, jb, minusOne, at(firstRow, j), lda_, at(j, right), lda_,
             one, at(firstRow, right), lda_);
    }

    const int m_, n_;
    T* const a_;
    const int lda_;
    int* const ipiv_;
    const int steps_;
    int nb_ = 0;
    int firstZeroPivot_ = 0;
};

}  // namespace

template <class T>
int getrf(int m, int n, T* a, int lda, int* ipiv) {
    return m > 0 && n > 0 ? LuFactorization<T>(m, n, a, lda, ipiv).run() : 0;
}

LUMO_INSTANTIATE(getrf)

template <class T>
void Getrf<T>::run() const {
    Pivots pivots(std::min(m, n));
    const int zeroPivot = getrf(m, n, a, lda, pivots.data());
    pivots.deliver(ipiv);
    if (zeroPivot) throwDataError(zeroPivot);
}

template <class T>
bool Getrf<T>::isSmall() const {
    return std::max(m, n) <= smallLu;
}
template <class T>
lumoStatus Getrf<T>::runOnCpu() const {
    checkReturnedInfo(cpu::getrf(m, n, a, lda, ipiv));
    return lumoNoError;
}

LUMO_INSTANTIATE_MEMBERS(Getrf)
LUMO_EXPORT_S_C(getrf, Getrf)

}  // namespace lumo
