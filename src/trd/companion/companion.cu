#include "trd/companion/shape.h"

#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using CompanionTeam = cudalib::Team<lumo::companionLanes, 1>;

template <class T>
LUMO_KERNEL void Companion_k(int n, const T* tau, const T* v, T* w, T* conjugatedW,
                             T* conjugatedV) {
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
            team.lanes(n - i, [&](int lane) {
                const T mine = v[i + lane], result = factor * w[i + lane] + alpha * mine;
                w[i + lane] = result;
                conjugatedW[i + lane] = lumo::conjugate(result);
                conjugatedV[i + lane] = lumo::conjugate(mine);
            });
    });
}

LUMO_REGISTER(lumo::ElementTypes, &Companion_k<T>)
