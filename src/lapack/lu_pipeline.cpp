#include "lapack/lu_pipeline.h"

#include <algorithm>

#include "basic/PermuteRows/PermuteRows.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/host_lapack.h"
#include "lapack/panel_transfer.h"

namespace lumo {
namespace {

// Rows, columns and pivots below are counted from 0, panels by their first column j.
template <class T>
class LuPipeline {
  public:
    LuPipeline(int m, int n, T* a, int lda, int* ipiv, int nb)
        : m_(m),
          n_(n),
          a_{a, lda},
          ipiv_(ipiv),
          steps_(std::min(m, n)),
          nb_(nb),
          panel_(unsigned(m), unsigned(nb)) {}

    int run() {
        panel_.startDownload(a_.data, a_.ld, m_, nb_);
        for (int j = 0; j < steps_; j += nb_) {
            const int jb = width(j), right = j + jb;
            factorizePanel(j, jb);
            interchange(right, n_ - right, j, jb);
            const int next = right < steps_ ? width(right) : 0;
            if (next > 0) {
                update(j, jb, right, next);
                device_.panelWaits();
                panel_.startDownload(a_.at(right, right), a_.ld, m_ - right, next);
            }
            update(j, jb, right + next, n_ - right - next);
            interchange(0, j, j, jb);
        }
        return firstZeroPivot_;
    }

  private:
    int width(int j) const { return std::min(nb_, steps_ - j); }

    // Columns j ... j + jb - 1 from row j on, which are on their way to the host; what the device
    // is given next finds them factorised.
    void factorizePanel(int j, int jb) {
        panel_.wait();
        const int info = host::getrf(m_ - j, jb, panel_.host(), panel_.ld(), ipiv_ + j);
        if (info < 0) checkReturnedInfo(info);  // a wrong call of ours
        if (info > 0 && firstZeroPivot_ == 0) firstZeroPivot_ = j + info;
        for (int i = j; i < j + jb; ++i) ipiv_[i] += j;  // from the panel's own rows
        panel_.startUpload(a_.at(j, j), a_.ld, m_ - j, jb);
        device_.waitForPanel();
    }

    void interchange(int first, int columns, int j, int jb) const {
        permuteRows(columns, a_.at(0, first), a_.ld, j + 1, j + jb, ipiv_);
    }

    // U12 := L11^-1 A12 and A22 := A22 - L21 U12 for `columns` columns from `first` on.
    void update(int j, int jb, int first, int columns) const {
        if (columns <= 0) return;
        const int below = m_ - j - jb;
        cublas::trsm('L', 'L', 'N', 'U', jb, columns, T(1), a_.at(j, j), a_.ld, a_.at(j, first),
                     a_.ld);
        if (below > 0)
            gemm('N', 'N', below, columns, jb, T(-1), a_.at(j + jb, j), a_.ld, a_.at(j, first),
                 a_.ld, T(1), a_.at(j + jb, first), a_.ld);
    }

    const int m_, n_;
    const MatrixView<T> a_;
    int* const ipiv_;
    const int steps_, nb_;
    int firstZeroPivot_ = 0;
    PanelTransfer<T> panel_;
    const StreamBesidePanel device_{panel_.stream()};
};

}  // namespace

template <class T>
int pipelinedGetrf(int m, int n, T* a, int lda, int* ipiv, int nb) {
    return LuPipeline<T>(m, n, a, lda, ipiv, nb).run();
}

LUMO_INSTANTIATE(pipelinedGetrf)

}  // namespace lumo
