// How long operations take on a described machine: seconds from bytes, operations and shapes.
#pragma once

#include "platform/element_types.h"
#include "platform/table.h"
#include "platform/timeline/machine.h"

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

double kernelSeconds(const Machine& m, const platform::Work& work, platform::Dim3 grid,
                     platform::Dim3 block);

// op(A) op(B), m x n with an inner extent of k; of `part` of the result's tiles.
double productSeconds(const Machine& machine, Element e, double m, double n, double k,
                      double part = 1);
// A solve with a triangle of this order and so many right-hand sides.
double solveSeconds(const Machine& m, Element e, double order, double sides);
// A routine that goes once through so many elements.
double vectorSeconds(const Machine& m, Element e, double elements);

// The CPU's part.
double luPanelSeconds(const Machine& machine, Element e, double m, double n);
double qrPanelSeconds(const Machine& machine, Element e, double m, double n);
double bidiagonalSeconds(const Machine& machine, Element e, double flops);

}  // namespace timeline
