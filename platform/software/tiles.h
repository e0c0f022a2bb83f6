// How a product is cut into pieces that threads take one after the other.
#pragma once

#include <algorithm>
#include <cstddef>

#include "platform/software/control.h"

namespace software {

// m x n elements from (i, j) on.
struct Tile {
    int i, j, m, n;
};

// The tiles of an m x n result. Each is a call of the CPU BLAS, which packs its operands anew: few
// and nearly square ones cost least.
class Tiles {
  public:
    enum class Cut { both, rows, columns };

    // `work` as in Operation; a tile has at least `least` of it.
    Tiles(int m, int n, double work, double least, Cut cut, int perThread = 2)
        : work_(std::size_t(work)), m_(m), n_(n) {
        const double most = std::min(double(perThread) * threads(), work / least);
        const int wanted = threads() == 1 ? 1 : std::max(1, int(most));
        int rows = 1, columns = 1;
        if (cut == Cut::columns)
            columns = wanted;
        else if (cut == Cut::rows)
            rows = wanted;
        else
            squarest(wanted, rows, columns);
        height_ = pieceOf(m, rows);
        width_ = pieceOf(n, columns);
        rows_ = ceilDiv(m, height_);
        columns_ = ceilDiv(n, width_);
    }

    // One that is not worth more than a thread.
    static Tiles one(int m, int n, double work) { return {m, n, work, work + 1, Cut::both}; }

    std::size_t count() const { return std::size_t(rows_) * std::size_t(columns_); }
    std::size_t work() const { return work_; }
    Tile operator[](std::size_t k) const {
        const int i = int(k % std::size_t(rows_)) * height_,
                  j = int(k / std::size_t(rows_)) * width_;
        return {i, j, std::min(height_, m_ - i), std::min(width_, n_ - j)};
    }

  private:
    // The micro-kernels of CPU libraries are no larger than this; between its multiples they go
    // through other, slower code.
    static constexpr int grain = 48;

    static int ceilDiv(int size, int piece) { return size / piece + (size % piece > 0); }
    static int pieceOf(int size, int pieces) {
        if (pieces <= 1) return std::max(1, size);
        return std::max(1, ceilDiv(ceilDiv(size, pieces), grain)) * grain;
    }

    // Every column of tiles packs all rows of A, every row of tiles all columns of B.
    void squarest(int wanted, int& rows, int& columns) const {
        double least = -1;
        for (int r = 1; r <= wanted; ++r) {
            const int c = (wanted + r - 1) / r;
            const double packed = double(m_) * c + double(n_) * r;
            if (least >= 0 && packed >= least) continue;
            least = packed;
            rows = r;
            columns = c;
        }
    }

    std::size_t work_;
    int m_, n_, height_, width_, rows_, columns_;
};

}  // namespace software
