// NumPy arrays as operands, and the function of Lumo's that an element type takes.
#pragma once

#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <climits>
#include <complex>
#include <cstdlib>
#include <stdexcept>

#include "lumo_extended.h"
#include "platform/element_types.h"

namespace lumo::python {

namespace py = pybind11;

using platform::RealOf;

// A column-major matrix in an array's own memory. A one-dimensional array is one column.
template <class T>
struct Matrix {
    T* data;
    int rows, columns, ld;
};

// A vector in an array's own memory, any stride but 0. `data` is its lowest address, as in BLAS.
template <class T>
struct Vector {
    T* data;
    int size, increment;
};

inline int toInt(py::ssize_t size) {
    if (std::abs(size) > INT_MAX) throw py::value_error("array too large: Lumo's sizes are 32-bit");
    return int(size);
}

// A stride in elements; it must be a whole number of them.
template <class T>
int toIncrement(py::ssize_t stride) {
    if (stride % py::ssize_t(sizeof(T)) != 0)
        throw py::value_error("array strides must be whole elements");
    return toInt(stride / py::ssize_t(sizeof(T)));
}

template <class T>
Matrix<T> toMatrix(const py::array& a) {
    if (a.ndim() < 1 || a.ndim() > 2) throw py::value_error("array must have 1 or 2 dimensions");
    const bool plane = a.ndim() == 2;
    Matrix<T> m{static_cast<T*>(const_cast<void*>(a.data())), toInt(a.shape(0)),
                plane ? toInt(a.shape(1)) : 1, 0};
    // A dimension of at most one element has a stride without meaning.
    if (m.rows > 1 && m.columns > 0 && a.strides(0) != py::ssize_t(sizeof(T)))
        throw py::value_error("array must be in Fortran order");
    m.ld = m.rows > 0 && m.columns > 1 ? toIncrement<T>(a.strides(1)) : std::max(1, m.rows);
    if (m.ld < std::max(1, m.rows)) throw py::value_error("array must be in Fortran order");
    return m;
}

template <class T>
Vector<T> toVector(const py::array& a) {
    if (a.ndim() != 1) throw py::value_error("array must have 1 dimension");
    Vector<T> v{static_cast<T*>(const_cast<void*>(a.data())), toInt(a.shape(0)), 1};
    if (v.size > 1) v.increment = toIncrement<T>(a.strides(0));
    if (v.increment < 0) v.data += py::ssize_t(v.increment) * (v.size - 1);
    return v;
}

// The function for the element type T, of those for S, D, C and Z.
using platform::ofType;

// Scalars and elements as lumo.h names their types.
inline float raw(float x) {
    return x;
}
inline double raw(double x) {
    return x;
}
inline lumoFloatComplex raw(std::complex<float> x) {
    return {x.real(), x.imag()};
}
inline lumoDoubleComplex raw(std::complex<double> x) {
    return {x.real(), x.imag()};
}
template <class T>
auto raw(T* x) {
    return reinterpret_cast<decltype(raw(T()))*>(x);
}

}  // namespace lumo::python

// Only an array of exactly the element type is taken, never a converted copy: results are written
// into it. The Python layer has seen to it that it may be written.
namespace pybind11::detail {

template <class T>
struct type_caster<lumo::python::Matrix<T>> {
    PYBIND11_TYPE_CASTER(lumo::python::Matrix<T>, const_name("numpy.ndarray"));
    bool load(handle source, bool) {
        if (!array_t<T>::check_(source)) return false;
        value = lumo::python::toMatrix<T>(reinterpret_borrow<array>(source));
        return true;
    }
};

template <class T>
struct type_caster<lumo::python::Vector<T>> {
    PYBIND11_TYPE_CASTER(lumo::python::Vector<T>, const_name("numpy.ndarray"));
    bool load(handle source, bool) {
        if (!array_t<T>::check_(source)) return false;
        value = lumo::python::toVector<T>(reinterpret_borrow<array>(source));
        return true;
    }
};

}  // namespace pybind11::detail
