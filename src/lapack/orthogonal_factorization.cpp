#include "lapack/orthogonal_factorization.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "basic/Conjugate/Conjugate.h"
#include "blas/gemm.h"
#include "lapack/block_reflector.h"
#include "lapack/cpu_lapack.h"
#include "lapack/host_tau.h"
#include "lapack/panel_transfer.h"
#include "lapack/tuning.h"
#include "runtime/devices.h"

namespace lumo {
namespace {

// A line is what panels are made of: a column of A for QR, a row otherwise. After a panel the lines
// that are left lie right of it (QR), below it (LQ) or above it (RQ) and are counted from there.
template <class T>
class Factorization {
  public:
    Factorization(Reflectors kind, int m, int n, T* a, int lda, T* tau)
        : kind_(kind), m_(m), n_(n), a_(a), lda_(lda), k_(std::min(m, n)), deviceTau_(tau) {}

    void run() {
        nb_ = geqrfTuning<T>.current();
        if (k_ <= nb_) {
            tau_.emplace(deviceTau_, k_, HostTau<T>::writesBack);
            return unblocked(0);
        }
        std::vector<T> hostT(std::size_t(nb_) * std::size_t(nb_), T(0));
        PanelTransfer<T> panel(unsigned(columns() ? m_ : nb_),
                               unsigned(columns() ? nb_ : n_ + cpu::spareColumns), copiesOverlap());
        BlockReflector<T> reflector(kind_, nb_);
        const std::size_t across = std::size_t(columns() ? m_ : n_);
        const std::size_t along = std::size_t(columns() ? n_ : m_);
        cudalib::Workspace<T> w(std::size_t(nb_) * across), y(std::size_t(nb_) * along);
        tau_.emplace(deviceTau_, k_, HostTau<T>::writesBack);

        int done = 0;
        download(panel, 0);
        for (; done < k_ - nb_; done += nb_) {
            const Panel p = at(done);
            panel.wait();
            factorizePanel(panel.host(), p, hostT.data());
            sendPanel(panel.host(), p);
            sendFactor(hostT.data(), reflector);
            reflector.expose(p.start, lda_, p.order, nb_);
            const int next = std::min(p.left, nb_);
            formW(p, reflector, w.data());
            update(p, 0, next, w.data(), y.data());
            if (done + nb_ < k_ - nb_) download(panel, done + nb_);
            update(p, next, p.left - next, w.data(), y.data());
            reflector.restore();
        }
        unblocked(done);
    }

  private:
    static constexpr T zero = T(0), one = T(1), minusOne = T(-1);

    // The panel that follows `done` reflectors.
    struct Panel {
        T* start;  // its first element
        int rows, columns;
        int order;  // of its reflectors
        int left;   // lines after it
        int firstTau;
    };

    bool columns() const { return kind_ == Reflectors::ofQr; }
    T* element(int i, int j) const { return a_ + std::size_t(j) * std::size_t(lda_) + i; }
    static std::size_t bytes(int elements) { return std::size_t(elements) * sizeof(T); }

    Panel at(int done) const {
        switch (kind_) {
            case Reflectors::ofQr:
                return {element(done, done), m_ - done, nb_, m_ - done, n_ - done - nb_, done};
            case Reflectors::ofLq:
                return {element(done, done), nb_, n_ - done, n_ - done, m_ - done - nb_, done};
            default:
                return {element(m_ - done - nb_, 0),
                        nb_,
                        n_ - done,
                        n_ - done,
                        m_ - done - nb_,
                        k_ - done - nb_};
        }
    }

    void download(PanelTransfer<T>& panel, int done) {
        const Panel p = at(done);
        panel.startDownload(p.start, lda_, p.rows, p.columns);
    }

    // The panel's factorisation and its T. QR applies H^H to the left of A: what the device gets is
    // T^H, transposed here and conjugated there.
    void factorizePanel(T* panel, const Panel& p, T* t) {
        T* const tau = tau_->data() + p.firstTau;
        factorize(p.rows, p.columns, panel, p.rows, tau);
        const bool backward = kind_ == Reflectors::ofRq;
        cpu::larft(backward ? 'B' : 'F', columns() ? 'C' : 'R', p.order, nb_, panel, p.rows, tau, t,
                   nb_);
        if (!columns()) return;
        for (int c = 1; c < nb_; ++c)
            for (int r = 0; r < c; ++r) {
                t[r * nb_ + c] = t[c * nb_ + r];
                t[c * nb_ + r] = zero;
            }
    }

    void factorize(int rows, int cols, T* a, int lda, T* tau) {
        switch (kind_) {
            case Reflectors::ofQr:
                return cpu::geqrf(rows, cols, a, lda, tau);
            case Reflectors::ofLq:
                return cpu::gelqf(rows, cols, a, lda, tau);
            default:
                return cpu::gerqf(rows, cols, a, lda, tau);
        }
    }

    void sendPanel(const T* host, const Panel& p) {
        cudalib::checkCudaError(cudalib::copy2D(p.start, bytes(lda_), host, bytes(p.rows),
                                                bytes(p.rows), std::size_t(p.columns),
                                                cudaMemcpyHostToDevice));
    }

    void sendFactor(const T* t, BlockReflector<T>& reflector) {
        cudalib::checkCudaError(
            cudaMemcpy(reflector.t(), t, bytes(nb_) * std::size_t(nb_), cudaMemcpyHostToDevice));
        if constexpr (isComplex<T>)
            if (columns()) conjugateMatrix(nb_, nb_, reflector.t(), nb_);
    }

    // QR: W = T^H V^H, nb x order. LQ and RQ, which apply H to the right: W = V T, order x nb.
    void formW(const Panel& p, const BlockReflector<T>& reflector, T* w) {
        if (columns())
            gemm('N', isComplex<T> ? 'C' : 'T', nb_, p.order, nb_, one, reflector.t(), nb_, p.start,
                 lda_, zero, w, nb_);
        else
            gemm(isComplex<T> ? 'C' : 'T', 'N', p.order, nb_, nb_, one, p.start, lda_,
                 reflector.t(), nb_, zero, w, p.order);
    }

    // `count` of the lines after the panel, from the `first` on.
    void update(const Panel& p, int first, int count, const T* w, T* y) {
        if (count <= 0) return;
        if (columns()) {
            T* const c = p.start + std::size_t(nb_ + first) * std::size_t(lda_);
            gemm('N', 'N', nb_, count, p.order, one, w, nb_, c, lda_, zero, y, nb_);
            gemm('N', 'N', p.order, count, nb_, minusOne, p.start, lda_, y, nb_, one, c, lda_);
        } else {
            T* const c =
                kind_ == Reflectors::ofLq ? p.start + nb_ + first : p.start - (first + count);
            gemm('N', 'N', count, nb_, p.order, one, c, lda_, w, p.order, zero, y, count);
            gemm('N', 'N', count, p.order, nb_, minusOne, y, count, p.start, lda_, one, c, lda_);
        }
    }

    // What is left after `done` reflectors: the end of A (QR, LQ) or its beginning (RQ).
    void unblocked(int done) {
        const int rows = m_ - done, cols = n_ - done;
        const bool backward = kind_ == Reflectors::ofRq;
        T* const rest = backward ? a_ : element(done, done);
        std::vector<T> host(std::size_t(rows) * std::size_t(cols + cpu::spareColumns), zero);
        cudalib::checkCudaError(cudalib::copy2D(host.data(), bytes(rows), rest, bytes(lda_),
                                                bytes(rows), std::size_t(cols),
                                                cudaMemcpyDeviceToHost));
        factorize(rows, cols, host.data(), rows, tau_->data() + (backward ? 0 : done));
        cudalib::checkCudaError(cudalib::copy2D(rest, bytes(lda_), host.data(), bytes(rows),
                                                bytes(rows), std::size_t(cols),
                                                cudaMemcpyHostToDevice));
    }

    const Reflectors kind_;
    const int m_, n_;
    T* const a_;
    const int lda_, k_;
    T* const deviceTau_;
    std::optional<HostTau<T>> tau_;
    int nb_ = 0;
};

}  // namespace

template <class T>
void factorizeQr(int m, int n, T* a, int lda, T* tau) {
    if (m > 0 && n > 0) Factorization<T>(Reflectors::ofQr, m, n, a, lda, tau).run();
}
template <class T>
void factorizeLq(int m, int n, T* a, int lda, T* tau) {
    if (m > 0 && n > 0) Factorization<T>(Reflectors::ofLq, m, n, a, lda, tau).run();
}
template <class T>
void factorizeRq(int m, int n, T* a, int lda, T* tau) {
    if (m > 0 && n > 0) Factorization<T>(Reflectors::ofRq, m, n, a, lda, tau).run();
}

template void factorizeQr(int, int, float*, int, float*);
template void factorizeQr(int, int, double*, int, double*);
template void factorizeQr(int, int, Complex<float>*, int, Complex<float>*);
template void factorizeQr(int, int, Complex<double>*, int, Complex<double>*);
template void factorizeLq(int, int, float*, int, float*);
template void factorizeLq(int, int, double*, int, double*);
template void factorizeLq(int, int, Complex<float>*, int, Complex<float>*);
template void factorizeLq(int, int, Complex<double>*, int, Complex<double>*);
template void factorizeRq(int, int, float*, int, float*);
template void factorizeRq(int, int, double*, int, double*);
template void factorizeRq(int, int, Complex<float>*, int, Complex<float>*);
template void factorizeRq(int, int, Complex<double>*, int, Complex<double>*);

}  // namespace lumo
