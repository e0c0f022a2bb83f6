#include "lapack/generate_q.h"

#include <algorithm>

#include "basic/LASET/LASET.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/block_reflector.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

// A line is a column of Q (QR) or a row (LQ); `lines` of them have `length` elements each.
template <class T>
class Generation {
  public:
    Generation(Reflectors kind, int lines, int length, int k, T* a, int lda)
        : columns_(kind == Reflectors::ofQr),
          lines_(lines),
          length_(length),
          k_(k),
          nb_(std::min(geqrfTuning<T>.current(), k)),
          a_{a, lda},
          reflector_(kind, nb_),
          v_(std::size_t(nb_) * std::size_t(length)),
          work_(std::size_t(nb_) * std::size_t(lines)) {}

    // Q's lines are those of the unit matrix, to which the blocks are applied, last block first.
    // The lines that a block's reflectors are stored in have not been needed until then.
    void run(const T* tau) {
        setUnit(k_, lines_ - k_);
        for (int i = (k_ - 1) / nb_ * nb_; i >= 0; i -= nb_) {
            const int count = std::min(nb_, k_ - i), order = length_ - i;
            reflector_.take(a_.at(i, i), a_.ld, order, count, v_.data(), tau + i);
            setUnit(i, count);
            reflector_.apply(columns_ ? 'L' : 'R', columns_ ? 'N' : 'C', lines_ - i, a_.at(i, i),
                             a_.ld, work_.data());
        }
    }

  private:
    void setUnit(int first, int count) {
        if (count <= 0) return;
        if (columns_)
            LASET('A', first, count, T(0), T(0), a_.at(0, first), a_.ld);
        else
            LASET('A', count, first, T(0), T(0), a_.at(first, 0), a_.ld);
        const int order = length_ - first;
        LASET('A', columns_ ? order : count, columns_ ? count : order, T(0), T(1),
              a_.at(first, first), a_.ld);
    }

    const bool columns_;
    const int lines_, length_, k_, nb_;
    const MatrixView<T> a_;
    BlockReflector<T> reflector_;
    cudalib::Workspace<T> v_, work_;
};

template <class T>
void generate(Reflectors kind, int lines, int length, int k, T* a, int lda, const T* tau) {
    if (lines <= 0) return;
    const bool columns = kind == Reflectors::ofQr;
    if (k <= 0)
        return LASET('A', columns ? length : lines, columns ? lines : length, T(0), T(1), a, lda);
    Generation<T>(kind, lines, length, k, a, lda).run(tau);
}

}  // namespace

template <class T>
void orgqr(int m, int n, int k, T* a, int lda, const T* tau) {
    generate(Reflectors::ofQr, n, m, k, a, lda, tau);
}
template <class T>
void orglq(int m, int n, int k, T* a, int lda, const T* tau) {
    generate(Reflectors::ofLq, m, n, k, a, lda, tau);
}

LUMO_INSTANTIATE(orgqr)
LUMO_INSTANTIATE(orglq)

}  // namespace lumo
