// Conversion between single and double precision, in device memory.
#pragma once

namespace lumo {

// The m x n matrix dst := src in dst's precision. From and To as below.
template <class From, class To>
void precisionConvert(int m, int n, const From* src, int ldsrc, To* dst, int lddst);

// The upper triangle of the m x n matrix dst, with the diagonal, := that of src in dst's
// precision; the rest of dst is left alone. From and To: float and double or their complex types,
// in either order. An empty matrix launches nothing.
template <class From, class To>
void precisionConvertTriangular(int m, int n, const From* src, int ldsrc, To* dst, int lddst);

}  // namespace lumo
