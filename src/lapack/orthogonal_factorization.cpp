#include "lapack/orthogonal_factorization.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "basic/Conjugate/Conjugate.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/block_reflector.h"
#include "lapack/device_qr.h"
#include "lapack/host_lapack.h"
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
        : kind_(kind), m_(m), n_(n), a_{a, lda}, k_(std::min(m, n)), deviceTau_(tau) {}

    void run() {
        const int wish = platform::panelWidth(platform::Panel::qr, platform::letter<T>, m_, n_);
        const int nb = wish ? wish : geqrfTuning<T>.current();
        nb_ = std::min(nb, k_);
        const int inPanels = columns() ? k_ - nb : k_;
        if (inPanels < 1) {
            tau_.emplace(deviceTau_, k_);
            return unblocked(0);
        }
        const std::size_t length = std::size_t(columns() ? m_ : n_);
        const int lines = columns() ? n_ : m_;
        // One panel of all lines leaves nothing to update.
        const int updated = lines > nb_ ? lines : 0, width = updated ? nb_ : 0;
        const bool overlap = copiesOverlap();
        streamed_ = overlap && deviceIsModern();
        factor_.emplace(nb_, streamed_);
        PanelTransfer<T> panel(unsigned(columns() ? m_ : nb_), unsigned(columns() ? nb_ : n_),
                               overlap);
        BlockReflector<T> reflector(kind_, width);
        // W spares a GPU a triangular product for each update, at the cost of a product for each
        // panel, for which the next one waits.
        formsW_ = !panel.shared() || !columns();
        cudalib::Workspace<T> w(formsW_ ? std::size_t(width) * length : 0),
            y(std::size_t(width) * std::size_t(updated));
        tau_.emplace(deviceTau_, k_);

        std::optional<StreamBesidePanel> device;
        if (streamed_) device.emplace(panel.stream());

        int done = 0;
        download(panel, done);
        for (; done < inPanels; done += nb_) {
            const Panel p = panelAfter(done);
            panel.wait();
            factorizePanel(panel.host(), panel.ld(), p);
            sendPanel(panel, p);
            if (p.left > 0) sendFactor(panel, reflector, p.count);
            if (device) device->waitForPanel();
            if (p.left <= 0) continue;
            finishFactor(reflector, p.count);
            reflector.expose(p.start, a_.ld, p.order, p.count);
            if (formsW_) formW(p, reflector, w.data());
            auto updateLines = [&](int first, int lines) {
                if (formsW_)
                    update(p, first, lines, w.data(), y.data());
                else
                    reflector.apply('L', 'C', lines, lineAfter(p, first), a_.ld, y.data());
            };
            const int next = std::min(p.left, nb_);
            updateLines(0, next);
            if (done + nb_ < inPanels) {
                if (device) device->panelWaits();
                download(panel, done + nb_);
            }
            updateLines(next, p.left - next);
            reflector.restore();
        }
        if (done < k_) unblocked(done);
    }

  private:
    static constexpr T zero = T(0), one = T(1), minusOne = T(-1);

    // The panel that follows `done` reflectors.
    struct Panel {
        T* start;   // its first element
        int count;  // its lines and reflectors
        int order;  // of its reflectors
        int left;   // lines after it
        int firstTau;
        int rows, columns;  // its shape in A
    };

    // The triangular factor of a panel, nb x nb, page-locked if it travels while the CPU goes on.
    class HostFactor {
      public:
        HostFactor(int nb, bool pageLocked) {
            if (pageLocked)
                locked_ = Locked({unsigned(nb), unsigned(nb)});
            else
                plain_.resize(std::size_t(nb) * std::size_t(nb));
        }
        T* data() { return plain_.empty() ? locked_.data() : plain_.data(); }

      private:
        using Locked = cudalib::ManagedMemory<T, cudalib::PageLockedAllocator>;
        std::vector<T> plain_;
        Locked locked_;
    };

    bool columns() const { return kind_ == Reflectors::ofQr; }
    bool backward() const { return kind_ == Reflectors::ofRq; }
    static std::size_t bytes(int elements) { return std::size_t(elements) * sizeof(T); }

    Panel panelAfter(int done) const {
        const int count = std::min(nb_, k_ - done), below = m_ - done, beside = n_ - done;
        if (columns()) return {a_.at(done, done), count, below, beside - count, done, below, count};
        const int left = below - count;
        if (backward())
            return {a_.at(left, 0), count, beside, left, k_ - done - count, count, beside};
        return {a_.at(done, done), count, beside, left, done, count, beside};
    }

    void download(PanelTransfer<T>& panel, int done) {
        const Panel p = panelAfter(done);
        panel.startDownload(p.start, a_.ld, p.rows, p.columns);
    }

    void sendPanel(PanelTransfer<T>& panel, const Panel& p) {
        if (streamed_)
            panel.startUpload(p.start, a_.ld, p.rows, p.columns);
        else if (!panel.shared())
            cudalib::checkCudaError(
                cudalib::copy2D(p.start, bytes(a_.ld), panel.host(), bytes(p.rows), bytes(p.rows),
                                std::size_t(p.columns), cudaMemcpyHostToDevice));
    }

    // The panel's factors, tau and T. The LQ factors of a matrix are the adjoints of the QR factors
    // of its adjoint, with the same tau and T; if its lines and their elements are reversed, those
    // are the RQ factors, with reversed tau and T.
    void factorizePanel(T* panel, int ld, const Panel& p) {
        T* const tau = tau_->data() + p.firstTau;
        T* const t = factor_->data();
        const int count = p.count;
        std::fill(t, t + nb_ * nb_, zero);
        if (columns()) {
            host::qrPanel(p.order, count, panel, ld, t, count);
        } else {
            adjoint_.resize(std::size_t(p.order) * std::size_t(count));
            exchangeAdjoint(panel, ld, p, false);
            host::qrPanel(p.order, count, adjoint_.data(), p.order, t, count);
            exchangeAdjoint(panel, ld, p, true);
            if (backward()) std::reverse(t, t + count * count);
        }
        for (int i = 0; i < count; ++i) tau[i] = t[i * count + i];
        // QR applies H^H to the left of A: for W the device gets T^H, transposed here and
        // conjugated there.
        if (!columns() || !formsW_) return;
        for (int c = 1; c < count; ++c)
            for (int r = 0; r < c; ++r) {
                t[r * count + c] = t[c * count + r];
                t[c * count + r] = zero;
            }
    }

    // Between a panel of rows and its adjoint, by tiles that the cache holds.
    void exchangeAdjoint(T* panel, int ld, const Panel& p, bool back) {
        constexpr int tile = 16;
        const MatrixView<T> rows{panel, ld}, adjoint{adjoint_.data(), p.order};
        for (int j0 = 0; j0 < p.order; j0 += tile)
            for (int i = 0; i < p.count; ++i)
                for (int j = j0; j < std::min(p.order, j0 + tile); ++j) {
                    const int line = backward() ? p.count - 1 - i : i;
                    const int position = backward() ? p.order - 1 - j : j;
                    T& there = adjoint(position, line);
                    T& here = rows(i, j);
                    if (back)
                        here = conjugate(there);
                    else
                        there = conjugate(here);
                }
    }

    void sendFactor(const PanelTransfer<T>& panel, const BlockReflector<T>& reflector, int count) {
        const std::size_t row = bytes(count);
        if (streamed_)
            cudalib::checkCudaError(cudaMemcpyAsync(reflector.t(), factor_->data(), row * count,
                                                    cudaMemcpyHostToDevice, panel.stream()));
        else if (formsW_)
            cudalib::checkCudaError(
                cudaMemcpy(reflector.t(), factor_->data(), row * count, cudaMemcpyHostToDevice));
        else
            cudalib::checkCudaError(cudalib::copy2D(reflector.t(), bytes(nb_), factor_->data(), row,
                                                    row, std::size_t(count),
                                                    cudaMemcpyHostToDevice));
    }
    // factorizePanel() has left T^H of QR without its conjugation.
    void finishFactor(const BlockReflector<T>& reflector, int count) {
        if constexpr (isComplex<T>)
            if (columns() && formsW_) conjugateMatrix(count, count, reflector.t(), count);
    }

    // QR: W = T^H V^H, count x order. LQ and RQ, which apply H to the right: W = V T, order x
    // count.
    void formW(const Panel& p, const BlockReflector<T>& reflector, T* w) {
        if (columns())
            gemm('N', adjointLetter<T>, p.count, p.order, p.count, one, reflector.t(), p.count,
                 p.start, a_.ld, zero, w, p.count);
        else
            gemm(adjointLetter<T>, 'N', p.order, p.count, p.count, one, p.start, a_.ld,
                 reflector.t(), p.count, zero, w, p.order);
    }

    // Of QR, column `first` of those after the panel, from the panel's first row on.
    T* lineAfter(const Panel& p, int first) const { return at(p.start, a_.ld, 0, p.count + first); }

    // `lines` of the lines after the panel, from the `first` on.
    void update(const Panel& p, int first, int lines, const T* w, T* y) {
        if (lines <= 0) return;
        if (columns()) {
            T* const c = lineAfter(p, first);
            gemm('N', 'N', p.count, lines, p.order, one, w, p.count, c, a_.ld, zero, y, p.count);
            gemm('N', 'N', p.order, lines, p.count, minusOne, p.start, a_.ld, y, p.count, one, c,
                 a_.ld);
        } else {
            T* const c = backward() ? p.start - (first + lines) : p.start + p.count + first;
            gemm('N', 'N', lines, p.count, p.order, one, c, a_.ld, w, p.order, zero, y, lines);
            gemm('N', 'N', lines, p.order, p.count, minusOne, y, lines, p.start, a_.ld, one, c,
                 a_.ld);
        }
    }

    // QR of what is left after `done` columns.
    void unblocked(int done) {
        const int rows = m_ - done, cols = n_ - done;
        T* const rest = a_.at(done, done);
        std::vector<T> copy(std::size_t(rows) * std::size_t(cols), zero);
        cudalib::checkCudaError(cudalib::copy2D(copy.data(), bytes(rows), rest, bytes(a_.ld),
                                                bytes(rows), std::size_t(cols),
                                                cudaMemcpyDeviceToHost));
        host::geqrf(rows, cols, copy.data(), rows, tau_->data() + done);
        cudalib::checkCudaError(cudalib::copy2D(rest, bytes(a_.ld), copy.data(), bytes(rows),
                                                bytes(rows), std::size_t(cols),
                                                cudaMemcpyHostToDevice));
    }

    const Reflectors kind_;
    const int m_, n_;
    const MatrixView<T> a_;
    const int k_;
    T* const deviceTau_;
    std::optional<HostTau<T>> tau_;
    int nb_ = 0;
    bool formsW_ = true;
    // Whether panels and factors travel on the panel's stream while the device works on another.
    bool streamed_ = false;
    std::optional<HostFactor> factor_;
    std::vector<T> adjoint_;
};

}  // namespace

template <class T>
void factorizeQr(int m, int n, T* a, int lda, T* tau) {
    if (m < 1 || n < 1) return;
    if (const int nb = widthOfDeviceQr<T>(m, n))
        factorizeQrOnDevice(m, n, a, lda, tau, nb);
    else
        Factorization<T>(Reflectors::ofQr, m, n, a, lda, tau).run();
}
template <class T>
void factorizeLq(int m, int n, T* a, int lda, T* tau) {
    if (m > 0 && n > 0) Factorization<T>(Reflectors::ofLq, m, n, a, lda, tau).run();
}
template <class T>
void factorizeRq(int m, int n, T* a, int lda, T* tau) {
    if (m > 0 && n > 0) Factorization<T>(Reflectors::ofRq, m, n, a, lda, tau).run();
}

LUMO_INSTANTIATE(factorizeQr)
LUMO_INSTANTIATE(factorizeLq)
LUMO_INSTANTIATE(factorizeRq)

}  // namespace lumo
