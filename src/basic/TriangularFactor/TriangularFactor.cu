#include "basic/TriangularFactor/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using FactorTeam = cudalib::Team<lumo::factorRows, 1>;

// Column i of T is -tau(i) T' G(:, i), where T' is the factor of the reflectors before i in the
// product. A row of it needs nothing but the same row of T', so that a lane makes a row of T, and
// lanes need not wait for each other.
template <class T, bool forward>
LUMO_KERNEL void TriangularFactor_k(int count, const T* gram, int ldgram, const T* tau, T* t,
                                    int ldt) {
    cudalib::kernel<1024>([&](FactorTeam team) LUMO_INLINED {
        const int first = int(team.x()) * team.X, rows = count - first;
        // In these rows all is zero beyond the column of the outermost one.
        const int outermost = forward ? first : (rows < team.X ? count : first + team.X) - 1;
        for (int step = 0; step < count; ++step) {
            const int i = forward ? step : count - 1 - step;
            cudalib::LaneValues<FactorTeam, T> sum;
            team.lanes(rows, [&](int lane) { sum.at(0, lane) = T(0); });
            for (int l = outermost; forward ? l < i : l > i; l += forward ? 1 : -1) {
                const T factor = cudalib::at(gram, ldgram, l, i);
                team.lanes(rows, [&](int lane) {
                    T& mine = sum.at(0, lane);
                    mine = mine + cudalib::at(t, ldt, first + lane, l) * factor;
                });
            }
            const T scalar = tau[i];
            team.lanes(rows, [&](int lane) {
                const int row = first + lane;
                const bool before = forward ? row < i : row > i;
                cudalib::at(t, ldt, row, i) = row == i ? scalar
                                              : before ? (T(0) - scalar) * sum.at(0, lane)
                                                       : T(0);
            });
        }
    });
}

// A lane's columns wait for each other, each a read.
template <class T>
struct TriangularFactorCost {
    static cudalib::Work of(int count, const T*, int, const T*, T*, int) {
        cudalib::Work w;
        w.bytes = 2. * count * count * sizeof(T);
        w.flops = cudalib::flopsOfProduct<T> * count * count * count / 6;
        w.turns = count;
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&TriangularFactor_k<T, true>, TriangularFactorCost<T>>,
              cudalib::Kernel<&TriangularFactor_k<T, false>, TriangularFactorCost<T>>)
