// Block sizes and path switches of the LAPACK routines: data, in one place. Tests shrink them to
// reach blocked paths with small matrices.
#pragma once

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>

#include "basic/LuPanel/shape.h"
#include "basic/QrPanel/shape.h"
#include "common/complex.h"
#include "common/state.h"
#include "cudalib/processor.h"
#include "platform/cuda3.h"
#include "runtime/devices.h"

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
    // Of a panel, if there are so many columns to be factorised or more and the device has this
    // capability or more. The last one that fits counts.
    struct Width {
        int from, columns, capability;
    };
    int strip;  // columns that one launch factorises
    std::array<Width, 5> widths;

    // 0 where panels are the CPU's. LUMO_PANELS overrides what is tuned, not what is possible.
    int width(int steps) const {
        using platform::Panels;
        const Panels wish = platform::choice().panels;
        if (wish == Panels::ofCpu || computeCapability() < widths.front().capability) return 0;
        int columns = wish == Panels::ofDevice ? widths.front().columns : 0;
        for (const Width& w : widths)
            if (w.columns > 0 && steps >= w.from && computeCapability() >= w.capability)
                columns = w.columns;
        return std::min(columns, steps);
    }
};

// By `lumo predict` on an H100, from an order on that is the more the faster the CPU's panels are.
// A device whose products take longer has wider ones, or it could not keep up with the rest.
template <class T>
constexpr DevicePanels devicePanels(int strip, int ofFloat, int ofDouble, int ofComplex) {
    const int from = isComplex<T> ? ofComplex : sizeof(T) > 4 ? ofDouble : ofFloat;
    const int narrow = isComplex<T> ? INT_MAX : 90;
    return {
        strip,
        {{{from, 32, 70}, {3000, 64, 70}, {3000, 32, narrow}, {6000, 128, 70}, {12000, 256, 70}}}};
}
template <class T>
inline DevicePanels luPanels = devicePanels<T>(luPanelColumns, 1400, 600, 300);
template <class T>
inline DevicePanels qrPanels = devicePanels<T>(qrPanelColumns<T>, 600, 250, 128);

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

// Columns of a panel of sytrd; and the order from which on its own product, which is shared out to
// threads, is faster than a CPU's symv, that of complex elements always. Measured on a CPU.
template <class T>
inline BlockSize sytrdTuning{32, 32};
constexpr int ownSymvOnCpu = 256;

inline bool hasAvx512() {
    return cudalib::vectors() == cudalib::Vectors::avx512;
}

// Whether a panel of gebrd reads an m x n matrix once a column (BidiagonalPanel) or twice (Labrd).
// A CPU without AVX-512 reads complex elements twice while they are no more than its caches keep,
// so many bytes: there its BLAS is as fast as can be.
inline std::size_t gebrdCachedOnCpu = hasAvx512() ? 0 : std::size_t(16) << 20;
template <class T>
bool gebrdReadsOnce(int m, int n) {
    if (!platform::sharesMemory()) return deviceIsModern();
    return !isComplex<T> || std::size_t(m) * std::size_t(n) * sizeof(T) > gebrdCachedOnCpu;
}

struct BdsqrTuning {
    int stepsPerSquare;  // the iteration gives up after this many times n^2 rotations
};

template <class T>
inline BdsqrTuning bdsqrTuning{6};

// The order up to which divide and conquer leaves a tridiagonal matrix to the CPU.
inline int stedcLeaf = 32;

// The lanes that keep a multiprocessor's arithmetic busy with quotients, each waiting for the one
// before, and an eighth of it where it has few units for double precision: servers' GPUs have many.
inline int stebzLanes = 512;
template <class R>
int stebzLanesOfDevice() {
    const int capability = computeCapability();
    const bool few =
        sizeof(R) == 8 && (capability % 10 != 0 || capability < 60 || capability > 100);
    return multiprocessors() * stebzLanes / (few ? 8 : 1);
}

// The order up to which sygst makes a block whole.
inline int sygstLeaf = 128;

// The bytes of a matrix of vectors from which on a CPU gathers sweeps: more than its caches keep
// from one sweep to the next. Measured.
inline std::size_t gatheredOnCpu = std::size_t(12) << 20;

// Orders up to which a problem is small (routine/description.h), measured.
constexpr int smallLu = 256, smallCholesky = 256, smallSvd = 48;
struct SmallOrders {
    int s, d, c, z;
};
// On CPUs without AVX-512, and on those with it.
template <class T>
int smallOrder(const SmallOrders& usual, const SmallOrders& wide) {
    const SmallOrders& orders = hasAvx512() ? wide : usual;
    const bool single = sizeof(RealOf<T>) == 4;
    if (isComplex<T>) return single ? orders.c : orders.z;
    return single ? orders.s : orders.d;
}
template <class T>
int smallEigenvectors() {
    return smallOrder<T>({240, 208, 280, 144}, {144, 112, 200, 96});
}
// Values alone: the CPU library computes them on one thread, so where there are several its share
// ends earlier.
template <class T>
int smallEigenvalues() {
    const SmallOrders orders =
        multiprocessors() > 1 ? SmallOrders{450, 400, 300, 112} : SmallOrders{560, 900, 320, 112};
    return smallOrder<T>(orders, orders);
}
template <class T>
int smallDividedSvd() {
    return smallOrder<T>({192, 176, 240, 240}, {128, 112, 136, 112});
}
template <class T>
int smallSingularValues() {
    return smallOrder<T>({384, 400, 400, 240}, {352, 320, 256, 240});
}

}  // namespace lumo
