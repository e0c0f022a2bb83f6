#include "basic/ApplySweeps/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using lumo::elementsAtOnce;
using lumo::mostStages;
using lumo::RealOf;
using lumo::Rotation;
using lumo::sweepsOfStage;

// A line's elements run through a cascade of stages, each of which applies a few sweeps and keeps
// of each the link, the element that two neighbouring rotations share. A stage is a row of lanes;
// it hands elements on through shared memory and is one group of elements behind the stage before,
// which is why there is one barrier for each group; within a stage a lane reads what it wrote
// itself.
template <class T>
struct Cascade {
    using Real = RealOf<T>;
#ifdef __CUDACC__
    static constexpr int lines = lumo::linesOfBlock;
#else
    static constexpr int lines = 1024 / sizeof(T);  // what is handed on stays in the nearer caches
#endif
    using Team = cudalib::Team<lines, mostStages>;
    using Elements = T[elementsAtOnce][lines];
    using Sweeps = Rotation<Real>[elementsAtOnce][sweepsOfStage];
    using Links = cudalib::LaneValues<Team, T>[sweepsOfStage];

    LUMO_DEVICE static void run(Team team, int m, int elements, int stages, int groups,
                                const Rotation<Real>* table, int pitch, T* a, std::ptrdiff_t step) {
        LUMO_SHARED Elements handed[2][mostStages];
        Links link;
        const long first = team.x() * lines, here = m - first;
        a += first;
        team.rows(stages, [&](int y) {
            team.lanes(here, [&](int x) {
                for (int r = 0; r < sweepsOfStage; ++r) link[r].at(y, x) = T(0);
            });
        });
        for (int turn = 0; turn < groups + stages - 1; ++turn) {
            team.rows(stages, [&](int y) {
                const int group = turn - y;
                if (group < 0 || group >= groups) return;
                const int row = group * elementsAtOnce;
                Sweeps by;
                read(by, table + std::ptrdiff_t(row) * pitch + y * sweepsOfStage, pitch);
                Elements& in = handed[turn % 2][y];
                Elements& out = handed[(turn + 1) % 2][(y + 1) % mostStages];
                const bool enter = y == 0, leave = y == stages - 1;
                if (enter) read(team, here, in, row, elements, a, step);
                if (anyIdentity(by))
                    rotateOneByOne(team, y, here, in, out, link, by);
                else
                    rotate(team, y, here, in, out, link, by);
                if (leave) write(team, here, out, row - stages * sweepsOfStage, elements, a, step);
            });
            team.barrier();
        }
    }

  private:
    LUMO_DEVICE static void read(Sweeps& by, const Rotation<Real>* table, int pitch) {
        for (int u = 0; u < elementsAtOnce; ++u)
            for (int r = 0; r < sweepsOfStage; ++r) by[u][r] = table[u * pitch + r];
    }
    // Whether a plane is not turned: by the identity, or nearly.
    LUMO_DEVICE static bool anyIdentity(const Sweeps& by) {
        bool any = false;
        for (int u = 0; u < elementsAtOnce; ++u)
            for (int r = 0; r < sweepsOfStage; ++r) any |= by[u][r].s == 0;
        return any;
    }

    // All loads are under way together. Behind the last element comes what nothing is made of.
    LUMO_DEVICE static void read(Team team, long here, Elements& to, int from, int elements,
                                 const T* a, std::ptrdiff_t step) {
        const T* columns[elementsAtOnce];
        for (int u = 0; u < elementsAtOnce; ++u)
            columns[u] = a + step * (from + u < elements ? from + u : elements - 1);
        team.lanes(here, [&](int x) {
            T values[elementsAtOnce];
            for (int u = 0; u < elementsAtOnce; ++u) values[u] = columns[u][x];
            for (int u = 0; u < elementsAtOnce; ++u) to[u][x] = values[u];
        });
    }
    LUMO_DEVICE static void write(Team team, long here, const Elements& from, int to, int elements,
                                  T* a, std::ptrdiff_t step) {
        for (int u = 0; u < elementsAtOnce; ++u) {
            if (to + u < 0 || to + u >= elements) continue;
            T* const x0 = a + step * (to + u);
            team.lanes(here, [&](int x) { x0[x] = from[u][x]; });
        }
    }

    // One sweep behind the other, the elements in registers.
    LUMO_DEVICE static void rotate(Team team, int y, long here, const Elements& in, Elements& out,
                                   Links& link, const Sweeps& sweeps) {
        team.lanes(here, [&](int x) {
            T values[elementsAtOnce];
            for (int u = 0; u < elementsAtOnce; ++u) values[u] = in[u][x];
            static_assert(sweepsOfStage == 4);  // g++ leaves a loop over sweeps as it is
            sweep(values, link[0].at(y, x), sweeps, 0);
            sweep(values, link[1].at(y, x), sweeps, 1);
            sweep(values, link[2].at(y, x), sweeps, 2);
            sweep(values, link[3].at(y, x), sweeps, 3);
            for (int u = 0; u < elementsAtOnce; ++u) out[u][x] = values[u];
        });
    }
    LUMO_DEVICE static void sweep(T (&values)[elementsAtOnce], T& kept, const Sweeps& sweeps,
                                  int r) {
        T link = kept;
        for (int u = 0; u < elementsAtOnce; ++u) {
            const Real c = sweeps[u][r].c, s = sweeps[u][r].s;
            const T next = values[u];
            values[u] = s * next + c * link;
            link = c * next - s * link;
        }
        kept = link;
    }

    // One rotation after the other. The identity is no product: it must not turn an infinity into
    // a NaN.
    LUMO_DEVICE static void rotateOneByOne(Team team, int y, long here, const Elements& in,
                                           Elements& out, Links& link, const Sweeps& sweeps) {
        for (int u = 0; u < elementsAtOnce; ++u) {
            team.lanes(here, [&](int x) { out[u][x] = in[u][x]; });
            for (int r = 0; r < sweepsOfStage; ++r) {
                const Real c = sweeps[u][r].c, s = sweeps[u][r].s;
                if (c == 1 && s == 0)
                    team.lanes(here, [&](int x) {
                        const T next = out[u][x];
                        out[u][x] = link[r].at(y, x);
                        link[r].at(y, x) = next;
                    });
                else
                    team.lanes(here, [&](int x) {
                        const T next = out[u][x], shared = link[r].at(y, x);
                        out[u][x] = s * next + c * shared;
                        link[r].at(y, x) = c * next - s * shared;
                    });
            }
        }
    }
};

template <class T>
LUMO_KERNEL void ApplySweeps_k(int m, int elements, int stages, int groups,
                               const Rotation<RealOf<T>>* table, int pitch, T* a,
                               std::ptrdiff_t step) {
    using Team = typename Cascade<T>::Team;
    cudalib::kernel<4096>([&](Team team) LUMO_INLINED {
        Cascade<T>::run(team, m, elements, stages, groups, table, pitch, a, step);
    });
}

// The matrix once there and back; a step of the cascade is a barrier.
template <class T>
struct ApplySweepsCost {
    static cudalib::Work of(int m, int elements, int stages, int groups, const Rotation<RealOf<T>>*,
                            int, T*, std::ptrdiff_t) {
        const double sweeps = double(stages) * sweepsOfStage, size = double(m) * elements;
        return {2 * size * sizeof(T) + sweeps * elements * sizeof(Rotation<RealOf<T>>),
                size * sweeps * cudalib::flopsOfRotation<T>, double(groups + stages)};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&ApplySweeps_k<T>, ApplySweepsCost<T>>)
