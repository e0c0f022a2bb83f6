#include "platform/timeline/costs.h"

#include <algorithm>
#include <cmath>

namespace timeline {
namespace {

double memorySeconds(const Machine& m, double bytes) {
    return bytes > 0 ? bytes / m.bandwidth.at(bytes) : 0;
}

// The panel's speed grows with its height, up to that of a tall one.
double panelSeconds(const Machine& machine, Element e, double m, double n, double multiplications,
                    const BySize& rate, const BySize& tall) {
    const double share = std::min(1., m / machine.panelRows);
    const double flat = rate.at(n), speed = flat + (tall.at(n) - flat) * share;
    return machine.panelStart + multiplications * e.flops * (e.isDouble ? 2 : 1) / speed;
}

}  // namespace

Element elementOf(char type) {
    return platform::withType(type, [](auto zero) { return elementFor<decltype(zero)>; });
}

// Bound by memory, by operations or by waits, whichever is most; a grid that leaves processors idle
// has its part of the bandwidth and the operations. Nothing else goes on while blocks meet.
Load kernelLoad(const Machine& m, const platform::Work& work, double blocks, double lanes) {
    const double wanted = m.processors * m.kernelLanes;
    const double fill =
        wanted > 0 ? std::min(1., std::max(blocks * lanes / wanted, m.kernelLeast)) : 1;
    const double reach = std::max(work.bytes, work.reach);
    const double bytes = work.bytes / (m.bandwidth.at(std::max(1., reach)) * m.kernelEfficiency);
    const double flops = work.flops / m.kernelOperations;
    const double turns = work.turns * m.latency.at(std::max(1., reach));
    const double meetings = work.meetings * m.meeting.at(blocks);
    return {m.kernelStart + std::max({bytes / fill, flops / fill, turns}) + meetings, fill};
}

// Tiles go to the processors in turns. Where there are few of them and k is long, k is split.
Load productLoad(const Machine& machine, Element e, double m, double n, double k, double part) {
    if (m <= 0 || n <= 0) return {0};
    const double p = machine.processors;
    const double rate = e.isDouble ? machine.productDouble : machine.productSingle;
    Load best{INFINITY};
    for (const Tile& tile : machine.productTiles) {
        const double tiles =
            std::ceil(part * std::ceil(m / tile.rows) * std::ceil(n / tile.columns));
        double split = 1;
        if (machine.productSplit > 0 && tiles < p && k >= 2 * machine.productSplit)
            split =
                std::min(std::max(1., std::floor(p / tiles)), std::floor(k / machine.productSplit));
        const double turns = std::ceil(tiles * split / p);
        const double flops =
            e.flops * tile.rows * tile.columns * (k / split + machine.productDepth);
        const double seconds = turns * flops * p / (rate * tile.efficiency);
        if (seconds < best.seconds) best = {seconds, std::min(1., tiles * split / p)};
    }
    const double bytes = e.bytes * (2 * part * m * n + k * (m + n));
    const double traffic = memorySeconds(machine, bytes);
    return {machine.productStart + std::max(best.seconds, traffic) +
                machine.productExposed * std::min(best.seconds, traffic),
            best.share};
}

// Either as products, with a wait for each row, or side by side as matrix-vector products.
Load solveLoad(const Machine& m, Element e, double order, double sides) {
    if (order <= 0 || sides <= 0) return {0};
    const double rate = e.isDouble ? m.solveDouble : m.solveSingle;
    const double products = order * m.solveRow + order * order * sides * e.flops / 2 / rate;
    const double vectors =
        sides * (order * m.solveVectorRow + memorySeconds(m, order * order / 2 * e.bytes));
    return {m.productStart + std::min(products, vectors), productLoad(m, e, order, sides, 1).share};
}

Load vectorLoad(const Machine& m, Element e, double elements) {
    const double flops = elements * e.flops * (e.isDouble ? 2 : 1);
    return {m.productStart + std::max(memorySeconds(m, elements * e.bytes) / m.vectorEfficiency,
                                      flops / m.kernelOperations)};
}

double luPanelSeconds(const Machine& machine, Element e, double m, double n) {
    return panelSeconds(machine, e, m, n, (m * n * n - n * n * n / 3) / 2, machine.lu,
                        machine.luTall);
}

double qrPanelSeconds(const Machine& machine, Element e, double m, double n) {
    return panelSeconds(machine, e, m, n, m * n * n, machine.qr, machine.qrTall);
}

double bidiagonalSeconds(const Machine& machine, Element e, double flops) {
    return machine.panelStart + flops * e.flops / 2 * (e.isDouble ? 2 : 1) / machine.bidiagonal;
}

}  // namespace timeline
