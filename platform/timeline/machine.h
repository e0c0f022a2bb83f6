// A described machine: what its parts take for their work. The figures stand in a text file, each
// with its source (machines/*.ini).
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace timeline {

// A figure by size: measured or known at these sizes, between them along the logarithm of the size,
// constant beyond them. Two figures of one size are a step.
struct BySize {
    std::vector<std::pair<double, double>> points;

    double at(double size) const;
};

// A shape that products are cut into, and what part of the full speed it reaches.
struct Tile {
    double rows, columns, efficiency;
};

// Seconds, bytes, bytes per second and operations per second.
struct Machine {
    std::string file;  // where the figures stand

    std::string name;
    double capability;  // as 9.0
    double memory;
    double processors;
    double sharesMemory;  // 1: the device is the host, which does one thing at a time

    BySize bandwidth;         // by the bytes that a kernel moves
    BySize latency;           // of a read that waits for the one before, by the bytes it is among
    double kernelStart;       // of a kernel that does nothing
    double kernelGap;         // between two kernels
    double kernelLanes;       // that a processor must have to be busy
    double kernelLeast;       // the part of the bandwidth that the smallest grid reaches
    double kernelEfficiency;  // the part of the bandwidth that the library's kernels reach
    double kernelOperations;  // of theirs, of single precision
    BySize meeting;           // of so many blocks that wait for each other; 0: they cannot

    double productStart;
    double productSingle, productDouble;
    std::vector<Tile> productTiles;
    double productDepth;  // a tile costs so many steps along k more than it has
    double productSplit;  // steps that are worth a processor of their own; 0: never
    double
        productExposed;  // of its traffic or its operations, the part that the other does not hide
    double vectorEfficiency;          // the part of the bandwidth that matrix-vector products reach
    double solveRow;                  // a row of a triangle that is solved with waits so long
    double solveSingle, solveDouble;  // operations of such solves
    double solveVectorRow;            // a row's wait where there is one right-hand side

    double launch, bigLaunch;  // of the host; with arguments of 256 bytes or more
    double product, copy;
    double latencyOfCall;  // until the device has what the host issued
    double synchronize;
    double hostScale;  // the host's time for the library's own work, over this machine's

    double allocate, allocateByte, allocateHost;
    double keptPart;  // of the device's memory, that is kept for reuse

    double locked, lockedStart;        // copies of page-locked memory
    double pageable, pageableStart;    // of other memory
    double stagedFrom, stagedThreads;  // large ones of those, which several threads carry

    double panelStart;
    double panelRows;   // of a tall panel
    BySize lu, luTall;  // operations by the panel's width
    BySize qr, qrTall;
    double bidiagonal;  // what the CPU reduces, or decomposes, by itself
};

// Reads a description. Throws a std::runtime_error that tells file and line of what is wrong.
Machine readMachine(const std::string& file, const std::string& text);

// The figures of a description, in their order, as they are written; without their sources.
struct Figure {
    std::string section, key, value;
};
std::vector<Figure> figuresOf(const Machine& machine);

}  // namespace timeline
