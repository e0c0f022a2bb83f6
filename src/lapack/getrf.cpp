#include "lapack/getrf.h"

#include <memory>

#include "basic/LASWP/LASWP.h"
#include "basic/Transpose/Transpose.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/eliminate.h"
#include "lapack/host_lapack.h"
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
        : m_(m), n_(n), a_{a, lda}, ipiv_(ipiv), steps_(std::min(m, n)) {}

    int run() {
        const GetrfTuning& tuning = getrfTuning<T>;
        const int wish = platform::panelWidth(platform::Panel::lu, platform::letter<T>, m_, n_);
        nb_ = wish ? wish : 2 * tuning.base.current();
        if (nb_ < 2 || nb_ >= steps_)
            unblocked();
        else if (deviceIsModern())
            return pipelinedGetrf(m_, n_, a_.data, a_.ld, ipiv_, nb_);
        else if (!wish && m_ == n_ && m_ >= tuning.squareOrder)
            transposed();
        else
            asStored();
        return firstZeroPivot_;
    }

  private:
    static constexpr T one = T(1), minusOne = T(-1);

    int width(int j) const { return std::min(nb_, steps_ - j); }

    // Keeps the first zero pivot; a negative info is a wrong call of ours.
    void record(int info, int j) {
        if (info < 0) checkReturnedInfo(info);
        if (info > 0 && firstZeroPivot_ == 0) firstZeroPivot_ = j + info;
    }

    void unblocked() {
        if (platform::sharesMemory()) {
            cudalib::checkCudaError(cudaStreamSynchronize(nullptr));
            return record(host::getrf(m_, n_, a_.data, a_.ld, ipiv_), 0);
        }
        const std::size_t rowBytes = std::size_t(m_) * sizeof(T);
        const std::size_t pitch = std::size_t(a_.ld) * sizeof(T);
        std::unique_ptr<T[]> copy(new T[std::size_t(m_) * std::size_t(n_)]);
        cudalib::checkCudaError(cudalib::copy2D(copy.get(), rowBytes, a_.data, pitch, rowBytes,
                                                std::size_t(n_), cudaMemcpyDeviceToHost));
        record(host::getrf(m_, n_, copy.get(), m_, ipiv_), 0);
        cudalib::checkCudaError(cudalib::copy2D(a_.data, pitch, copy.get(), rowBytes, rowBytes,
                                                std::size_t(n_), cudaMemcpyHostToDevice));
    }

    // Factorises the panel that the stream brings, of columns j ... j + jb - 1 from row j on.
    void factorizePanel(PanelTransfer<T>& panel, int j, int jb) {
        panel.wait();
        record(host::getrf(m_ - j, jb, panel.host(), panel.ld(), ipiv_ + j), j);
    }

    // From the panel's own rows to the matrix's.
    void shiftPivots(int j, int jb) {
        for (int i = j; i < j + jb; ++i) ipiv_[i] += j;
    }

    // The panel's interchanges on `columns` columns from column `first` on.
    void interchangeRows(int first, int columns, int j, int jb) {
        if (columns <= 0) return;
        if (jb > 1) {
            LASWP(columns, a_.at(0, first), a_.ld, j + 1, j + jb, ipiv_, 1);
        } else {
            // The launcher does nothing for a single interchange: put one in front of it that
            // exchanges the row above with itself. There is one, since nb >= 2.
            const int pair[2] = {1, ipiv_[j] - (j - 1)};
            LASWP(columns, a_.at(j - 1, first), a_.ld, 1, 2, pair, 1);
        }
    }

    void asStored() {
        PanelTransfer<T> panel{unsigned(m_), unsigned(nb_)};
        panel.startDownload(a_.data, a_.ld, m_, nb_);
        for (int j = 0; j < steps_; j += nb_) {
            const int jb = width(j), right = j + jb;
            factorizePanel(panel, j, jb);
            panel.startUpload(a_.at(j, j), a_.ld, m_ - j, jb);
            shiftPivots(j, jb);
            if (!panel.shared()) interchangeRows(0, j, j, jb);
            if (right == n_) break;

            const int next = right < steps_ ? width(right) : 0;
            if (next > 0) interchangeRows(right, next, j, jb);
            panel.wait();
            if (next > 0) {
                eliminate(a_, m_, j, jb, right, next);
                panel.startDownload(a_.at(right, right), a_.ld, m_ - right, next);
            }
            const int rest = right + next;
            interchangeRows(rest, n_ - rest, j, jb);
            eliminate(a_, m_, j, jb, rest, n_ - rest);
        }
        // Nothing waits for what the panels exchange in those before them.
        for (int j = nb_; panel.shared() && j < steps_; j += nb_)
            interchangeRows(0, j, j, width(j));
    }

    // The steps above on T = transpose of A, of order n: a_.at(i, j) is A's element (j, i).
    // Interchanges exchange columns of T; a panel is a block of rows, gathered into a column-major
    // workspace.
    void transposed() {
        const int n = n_;
        // All memory before the first transpose: a failure leaves A as it was. The panel is last,
        // so that it waits for its transfers before the workspace goes back.
        cudalib::Workspace<T> workspace(std::size_t(n) * std::size_t(nb_));
        PanelTransfer<T> panel{unsigned(n), unsigned(nb_)};
        T* const w = workspace.data();

        transposeInplace(a_.data, a_.ld, n);
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
        transposeInplace(a_.data, a_.ld, n);
    }

    // The workspace's leading dimension is the host panel's, so that its copies are flat.
    void gather(T* w, int j, int jb, PanelTransfer<T>& panel) {
        const int rows = n_ - j;
        transpose(w, std::size_t(rows), a_.at(j, j), std::size_t(a_.ld), std::size_t(jb),
                  std::size_t(rows));
        panel.startDownload(w, rows, rows, jb);
    }
    void scatter(const T* w, int j, int jb) {
        const int rows = n_ - j;
        transpose(a_.at(j, j), std::size_t(a_.ld), w, std::size_t(rows), std::size_t(rows),
                  std::size_t(jb));
    }

    // A last panel one column wide is 1 x 1 here and has nothing to exchange.
    void interchangeColumns(int firstRow, int rows, int j, int jb) {
        if (rows > 0) LASWPCOL(rows, a_.at(firstRow, 0), a_.ld, j + 1, j + jb, ipiv_, 1);
    }

    void updateTransposed(int j, int jb, int firstRow, int rows) {
        if (rows <= 0) return;
        const int right = j + jb;
        cublas::trsm('R', 'U', 'N', 'U', rows, jb, one, a_.at(j, j), a_.ld, a_.at(firstRow, j),
                     a_.ld);
        gemm('N', 'N', rows, n_ - right, jb, minusOne, a_.at(firstRow, j), a_.ld, a_.at(j, right),
             a_.ld, one, a_.at(firstRow, right), a_.ld);
    }

    const int m_, n_;
    const MatrixView<T> a_;
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
    checkReturnedInfo(host::getrf(m, n, a, lda, ipiv));
    return lumoNoError;
}

LUMO_INSTANTIATE_MEMBERS(Getrf)
LUMO_EXPORT_S_D_C_Z(getrf, Getrf)

}  // namespace lumo
