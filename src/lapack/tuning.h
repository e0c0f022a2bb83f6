// Block sizes and path switches of the LAPACK routines: data, in one place. Tests shrink them to
// reach blocked paths with small matrices.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "basic/LuPanel/shape.h"
#include "basic/QrPanel/shape.h"
#include "common/complex.h"
#include "common/state.h"
#include "platform/cuda3.h"

namespace lumo {

// By compute capability: 1.0 to 1.3, from 7.0 on, and everything between.
struct BlockSize {
    int early;
    int other;
    int modern = other;

    int current() const {
        const int capability = computeCapability();
        if (deviceIsModern()) return modern;
        return capability >= 10 && capability <= 13 ? early : other;
    }
};

struct GetrfTuning {
    BlockSize base;   // a panel has twice as many columns
    int squareOrder;  // square matrices from this order on are factorised transposed
};

template <class T>
inline GetrfTuning getrfTuning{{32, 96, 32}, 513};

// Panels that the device itself factorises, where they lie (LuPanel, QrPanel), if it can.
struct DevicePanels {
    struct Width {
        int from, columns;  // of a panel, if there are so many columns to be factorised or more
    };
    int capability;  // the device's, from which on
    int strip;       // columns that one launch factorises
    std::array<Width, 3> widths;

    // 0 where panels are the CPU's. LUMO_PANELS overrides what is tuned, not what is possible.
    int width(int steps) const {
        using platform::Panels;
        const Panels wish = platform::choice().panels;
        if (wish == Panels::ofCpu || computeCapability() < capability) return 0;
        int columns = wish == Panels::ofDevice ? widths.front().columns : 0;
        for (const Width& w : widths)
            if (steps >= w.from) columns = w.columns;
        return std::min(columns, steps);
    }
};

template <class T>
inline DevicePanels luPanels{70, luPanelColumns, {{{300, 32}, {3000, 64}, {12000, 128}}}};
template <class T>
inline DevicePanels qrPanels{70, qrPanelColumns<T>, {{{100, 64}, {3000, 64}, {12000, 128}}}};

// The order of the CPU's blocks of the diagonal.
template <class T>
inline BlockSize potrfTuning{64, 128};

// The columns (QR) or rows (LQ, RQ) of a panel.
template <class T>
inline BlockSize geqrfTuning{32, 96, 64};
template <>
inline BlockSize geqrfTuning<double>{48, 64};
template <>
inline BlockSize geqrfTuning<Complex<float>>{32, 64};
template <>
inline BlockSize geqrfTuning<Complex<double>>{48, 32};

// Columns of a panel of gebrd; the last one is the CPU's.
template <class T>
inline BlockSize gebrdTuning{32, 96, 32};

// Whether a panel of gebrd reads the matrix once a column (BidiagonalPanel) or twice (Labrd). On a
// CPU, complex products are worth a second reading: they are slower in a kernel than in its BLAS.
template <class T>
bool gebrdReadsOnce() {
    return platform::sharesMemory() ? !isComplex<T> : deviceIsModern();
}

struct BdsqrTuning {
    int stepsPerSquare;  // the iteration gives up after this many times n^2 rotations
};

template <class T>
inline BdsqrTuning bdsqrTuning{6};

// The bytes of a matrix of vectors from which on a CPU gathers sweeps: more than its caches keep
// from one sweep to the next. Measured.
inline std::size_t gatheredOnCpu = std::size_t(12) << 20;

// Orders up to which a problem is small (routine/description.h), measured.
constexpr int smallLu = 256, smallCholesky = 256, smallSvd = 48;

}  // namespace lumo
