#include "lapack/potrf.h"

#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/host_lapack.h"
#include "lapack/panel_transfer.h"
#include "lapack/tuning.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// Rows and columns are counted from 0, blocks by their first one, j. What lies beyond a block of
// the diagonal is a block of rows for uplo "U", of columns for "L".
template <class T>
class CholeskyFactorization {
  public:
    CholeskyFactorization(char uplo, int n, T* a, int lda, int nb)
        : uplo_(uplo), n_(n), nb_(nb), a_{a, lda}, panel_(unsigned(nb), unsigned(nb)) {}

    int run() {
        download(0);
        for (int j = 0; j < n_; j += nb_) {
            const int jb = width(j), next = j + jb, left = n_ - next;
            panel_.wait();
            const int info = host::potrf(uplo_, jb, panel_.host(), panel_.ld());
            if (info < 0) checkReturnedInfo(info);  // a wrong call of ours
            panel_.startUpload(a_.at(j, j), a_.ld, jb, jb);
            device_.waitForPanel();
            if (info > 0) return j + info;
            if (left == 0) break;
            solve(j, jb, left);
            const int nextWidth = width(next);
            updateDiagonal(j, jb, next, nextWidth);
            device_.panelWaits();
            download(next);
            updateBeyond(j, jb, next, nextWidth);
        }
        return 0;
    }

  private:
    static constexpr T one = T(1), minusOne = T(-1);
    using Real = RealOf<T>;

    bool isUpper() const { return uplo_ == 'U'; }
    int width(int j) const { return std::min(nb_, n_ - j); }
    // Of the block of rows or columns j, what lies at index i > j.
    T* beyond(int j, int i) const { return isUpper() ? a_.at(j, i) : a_.at(i, j); }

    void download(int j) { panel_.startDownload(a_.at(j, j), a_.ld, width(j), width(j)); }

    // U12 := U11^-H A12, or L21 := A21 L11^-H.
    void solve(int j, int jb, int left) const {
        if (isUpper())
            cublas::trsm('L', 'U', 'C', 'N', jb, left, one, a_.at(j, j), a_.ld, beyond(j, j + jb),
                         a_.ld);
        else
            cublas::trsm('R', 'L', 'C', 'N', left, jb, one, a_.at(j, j), a_.ld, beyond(j, j + jb),
                         a_.ld);
    }

    // The triangle of order `order` from i on, less the products of block j's part there.
    void updateDiagonal(int j, int jb, int i, int order) const {
        cublas::herk(uplo_, isUpper() ? 'C' : 'N', order, jb, Real(-1), beyond(j, i), a_.ld,
                     Real(1), a_.at(i, i), a_.ld);
    }

    // All but the next block of the diagonal, of `order` rows from i on.
    void updateBeyond(int j, int jb, int i, int order) const {
        const int k = i + order, left = n_ - k;
        if (left == 0) return;
        if (isUpper())
            gemm('C', 'N', order, left, jb, minusOne, beyond(j, i), a_.ld, beyond(j, k), a_.ld, one,
                 a_.at(i, k), a_.ld);
        else
            gemm('N', 'C', left, order, jb, minusOne, beyond(j, k), a_.ld, beyond(j, i), a_.ld, one,
                 a_.at(k, i), a_.ld);
        updateDiagonal(j, jb, k, left);
    }

    const char uplo_;
    const int n_, nb_;
    const MatrixView<T> a_;
    PanelTransfer<T> panel_;
    const StreamBesidePanel device_{panel_.stream()};
};

}  // namespace

template <class T>
int potrf(char uplo, int n, T* a, int lda) {
    const int wish = platform::panelWidth(platform::Panel::cholesky, platform::letter<T>, n, n);
    const int nb = std::min(n, wish ? wish : potrfTuning<T>.current());
    return CholeskyFactorization<T>(uplo, n, a, lda, nb).run();
}

LUMO_INSTANTIATE(potrf)

template <class T>
void Potrf<T>::run() const {
    if (const int minor = potrf(uplo, n, a, lda)) throwDataError(minor);
}

template <class T>
bool Potrf<T>::isSmall() const {
    return n <= smallCholesky;
}
template <class T>
lumoStatus Potrf<T>::runOnCpu() const {
    checkReturnedInfo(host::potrf(uplo, n, a, lda));
    return lumoNoError;
}

LUMO_INSTANTIATE_MEMBERS(Potrf)
LUMO_EXPORT_S_D_C_Z(potrf, Potrf)

}  // namespace lumo
