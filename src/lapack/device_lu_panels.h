// The panels of a pipelined LU factorisation (lu_pipeline.h) by the device, where they lie.
#pragma once

#include <algorithm>
#include <vector>

#include "basic/LuPanel/LuPanel.h"
#include "basic/PermuteRows/PermuteRows.h"
#include "common/matrix.h"
#include "lapack/eliminate.h"
#include "lapack/panel_transfer.h"
#include "lapack/tuning.h"

namespace lumo {

// A panel is factorised by strips of columns, on a stream of its own beside that of the rest. The
// host waits for nothing before the end.
template <class T>
class DeviceLuPanels {
  public:
    // Of the device's panels in a factorisation of so many rows and steps; 0 if it is to have the
    // CPU's.
    static int width(int m, int steps) {
        return m <= LuPanel<T>::mostRows() ? luPanels<T>.width(steps) : 0;
    }

    // Of a matrix of m rows and the first `steps` columns, in panels of up to nb columns. The
    // pivots, from 1, go to ipiv at the end.
    DeviceLuPanels(MatrixView<T> a, int m, int steps, int nb, int* ipiv)
        : a_(a),
          m_(m),
          steps_(steps),
          nb_(nb),
          strip_(std::min(nb, luPanels<T>.strip)),
          ipiv_(ipiv),
          kernel_(m),
          pivots_(std::size_t(steps) + 1),
          moves_(std::size_t((steps - 1) / nb + 1) * std::size_t(strips())) {}

    void start(int j, int jb) {
        device_.panelWaits();
        const cudalib::OnStream here(stream_);
        for (int i = j; i < j + jb; i += strip_) {
            const int width = std::min(strip_, j + jb - i);
            kernel_.factorize(m_ - i, width, a_.at(i, i), a_.ld, i, pivots_.data() + i, moves(i),
                              pivots_.data() + steps_);
            apply(i, width, i - j, i + width, j + jb - i - width);
        }
    }
    void finish(int, int) const { device_.waitForPanel(); }
    // A strip's multipliers have moved by the interchanges of those after it: what is beside the
    // panel has to, too, before it meets them.
    void updateNext(int j, int jb, int next, int /*all*/) const {
        if (jb <= strip_)
            apply(j, jb, 0, j + jb, next);
        else
            updateRest(j, jb, j + jb, next);
    }
    void updateRest(int j, int jb, int first, int columns) const {
        interchange(first, columns, j, jb);
        eliminate(a_, m_, j, jb, first, columns);
    }
    void interchange(int first, int columns, int j, int jb) const {
        for (int i = j; i < j + jb; i += strip_)
            permuteRowsThere(columns, a_.at(i, first), a_.ld, moves(i));
    }
    int result() const {
        cudalib::checkCudaError(cudaGetLastError());  // or nobody has written the pivots
        std::vector<int> found(std::size_t(steps_) + 1);
        cudalib::checkCudaError(cudaMemcpy(found.data(), pivots_.data(), found.size() * sizeof(int),
                                           cudaMemcpyDeviceToHost));
        std::copy_n(found.begin(), steps_, ipiv_);
        return found.back() > steps_ ? 0 : found.back();
    }

  private:
    // The strip from column i on: rows of the columns left of it, all of `columns` from `first` on.
    void apply(int i, int width, int left, int first, int columns) const {
        LuPanel<T>::applyTo(left, columns, a_.at(i, first), width, a_.at(i, i), a_.ld, moves(i));
        subtractProduct(a_, m_, i, width, first, columns);
    }
    int strips() const { return (nb_ - 1) / strip_ + 1; }
    // Of the strip from column i on. Each has a table of its own: the device's stream may still be
    // moving rows by one when the panels' stream is far ahead.
    RowMoves* moves(int i) const { return moves_.data() + i / nb_ * strips() + i % nb_ / strip_; }

    const MatrixView<T> a_;
    const int m_, steps_, nb_, strip_;
    int* const ipiv_;
    const LuPanel<T> kernel_;
    const cudalib::Workspace<int> pivots_;  // and the first zero pivot
    const cudalib::Workspace<RowMoves> moves_;
    const cudalib::Stream stream_{cudalib::Stream::urgent};
    const StreamBesidePanel device_{stream_};
};

}  // namespace lumo
