#include "basic/larfg/reflector.h"
#include "brd/reflectors/shape.h"
#include "cudalib/kernel.h"

using lumo::HouseholderReflector;
using lumo::RealOf;

using PanelReflectorTeam = cudalib::Team<lumo::panelReflectorLanes, 1>;

// f(k) for 0 <= k < n.
template <class F>
LUMO_DEVICE void each(PanelReflectorTeam team, int n, F f) {
    for (long i = 0; i < n; i += team.X)
        team.lanes(n - i, [&](int lane) { f(std::size_t(i + lane)); });
}

template <class T>
LUMO_KERNEL void ColumnReflector_k(int rows, int lead, T* a, T* vector, RealOf<T>* d, T* tau,
                                   int count, const T* p, int ldp, T* pulled) {
    cudalib::kernel<64>([&](PanelReflectorTeam team) LUMO_INLINED {
        const auto h = HouseholderReflector<T>::make(team, rows, *a, a + 1, 1);
        each(team, rows - 1, [&](std::size_t k) {
            const T v = h.vector(a[k + 1]);
            a[k + 1] = v;
            vector[k + 1] = v;
        });
        each(team, lead, [&](std::size_t k) { vector[std::ptrdiff_t(k) - lead] = T(0); });
        each(team, count,
             [&](std::size_t k) { pulled[k] = T(0) - lumo::conjugate(p[k * std::size_t(ldp)]); });
        team.lanes(1, [&](int) {
            *tau = h.tau;
            *d = h.beta;
            *a = T(h.beta);
            *vector = T(1);
        });
    });
}

template <class T>
LUMO_KERNEL void RowReflector_k(int columns, const T* r, T* a, int lda, T* vector, RealOf<T>* e,
                                T* tau) {
    cudalib::kernel<64>([&](PanelReflectorTeam team) LUMO_INLINED {
        const auto g = HouseholderReflector<T>::make(team, columns, *r, r + 1, 1);
        each(team, columns - 1, [&](std::size_t k) {
            const T u = g.vector(r[k + 1]);
            vector[k + 1] = u;
            a[(k + 1) * std::size_t(lda)] = lumo::conjugate(u);
        });
        team.lanes(1, [&](int) {
            *tau = g.tau;
            *e = g.beta;
            *a = T(g.beta);
            *vector = T(1);
        });
    });
}

// One block goes through the vector twice.
template <class T>
cudalib::Work workOfReflector(int n, RealOf<T>* length, double bytesOfElement) {
    cudalib::Work w = cudalib::normOf<T>(n, length);
    w.bytes = n * bytesOfElement;
    w.flops = 2 * cudalib::flopsOfProduct<T> * n;
    w.turns = 2. * n / lumo::panelReflectorLanes + 10;
    return w;
}
template <class T>
struct ColumnReflectorCost {
    static cudalib::Work of(int rows, int, T*, T*, RealOf<T>* d, T*, int, const T*, int, T*) {
        return workOfReflector<T>(rows, d, 4 * sizeof(T));
    }
};
template <class T>
struct RowReflectorCost {
    static cudalib::Work of(int columns, const T*, T*, int, T*, RealOf<T>* e, T*) {
        return workOfReflector<T>(columns, e, 3 * sizeof(T) + cudalib::bytesOfLoneElement<T>);
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&ColumnReflector_k<T>, ColumnReflectorCost<T>>,
              cudalib::Kernel<&RowReflector_k<T>, RowReflectorCost<T>>)
