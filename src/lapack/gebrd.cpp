#include "lapack/gebrd.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/Transpose/Transpose.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"
#include "cudalib/workspace_pool.h"
#include "lapack/bidiagonal_panel.h"
#include "lapack/host_lapack.h"
#include "lapack/labrd.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

template <class T>
class BidiagonalReduction {
    using R = RealOf<T>;

  public:
    BidiagonalReduction(int m, int n, T* a, int lda, R* d, R* e, T* tauq, T* taup)
        : m_(m), n_(n), k_(std::min(m, n)), a_{a, lda}, d_(d), e_(e), tauq_(tauq), taup_(taup) {}

    void run() const {
        const int wish =
            platform::panelWidth(platform::Panel::bidiagonal, platform::letter<T>, m_, n_);
        const int nb = std::min(wish ? wish : gebrdTuning<T>.current(), BidiagonalPanel<T>::most);
        // The last block, of 1 to nb columns, is the CPU's.
        const int split = (k_ - 1) / nb * nb;
        if (split > 0 && gebrdReadsOnce<T>(m_, n_)) {
            if (m_ < n_) return runOnAdjoint(nb, split);
            if (!isAligned()) return runOnCopy(nb, split);
            return reduceReadingOnce(nb, split);
        }
        reduceReadingTwice(0, nb, split);
    }

  private:
    // A matrix is read by columns, so a wide one is made a tall one: A^H = P B^H Q^H.
    void runOnAdjoint(int nb, int split) const {
        const int ld = alignedLd(n_);
        const cudalib::Workspace<T> adjoint(std::size_t(ld) * std::size_t(m_));
        transpose(adjoint.data(), ld, a_.data, a_.ld, m_, n_, isComplex<T>);
        BidiagonalReduction(n_, m_, adjoint.data(), ld, d_, e_, taup_, tauq_)
            .reduceReadingOnce(nb, split);
        transpose(a_.data, a_.ld, adjoint.data(), ld, n_, m_, isComplex<T>);
    }

    // A vector of a CPU that lies across two lines of the cache is read twice, by every product.
    bool isAligned() const {
        const auto pitch = std::size_t(a_.ld) * sizeof(T);
        return (reinterpret_cast<std::uintptr_t>(a_.data) | pitch) % alignment == 0;
    }
    void runOnCopy(int nb, int split) const {
        const int ld = alignedLd(m_);
        const cudalib::Workspace<T> copy(std::size_t(ld) * std::size_t(n_));
        LACPY('F', m_, n_, a_.data, a_.ld, copy.data(), ld);
        BidiagonalReduction(m_, n_, copy.data(), ld, d_, e_, tauq_, taup_)
            .reduceReadingOnce(nb, split);
        LACPY('F', m_, n_, copy.data(), ld, a_.data, a_.ld);
    }
    static constexpr std::size_t alignment = 32;
    // Not a multiple of 1 kB either, for columns so far apart compete for places in the cache.
    static int alignedLd(int rows) {
        constexpr int elements = int(alignment / sizeof(T)) * 2, spread = 1024 / int(sizeof(T));
        const int ld = (rows + elements - 1) / elements * elements;
        return ld % spread == 0 ? ld + elements : ld;
    }

    void reduceReadingOnce(int nb, int split) const {
        const BidiagonalPanel<T> panel(m_, n_, nb);
        int i = 0;
        for (; i < split && gebrdReadsOnce<T>(m_ - i, n_ - i); i += nb)
            panel.reduce(m_ - i, n_ - i, a_.at(i, i), a_.ld, d_ + i, e_ + i, tauq_ + i, taup_ + i);
        reduceReadingTwice(i, nb, split);
    }

    void reduceReadingTwice(int from, int nb, int split) const {
        if (from >= split) return reduceOnCpu(split);
        const cudalib::Workspace<T> x(std::size_t(m_) * nb), y(std::size_t(n_) * nb), row(n_);
        for (int i = from; i < split; i += nb) {
            Labrd<T>{m_ - i,    n_ - i,    nb,       a_.at(i, i), a_.ld,    d_ + i, e_ + i,
                     tauq_ + i, taup_ + i, x.data(), m_,          y.data(), n_,     row.data()}
                .run();
            const int next = i + nb, rows = m_ - next, columns = n_ - next;
            gemm('N', adjointLetter<T>, rows, columns, nb, T(-1), a_.at(next, i), a_.ld,
                 y.data() + nb, n_, T(1), a_.at(next, next), a_.ld);
            gemm('N', 'N', rows, columns, nb, T(-1), x.data() + nb, m_, a_.at(i, next), a_.ld, T(1),
                 a_.at(next, next), a_.ld);
            // Where the update needed ones.
            restore(nb, d_ + i, a_.at(i, i));
            restore(nb, e_ + i, m_ >= n_ ? a_.at(i, i + 1) : a_.at(i + 1, i));
        }
        reduceOnCpu(split);
    }

    // `count` elements of B, back into a diagonal of A.
    void restore(int count, const R* values, T* diagonal) const {
        if constexpr (isComplex<T>)
            copyVectorRealToComplex(count, diagonal, a_.ld + 1, values, 1);
        else
            copyVector(count, values, 1, diagonal, a_.ld + 1);
    }

    // What is left from row and column i on.
    void reduceOnCpu(int i) const {
        const int m = m_ - i, n = n_ - i, k = k_ - i;
        auto buffer = [](std::size_t count) { return std::unique_ptr<T[]>(new T[count]); };
        const auto a = buffer(std::size_t(m) * std::size_t(n + host::spareColumns)),
                   tauq = buffer(k), taup = buffer(k);
        const std::unique_ptr<R[]> d(new R[k]), e(new R[k]);

        const std::size_t width = std::size_t(m) * sizeof(T),
                          pitch = std::size_t(a_.ld) * sizeof(T);
        cudalib::checkCudaError(cudalib::copy2D(a.get(), width, a_.at(i, i), pitch, width,
                                                std::size_t(n), cudaMemcpyDeviceToHost));
        host::gebrd(m, n, a.get(), m, d.get(), e.get(), tauq.get(), taup.get());
        cudalib::checkCudaError(cudalib::copy2D(a_.at(i, i), pitch, a.get(), width, width,
                                                std::size_t(n), cudaMemcpyHostToDevice));
        upload(d_ + i, d.get(), k);
        upload(e_ + i, e.get(), k - 1);
        upload(tauq_ + i, tauq.get(), k);
        upload(taup_ + i, taup.get(), k);
    }

    template <class V>
    static void upload(V* device, const V* host, int count) {
        if (count > 0)
            cudalib::checkCudaError(
                cudaMemcpy(device, host, std::size_t(count) * sizeof(V), cudaMemcpyHostToDevice));
    }

    const int m_, n_, k_;
    const MatrixView<T> a_;
    R *const d_, *const e_;
    T *const tauq_, *const taup_;
};

}  // namespace

template <class T>
void gebrd(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq, T* taup) {
    if (m < 0) throwArgumentError(-1);
    if (n < 0) throwArgumentError(-2);
    if (lda < std::max(1, m)) throwArgumentError(-4);
    if (m == 0 || n == 0) return;
    BidiagonalReduction<T>(m, n, a, lda, d, e, tauq, taup).run();
}

LUMO_INSTANTIATE(gebrd)

}  // namespace lumo
