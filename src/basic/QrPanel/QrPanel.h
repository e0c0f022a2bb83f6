// QR factorisation of a narrow panel where it lies, by all of the device's blocks that it takes.
#pragma once

#include "basic/QrPanel/shape.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// Factorises panels of 1 to qrPanelColumns<T> columns, m >= n, by reflectors as LAPACK's xLARFG
// makes them.
template <class T>
class QrPanel {
  public:
    // The most rows that this device's panels can have; 0 where blocks cannot wait for each other.
    static int mostRows();
    // Takes all memory that panels of so many rows need, one at a time.
    explicit QrPanel(int rows);

    // As xGEQRF, all in device memory: R and the reflectors to a, and their factors to tau. To v
    // and w, matrices of as many columns and `above` more rows, which become zero, V as a plain
    // matrix and W = V T: the product of the reflectors is I - W V^H.
    void factorize(int m, int n, T* a, int lda, T* tau, int above, T* v, T* w, int ld) const;

  private:
    cudalib::Workspace<ReflectorOffer<T>> offers_;
    cudalib::Workspace<unsigned> meeting_;
};

}  // namespace lumo
