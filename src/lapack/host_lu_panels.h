// The panels of a pipelined LU factorisation (lu_pipeline.h) by the CPU LAPACK.
#pragma once

#include "basic/PermuteRows/PermuteRows.h"
#include "common/matrix.h"
#include "lapack/eliminate.h"
#include "lapack/host_lapack.h"
#include "lapack/panel_transfer.h"

namespace lumo {

// A panel travels on a stream of its own, beside the device's. The host waits for it.
template <class T>
class HostLuPanels {
  public:
    // Of a matrix of m rows, in panels of up to nb columns. The pivots, from 1, go to ipiv.
    HostLuPanels(MatrixView<T> a, int m, int nb, int* ipiv)
        : a_(a), m_(m), ipiv_(ipiv), panel_(unsigned(m), unsigned(nb)) {}

    void start(int j, int jb) {
        if (j > 0) device_.panelWaits();
        panel_.startDownload(a_.at(j, j), a_.ld, m_ - j, jb);
    }
    void finish(int j, int jb) {
        panel_.wait();
        const int info = host::getrf(m_ - j, jb, panel_.host(), panel_.ld(), ipiv_ + j);
        if (info < 0) checkReturnedInfo(info);  // a wrong call of ours
        if (info > 0 && firstZeroPivot_ == 0) firstZeroPivot_ = j + info;
        for (int i = j; i < j + jb; ++i) ipiv_[i] += j;  // from the panel's own rows
        panel_.startUpload(a_.at(j, j), a_.ld, m_ - j, jb);
        device_.waitForPanel();
    }
    // The next columns of all that is right of the panel, which is exchanged in one launch; the
    // rest.
    void updateNext(int j, int jb, int next, int all) const {
        interchange(j + jb, all, j, jb);
        eliminate(a_, m_, j, jb, j + jb, next);
    }
    void updateRest(int j, int jb, int first, int columns) const {
        eliminate(a_, m_, j, jb, first, columns);
    }
    void interchange(int first, int columns, int j, int jb) const {
        permuteRows(columns, a_.at(0, first), a_.ld, j + 1, j + jb, ipiv_);
    }
    int result() const { return firstZeroPivot_; }

  private:
    const MatrixView<T> a_;
    const int m_;
    int* const ipiv_;
    int firstZeroPivot_ = 0;
    PanelTransfer<T> panel_;
    const StreamBesidePanel device_{panel_.stream()};
};

}  // namespace lumo
