// How long operations take on a described machine: seconds from bytes, operations and shapes.
#pragma once

#include "platform/element_types.h"
#include "platform/table.h"
#include "platform/timeline/machine.h"
#include "platform/timeline/processors.h"

namespace timeline {

// Numbers as they count: the bytes of an element, the real operations of a multiplication with an
// addition, whether in double precision.
struct Element {
    double bytes, flops;
    bool isDouble;
};
template <class T>
constexpr Element elementFor{double(sizeof(T)), platform::isComplex<T> ? 8. : 2.,
                             platform::isDouble<T>};
Element elementOf(char type);

// A kernel of so many blocks of so many lanes.
Load kernelLoad(const Machine& m, const platform::Work& work, double blocks, double lanes);

// op(A) op(B), m x n with an inner extent of k; of `part` of the result's tiles.
Load productLoad(const Machine& machine, Element e, double m, double n, double k, double part = 1);
// A solve with a triangle of this order and so many right-hand sides.
Load solveLoad(const Machine& m, Element e, double order, double sides);
// A routine that goes once through so many elements.
Load vectorLoad(const Machine& m, Element e, double elements);

// The CPU's part.
double luPanelSeconds(const Machine& machine, Element e, double m, double n);
double qrPanelSeconds(const Machine& machine, Element e, double m, double n);
double bidiagonalSeconds(const Machine& machine, Element e, double flops);

}  // namespace timeline
