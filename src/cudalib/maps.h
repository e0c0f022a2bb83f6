// Launch maps: from a problem's extent to the block and the grid of its kernel launch. A map's
// type is also the first template argument of its kernels, which find their elements by the
// same geometry (block.h).
#pragma once

#include "platform/cuda3.h"

namespace cudalib {

// The quotient of C's div, plus one for a positive remainder.
int ceilDiv(int a, int b);

// The current device's grid limits, asked for afresh: the device may be another than last time.
struct GridLimits {
    unsigned x, y, z;
};
GridLimits gridLimits();

// The grid for n > 0 elements in blocks of block.x: as many blocks along x as needed, halved
// until the device takes them, the rest along y and z. The bound of y is that of x.
dim3 grid1D(int n, dim3 block);

class MapBase {
  public:
    virtual dim3 blockShape() const = 0;
    virtual dim3 gridShape() const = 0;

  protected:
    ~MapBase() = default;
};

// Maps sized at run time.
class DynamicMapBase : public MapBase {
  public:
    int sizingHint = 0;

  protected:
    ~DynamicMapBase() = default;
};

// Maps whose block is a template constant.
class StaticMapBase : public MapBase {
  protected:
    ~StaticMapBase() = default;
};

struct Map1DBase {
    explicit Map1DBase(int n) : size(n) {}
    int size;
};

struct Map2DBase {
    Map2DBase(int m, int n) : rows(m), cols(n) {}
    int rows;  // along grid x
    int cols;  // along grid y
};

class Map1D : public DynamicMapBase, public Map1DBase {
  public:
    explicit Map1D(int size) : Map1DBase(size) {}
    int blockSize = 0;  // 0: chosen by sizingHint

    dim3 blockShape() const override;
    dim3 gridShape() const override { return grid1D(size, blockShape()); }
};

class Map2D : public DynamicMapBase, public Map2DBase {
  public:
    Map2D(int rows, int cols, int block = 0)
        : Map2DBase(rows, cols), blockX(block), blockY(block) {}
    int blockX, blockY;  // 0: 16 x 16

    dim3 blockShape() const override;
    dim3 gridShape() const override;
};

// The shapes of Map2D; only the kernel takes the extent for a triangle.
class TriangularMap2D : public Map2D {
  public:
    using Map2D::Map2D;
};

template <unsigned N>
class StaticMap1D : public StaticMapBase, public Map1DBase {
  public:
    explicit StaticMap1D(int size) : Map1DBase(size) {}
    dim3 blockShape() const override { return {N, 1, 1}; }
    dim3 gridShape() const override { return grid1D(size, blockShape()); }
};

template <unsigned X, unsigned Y>
class StaticMap2D : public StaticMapBase, public Map2DBase {
  public:
    StaticMap2D(int rows, int cols) : Map2DBase(rows, cols) {}
    dim3 blockShape() const override { return {X, Y, 1}; }
    dim3 gridShape() const override {
        return {unsigned(ceilDiv(rows, X)), unsigned(ceilDiv(cols, Y)), 1};
    }
};

// One block per row; with `split`, one per row and N columns.
template <unsigned N>
class StaticRowWiseMap : public StaticMapBase, public Map2DBase {
  public:
    StaticRowWiseMap(int rows, int cols, int split = 0) : Map2DBase(rows, cols), split(split) {}
    int split;

    dim3 blockShape() const override { return {N, 1, 1}; }
    dim3 gridShape() const override {
        return {unsigned(rows), split ? unsigned(ceilDiv(cols, N)) : 1, 1};
    }
};

// One block per column; with `split`, one per column and N rows.
template <unsigned N>
class StaticColumnWiseMap : public StaticMapBase, public Map2DBase {
  public:
    StaticColumnWiseMap(int rows, int cols, int split = 0) : Map2DBase(rows, cols), split(split) {}
    int split;

    dim3 blockShape() const override { return {N, 1, 1}; }
    dim3 gridShape() const override {
        return {unsigned(cols), split ? unsigned(ceilDiv(rows, N)) : 1, 1};
    }
};

// One block that works through a whole vector.
template <unsigned N>
struct StaticOneBlockMap1D {
    dim3 blockShape() const { return {N, 1, 1}; }
    dim3 gridShape() const { return {1, 1, 1}; }
};

// For kernels on one element.
using OneThread = StaticOneBlockMap1D<1>;

}  // namespace cudalib
