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

    // As xGEQRT3, all in device memory: R and the reflectors to a, their triangular factor, upper
    // with zeros below, to the n x n matrix t, and its diagonal to tau.
    void factorize(int m, int n, T* a, int lda, T* tau, T* t, int ldt) const;

  private:
    cudalib::Workspace<ReflectorOffer<T>> offers_;
    cudalib::Workspace<unsigned> meeting_;
};

}  // namespace lumo
