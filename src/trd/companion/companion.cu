#include "trd/companion/shape.h"

#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using CompanionTeam = cudalib::Team<lumo::companionLanes, 1>;

template <class T>
LUMO_KERNEL void Companion_k(int n, const T* tau, const T* v, T* w, int count, const T* p, int ldp,
                             T* row) {
    cudalib::kernel<64>([&](CompanionTeam team) LUMO_INLINED {
        const T factor = *tau;
        cudalib::LaneValues<CompanionTeam, T> product;
        team.lanes(team.X, [&](int lane) { product.at(0, lane) = T(0); });
        for (long i = 0; i < n; i += team.X)
            team.lanes(n - i, [&](int lane) {
                product.at(0, lane) =
                    product.at(0, lane) + lumo::conjugate(factor * w[i + lane]) * v[i + lane];
            });
        const T sum = cudalib::sumOfLanes(product);
        const T alpha = lumo::RealOf<T>(-0.5) * (factor * sum);
        for (long i = 0; i < n; i += team.X)
            team.lanes(n - i,
                       [&](int lane) { w[i + lane] = factor * w[i + lane] + alpha * v[i + lane]; });
        team.barrier();
        for (long i = 0; i < count; i += team.X)
            team.lanes(count - i, [&](int lane) {
                row[i + lane] = lumo::conjugate(p[std::size_t(i + lane) * std::size_t(ldp)]);
            });
    });
}

// One block goes through both vectors twice.
template <class T>
struct CompanionCost {
    static cudalib::Work of(int n, const T*, const T*, T*, int count, const T*, int, T*) {
        return {n * 5. * sizeof(T) + count * cudalib::bytesOfLoneElement<T>,
                2 * cudalib::flopsOfProduct<T> * n, 2. * n / lumo::companionLanes + 10};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&Companion_k<T>, CompanionCost<T>>)
