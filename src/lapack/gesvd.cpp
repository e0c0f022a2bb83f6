#include "lapack/gesvd.h"

#include <optional>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "blas/gemm.h"
#include "common/matrix.h"
#include "lapack/bdsqr.h"
#include "lapack/gebrd.h"
#include "lapack/generate_q.h"
#include "lapack/host_lapack.h"
#include "lapack/orgbr.h"
#include "lapack/orthogonal_factorization.h"
#include "lapack/tuning.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// The singular vectors of one side: where they go.
template <class T>
struct Vectors {
    char job;
    T* at;
    int ld;

    bool wanted() const { return job != 'N'; }
    bool separate() const { return job == 'A' || job == 'S'; }  // and not to A
};

template <class T>
class SingularValues {
  public:
    SingularValues(int m, int n, T* a, int lda, RealOf<T>* s, Vectors<T> u, Vectors<T> vt)
        : m_(m),
          n_(n),
          mn_(std::min(m, n)),
          a_(a),
          lda_(lda),
          s_(s),
          u_(u),
          vt_(vt),
          tauq_(std::size_t(mn_)),
          taup_(std::size_t(mn_)),
          e_(std::size_t(mn_ - 1)) {}

    void run() {
        // From this shape on it pays to make A square first (LAPACK's ILAENV for xGESVD).
        const int crossover = int(1.6 * mn_);
        if (std::max(m_, n_) < crossover)
            direct();
        else if (far().wanted())
            bySquare();
        else
            valuesBySquare();
        if (failure_) throw *failure_;
    }

  private:
    static constexpr T zero = T(0), one = T(1);

    // A tall A has long left vectors and is QR-factorised; a wide one has long right vectors and is
    // LQ-factorised. The near side is the other one.
    bool tall() const { return m_ >= n_; }
    const Vectors<T>& far() const { return tall() ? u_ : vt_; }
    const Vectors<T>& near() const { return tall() ? vt_ : u_; }
    char farFactor() const { return tall() ? 'Q' : 'P'; }
    char nearFactor() const { return tall() ? 'P' : 'Q'; }
    // The triangle of the square factor, which is where the near side's reflectors lie; the far
    // side's lie in the other one.
    char triangle() const { return tall() ? 'U' : 'L'; }
    char otherTriangle() const { return tall() ? 'L' : 'U'; }

    // Paths 1 and 1t: no vectors of the far side.
    void valuesBySquare() {
        factorize();
        LASET(otherTriangle(), mn_ - 1, mn_ - 1, zero, zero, tall() ? a_ + 1 : above(a_, lda_),
              lda_);
        reduce(mn_, mn_, a_, lda_);
        if (near().wanted()) orgbr(nearFactor(), mn_, mn_, mn_, a_, lda_, nearTau());
        iterate({'N', nullptr, 1}, {near().job, a_, lda_});
        if (near().separate()) LACPY('F', mn_, mn_, a_, lda_, near().at, near().ld);
    }

    // Paths 2 to 9 and 2t to 9t: through the square triangular factor K. The vectors of A are Q
    // times those of K on the far side, those of K on the near one.
    void bySquare() {
        const bool all = far().job == 'A';
        cudalib::Workspace<T> square(std::size_t(mn_) * std::size_t(mn_));
        cudalib::Workspace<T> kept(near().job == 'O' ? std::size_t(mn_) * std::size_t(mn_) : 0);
        T* const k = square.data();
        const Vectors<T> nearOfK = near().job == 'O' ? Vectors<T>{'O', kept.data(), mn_} : near();

        factorize();
        LASET('F', mn_, mn_, zero, zero, k, mn_);
        LACPY(triangle(), mn_, mn_, a_, lda_, k, mn_);
        if (all) LACPY(otherTriangle(), m_, n_, a_, lda_, far().at, far().ld);
        generateQ(all ? far().at : a_, all ? far().ld : lda_, all);

        reduce(mn_, mn_, k, mn_);
        if (near().wanted()) {
            LACPY(triangle(), mn_, mn_, k, mn_, nearOfK.at, nearOfK.ld);
            orgbr(nearFactor(), mn_, mn_, mn_, nearOfK.at, nearOfK.ld, nearTau());
        }
        orgbr(farFactor(), mn_, mn_, mn_, k, mn_, farTau());
        iterate({'S', k, mn_}, nearOfK);

        if (far().job == 'S') {
            multiply(a_, lda_, k, far().at, far().ld, 0, longSide());
        } else if (all) {
            multiply(far().at, far().ld, k, a_, lda_, 0, longSide());
            LACPY('F', m_, n_, a_, lda_, far().at, far().ld);
        } else {
            multiplyInPlace(k);
        }
        if (near().job == 'O') LACPY('F', mn_, mn_, nearOfK.at, nearOfK.ld, a_, lda_);
    }

    // Paths 10 and 10t: A is reduced as it is. What is copied from it is copied before factors are
    // generated in it.
    void direct() {
        reduce(m_, n_, a_, lda_);
        const Vectors<T> inA{'O', a_, lda_};
        const Vectors<T> left = u_.job == 'O' ? inA : u_, right = vt_.job == 'O' ? inA : vt_;
        if (u_.separate()) LACPY('L', m_, mn_, a_, lda_, left.at, left.ld);
        if (vt_.separate()) LACPY('U', mn_, n_, a_, lda_, right.at, right.ld);
        if (left.wanted())
            orgbr('Q', m_, left.job == 'A' ? m_ : mn_, n_, left.at, left.ld, tauq_.data());
        if (right.wanted())
            orgbr('P', right.job == 'A' ? n_ : mn_, n_, m_, right.at, right.ld, taup_.data());
        iterate(tall() ? 'U' : 'L', right, n_, left, m_);
    }

    int longSide() const { return std::max(m_, n_); }
    T* tau(char factor) const { return factor == 'Q' ? tauq_.data() : taup_.data(); }
    T* nearTau() const { return tau(nearFactor()); }
    T* farTau() const { return tau(farFactor()); }
    static T* above(T* a, int lda) { return a + lda; }

    // tauq holds the factors of QR or LQ until the reduction overwrites it.
    void factorize() {
        if (tall())
            factorizeQr(m_, n_, a_, lda_, tauq_.data());
        else
            factorizeLq(m_, n_, a_, lda_, tauq_.data());
    }
    void generateQ(T* q, int ldq, bool all) {
        if (tall())
            orgqr(m_, all ? m_ : n_, n_, q, ldq, tauq_.data());
        else
            orglq(all ? n_ : m_, n_, m_, q, ldq, tauq_.data());
    }
    void reduce(int m, int n, T* a, int lda) {
        gebrd(m, n, a, lda, s_, e_.data(), tauq_.data(), taup_.data());
    }

    // Of a square matrix, by its far and its near side.
    void iterate(const Vectors<T>& farOfK, const Vectors<T>& nearOfK) {
        iterate('U', tall() ? nearOfK : farOfK, mn_, tall() ? farOfK : nearOfK, mn_);
    }
    // Bad data and an iteration that does not end are told when all vectors are where they belong,
    // so that nothing is left unwritten.
    void iterate(char uplo, const Vectors<T>& right, int columns, const Vectors<T>& left,
                 int rows) {
        try {
            bdsqr(uplo, mn_, right.wanted() ? columns : 0, left.wanted() ? rows : 0, 0, s_,
                  e_.data(), right.at, right.ld, left.at, left.ld, static_cast<T*>(nullptr), 1);
        } catch (const InfoException& e) {
            if (e.info() < 1) throw;
            failure_ = e;
        }
    }

    // `count` of the rows of result := Q K (tall) or of the columns of K Q, from `first` on of Q.
    void multiply(const T* q, int ldq, const T* k, T* result, int ldr, int first, int count) {
        if (tall())
            gemm('N', 'N', count, n_, n_, one, q + first, ldq, k, mn_, zero, result, ldr);
        else
            gemm('N', 'N', m_, count, m_, one, k, mn_, at(q, ldq, 0, first), ldq, zero, result,
                 ldr);
    }

    // A := A K or K A, strip by strip: no product has its result among its operands.
    void multiplyInPlace(const T* k) {
        const int strip = mn_, length = longSide();
        cudalib::Workspace<T> work(std::size_t(strip) * std::size_t(mn_));
        for (int i = 0; i < length; i += strip) {
            const int count = std::min(strip, length - i);
            const int rows = tall() ? count : m_, columns = tall() ? n_ : count;
            multiply(a_, lda_, k, work.data(), rows, i, count);
            T* const part = tall() ? at(a_, lda_, i, 0) : at(a_, lda_, 0, i);
            LACPY('F', rows, columns, work.data(), rows, part, lda_);
        }
    }

    const int m_, n_, mn_;
    T* const a_;
    const int lda_;
    RealOf<T>* const s_;
    const Vectors<T> u_, vt_;
    cudalib::Workspace<T> tauq_, taup_;
    cudalib::Workspace<RealOf<T>> e_;
    std::optional<InfoException> failure_;
};

}  // namespace

template <class T>
void Gesvd<T>::run() const {
    SingularValues<T>(m, n, a, lda, s, {jobu, u, ldu}, {jobvt, vt, ldvt}).run();
}

template <class T>
bool Gesvd<T>::isSmall() const {
    const int most = jobu == 'N' && jobvt == 'N' ? smallSingularValues<T>() : smallSvd;
    return std::max(m, n) <= most && host::isFinite(m, n, a, lda);
}
template <class T>
lumoStatus Gesvd<T>::runOnCpu() const {
    host::gesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt);
    return lumoNoError;
}

LUMO_INSTANTIATE_MEMBERS(Gesvd)
LUMO_EXPORT_S_D_C_Z(gesvd, Gesvd)

}  // namespace lumo
