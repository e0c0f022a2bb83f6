#include "basic/Norms/shape.h"
#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using lumo::RealOf;

using MaximaTeam = cudalib::Team<lumo::maximaLanes, 1>;

template <class T>
LUMO_KERNEL void RowSums_k(int m, int n, const T* a, int lda, RealOf<T>* sums) {
    cudalib::kernel<64>([&](cudalib::Strip rows) LUMO_INLINED {
        cudalib::Strip::Kept<RealOf<T>> sum(rows);
        rows.each(std::size_t(m), [&](std::size_t i) { sum[i] = 0; });
        for (int j = 0; j < n; ++j) {
            const T* column = &cudalib::at(a, lda, 0, j);
            rows.each(std::size_t(m), [&](std::size_t i) {
                if constexpr (lumo::isComplex<T>)
                    sum[i] += std::sqrt(lumo::square(column[i]));
                else
                    sum[i] += lumo::magnitude(column[i]);
            });
        }
        rows.each(std::size_t(m), [&](std::size_t i) { sums[i] = sum[i]; });
    });
}

// The largest |Re x(i)| + |Im x(i)| of `count` elements, and `most`.
template <class T>
LUMO_DEVICE RealOf<T> largest(MaximaTeam team, int count, const T* x, RealOf<T> most) {
    using R = RealOf<T>;
    const auto larger = [](R x, R y) { return x > y || x != x ? x : y; };
    cudalib::LaneValues<MaximaTeam, R> mine;
    team.lanes(team.X, [&](int lane) { mine.at(0, lane) = most; });
    for (long i = 0; i < count; i += team.X)
        team.lanes(count - i, [&](int lane) {
            const T element = x[i + lane];
            R& most = mine.at(0, lane);
            most = larger(most, lumo::magnitude(lumo::realPart(element)) +
                                    lumo::magnitude(lumo::imaginaryPart(element)));
        });
    return cudalib::ofLanes(mine, larger);
}

template <class T>
LUMO_KERNEL void ColumnMaxima_k(int m, const T* a, int lda, RealOf<T>* maxima) {
    cudalib::kernel<1024>([&](MaximaTeam team) LUMO_INLINED {
        const T* column = &cudalib::at(a, lda, 0, int(team.x()));
        const RealOf<T> most = largest(team, m, column, RealOf<T>(0));
        team.lanes(1, [&](int) { maxima[team.x()] = most; });
    });
}

// Columns from `first` on.
template <class T>
LUMO_KERNEL void HermitianMaxima_k(int n, int first, const T* a, int lda, RealOf<T>* maxima) {
    cudalib::kernel<1024>([&](MaximaTeam team) LUMO_INLINED {
        const int j = first + int(team.x());
        const T* diagonal = &cudalib::at(a, lda, j, j);
        const RealOf<T> most =
            largest(team, n - j - 1, diagonal + 1, lumo::magnitude(lumo::realPart(*diagonal)));
        team.lanes(1, [&](int) { maxima[j] = most; });
    });
}

template <class T>
struct ColumnMaximaCost {
    static cudalib::Work of(int m, const T*, int, RealOf<T>*) { return {double(m) * sizeof(T)}; }
};
template <class T>
struct HermitianMaximaCost {
    static cudalib::Work of(int n, int, const T*, int, RealOf<T>*) {
        return {double(n) * sizeof(T)};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&RowSums_k<T>, cudalib::OnMatrix<T, 1>>,
              cudalib::Kernel<&ColumnMaxima_k<T>, ColumnMaximaCost<T>>,
              cudalib::Kernel<&HermitianMaxima_k<T>, HermitianMaximaCost<T>>)
