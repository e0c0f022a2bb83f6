// 1-norms, which condition numbers are relative to: the largest sum of a column's magnitudes. In
// double precision, where the sums of single do not overflow. Not a number if an element is not.
#pragma once

#include <cmath>
#include <vector>

#include "arrays.h"

namespace lumo::python {

inline double larger(double norm, double sum) {
    return sum > norm || std::isnan(sum) ? sum : norm;
}

template <class T>
double oneNorm(const Matrix<T>& a) {
    double norm = 0;
    for (int j = 0; j < a.columns; ++j) {
        const T* column = a.data + std::size_t(j) * a.ld;
        double sum = 0;
        for (int i = 0; i < a.rows; ++i) sum += std::abs(column[i]);
        norm = larger(norm, sum);
    }
    return norm;
}

// Of a symmetric or Hermitian matrix, of which one triangle is read.
template <class T>
double oneNorm(char uplo, const Matrix<T>& a) {
    std::vector<double> sums(std::size_t(a.columns), 0.0);
    for (int j = 0; j < a.columns; ++j) {
        const T* column = a.data + std::size_t(j) * a.ld;
        sums[j] += std::abs(std::real(column[j]));
        const int from = uplo == 'L' ? j + 1 : 0, to = uplo == 'L' ? a.rows : j;
        for (int i = from; i < to; ++i) {
            const double size = std::abs(column[i]);
            sums[i] += size;
            sums[j] += size;
        }
    }
    double norm = 0;
    for (const double sum : sums) norm = larger(norm, sum);
    return norm;
}

}  // namespace lumo::python
