// Transposition of device matrices, conjugating or not.
#pragma once

namespace lumo {

// dst := transpose of src, a rows x cols matrix; lddst >= cols, ldsrc >= rows. With `conjugated`,
// the conjugate transpose.
template <class T>
void transpose(T* dst, unsigned long lddst, const T* src, unsigned long ldsrc, unsigned long rows,
               unsigned long cols, bool conjugated = false);

// The same in place for a square matrix of order n.
template <class T>
void transposeInplace(T* a, unsigned long lda, unsigned long n, bool conjugated = false);

}  // namespace lumo
