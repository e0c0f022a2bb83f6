#include "lapack/device_qr.h"

#include <algorithm>

#include "basic/QrPanel/QrPanel.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/panel_transfer.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

// Reflectors are kept as V and W of their product I - W V^H, so that to apply it takes two products
// and no triangle. Rows and columns are counted from 0, panels by their first column j.
template <class T>
class DeviceQr {
  public:
    DeviceQr(int m, int n, T* a, int lda, T* tau, int nb)
        : m_(m),
          n_(n),
          steps_(std::min(m, n)),
          nb_(nb),
          strip_(std::min(nb, qrPanels<T>.strip)),
          a_{a, lda},
          tau_(tau),
          kernel_(m),
          reflectors_(4 * size(m, nb)),
          ofPanels_(2 * size(nb, nb)),
          ofRest_(size(nb, n)) {}

    void run() {
        start(0);
        for (int j = 0; j < steps_; j += nb_) {
            device_.waitForPanel();
            const int right = j + width(j), next = right < steps_ ? width(right) : 0;
            apply(blockOf(j), right, next, ofRest_.data());
            if (next > 0) start(right);
            apply(blockOf(j), right + next, n_ - right - next, ofRest_.data());
        }
    }

  private:
    static constexpr T zero = T(0), one = T(1), minusOne = T(-1);

    // A product of reflectors: V and W, of rows `row` and on.
    struct Block {
        int row, count;
        MatrixView<T> v, w;

        // The reflectors from the k-th on, which leave the first k rows as they are.
        Block from(int k) const {
            return {row + k, count - k, {v.at(k, k), v.ld}, {w.at(k, k), w.ld}};
        }
        Block first(int k) const { return {row, k, v, w}; }
    };

    static std::size_t size(int rows, int columns) {
        return std::size_t(rows) * std::size_t(columns);
    }
    int width(int j) const { return std::min(nb_, steps_ - j); }

    // The last panel's block serves the rest while the next one's is made.
    Block blockOf(int j) const {
        T* const v = reflectors_.data() + j / nb_ % 2 * 2 * size(m_, nb_);
        return {j, width(j), {v, m_ - j}, {v + size(m_, nb_), m_ - j}};
    }

    // A panel by strips, each of which is applied to what is left of the panel.
    void start(int j) {
        device_.panelWaits();
        const cudalib::OnStream here(stream_);
        const Block all = blockOf(j);
        for (int k = 0; k < all.count; k += strip_) {
            const int i = j + k, columns = std::min(strip_, all.count - k);
            kernel_.factorize(m_ - i, columns, a_.at(i, i), a_.ld, tau_ + i, k, all.v.at(0, k),
                              all.w.at(0, k), all.v.ld);
            apply(all.from(k).first(columns), i + columns, all.count - k - columns,
                  ofPanels_.data());
            append(all, k, columns);
        }
    }

    // To W the columns of the product with reflectors k and on, W2 - W1 (V1^H W2).
    void append(const Block& all, int k, int columns) const {
        if (k == 0) return;
        T* const product = ofPanels_.data() + size(nb_, nb_);
        const int rows = m_ - all.row;
        gemm('C', 'N', k, columns, rows, one, all.v.data, all.v.ld, all.w.at(0, k), all.w.ld, zero,
             product, k);
        gemm('N', 'N', rows, columns, k, minusOne, all.w.data, all.w.ld, product, k, one,
             all.w.at(0, k), all.w.ld);
    }

    // C := (I - W V^H)^H C = C - V (W^H C) for `columns` columns from `first` on.
    void apply(const Block& block, int first, int columns, T* product) const {
        if (columns <= 0) return;
        const int rows = m_ - block.row, count = block.count;
        T* const c = a_.at(block.row, first);
        gemm('C', 'N', count, columns, rows, one, block.w.data, block.w.ld, c, a_.ld, zero, product,
             count);
        gemm('N', 'N', rows, columns, count, minusOne, block.v.data, block.v.ld, product, count,
             one, c, a_.ld);
    }

    const int m_, n_, steps_, nb_, strip_;
    const MatrixView<T> a_;
    T* const tau_;
    const QrPanel<T> kernel_;
    const cudalib::Workspace<T> reflectors_, ofPanels_, ofRest_;
    const cudalib::Stream stream_{cudalib::Stream::urgent};
    const StreamBesidePanel device_{stream_};
};

}  // namespace

template <class T>
int widthOfDeviceQr(int m, int n) {
    return m <= QrPanel<T>::mostRows() ? qrPanels<T>.width(std::min(m, n)) : 0;
}

template <class T>
void factorizeQrOnDevice(int m, int n, T* a, int lda, T* tau, int nb) {
    DeviceQr<T>(m, n, a, lda, tau, nb).run();
}

LUMO_INSTANTIATE(widthOfDeviceQr)
LUMO_INSTANTIATE(factorizeQrOnDevice)

}  // namespace lumo
