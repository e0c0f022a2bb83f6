#include "basic/larfg/reflector.h"
#include "basic/larfg/shape.h"
#include "cudalib/kernel.h"

using ReflectorTeam = cudalib::Team<lumo::reflectorLanes, 1>;

template <class Map, class T>
LUMO_KERNEL void LARFG_k(int n, T* alpha, T* x, int incx, T* tau) {
    cudalib::kernel<64>([&](ReflectorTeam team) LUMO_INLINED {
        const std::size_t stride = std::size_t(incx);
        const auto h = lumo::HouseholderReflector<T>::make(team, n, *alpha, x, stride);
        if (h.isIdentity()) {
            team.lanes(1, [&](int) { *tau = T(0); });
            return;
        }
        for (long i = 0; i < n - 1; i += team.X)
            team.lanes(n - 1 - i, [&](int lane) {
                T& element = x[std::size_t(i + lane) * stride];
                element = h.vector(element);
            });
        team.lanes(1, [&](int) {
            *tau = h.tau;
            *alpha = T(h.beta);
        });
    });
}

// One warp goes through the vector twice, of which the second time it finds in a cache.
template <class T>
struct LarfgCost {
    static cudalib::Work of(int n, T* alpha, T*, int, T*) {
        auto* const beta = reinterpret_cast<lumo::RealOf<T>*>(alpha);
        cudalib::Work w = cudalib::normOf<T>(n, beta);
        w.bytes = 3. * n * sizeof(T);
        w.flops = 2 * cudalib::flopsOfProduct<T> * n;
        w.turns = 1.25 * n / lumo::reflectorLanes;
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&LARFG_k<lumo::ReflectorMap, T>, LarfgCost<T>>)
