// What those who prepare sweeps, the launcher and the kernel agree on.
#pragma once

namespace lumo {

// A lane applies so many sweeps to its line, so many lanes share a line, and these are the sweeps
// of a full table.
constexpr int sweepsOfStage = 4, mostStages = 8, sweepsAtOnce = sweepsOfStage * mostStages;

// The elements of a line that go from stage to stage at a time.
constexpr int elementsAtOnce = 8;

// The lines of a block.
constexpr int linesOfBlock = 16;

// [c s; -s c] of two neighbouring elements.
template <class Real>
struct alignas(2 * sizeof(Real)) Rotation {
    Real c, s;
};

// The rows of a table for lines of so many elements.
constexpr int sweepTableRows(int elements, int stages) {
    const int steps = elements + stages * sweepsOfStage;
    return (steps + elementsAtOnce - 1) / elementsAtOnce * elementsAtOnce;
}

}  // namespace lumo
