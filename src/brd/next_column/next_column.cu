#include <limits>

#include "basic/magnitude.h"
#include "brd/next_column/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using lumo::RealOf;

// A CPU takes longer strips of the columns, and its lanes need no help.
#ifdef __CUDACC__
constexpr int stripRows = lumo::nextColumnRows, splits = lumo::nextColumnSplits;
#else
constexpr int stripRows = 8 * lumo::nextColumnRows, splits = 1;
#endif

using StripTeam = cudalib::Team<stripRows, lumo::nextColumnSplits>;

// Sums over the columns of matrices for a strip of rows, each made in parts by several lanes.
template <class T>
class StripSums {
  public:
    using Parts = T[splits][stripRows];

    LUMO_DEVICE StripSums(StripTeam team, Parts& parts, long rows)
        : team_(team), parts_(parts), rows_(rows) {
        team_.rows(splits, [&](int y) { team_.lanes(rows_, [&](int x) { parts_[y][x] = T(0); }); });
    }

    // Adds the n columns of a, each times factor(k).
    template <class Factor>
    LUMO_DEVICE void add(int n, const T* a, int lda, Factor factor) const {
        constexpr int together = 4;
        const std::size_t pitch = std::size_t(lda);
        team_.rows(splits, [&](int y) {
            T* const mine = parts_[y];
            int k = y * together;
            for (; k + together <= n; k += splits * together) {
                const T* const from = a + k * pitch;
                const T f[together] = {factor(k), factor(k + 1), factor(k + 2), factor(k + 3)};
                team_.lanes(rows_, [&](int x) {
                    T sum = mine[x];
                    for (int i = 0; i < together; ++i) sum = sum + from[i * pitch + x] * f[i];
                    mine[x] = sum;
                });
            }
            for (const int end = k + together < n ? k + together : n; k < end; ++k) {
                const T* const from = a + k * pitch;
                const T f = factor(k);
                team_.lanes(rows_, [&](int x) { mine[x] = mine[x] + from[x] * f; });
            }
        });
    }

    // f(x, sum) for each row.
    template <class F>
    LUMO_DEVICE void each(F f) const {
        team_.barrier();
        team_.rows(1, [&](int) {
            for (int y = 1; y < splits; ++y)
                team_.lanes(rows_, [&](int x) { parts_[0][x] = parts_[0][x] + parts_[y][x]; });
            team_.lanes(rows_, [&](int x) { f(x, parts_[0][x]); });
        });
        team_.barrier();
    }

  private:
    StripTeam team_;
    Parts& parts_;
    long rows_;
};

// Whether one of the n values, shared by the team and no longer needed, is not 0.
template <class R>
LUMO_DEVICE bool anyIsNotZero(StripTeam team, R (&values)[stripRows], long n) {
    team.rows(1, [&](int) {
        team.lanes(stripRows, [&](int x) { values[x] = x < n ? values[x] : R(0); });
    });
    team.barrier();
    for (int half = stripRows / 2; half > 0; half /= 2) {
        team.rows(1, [&](int) {
            team.lanes(half, [&](int x) { values[x] = values[x] + values[x + half]; });
        });
        team.barrier();
    }
    return !(values[0] == 0);
}

// The lengths of vectors whose products may have lost digits to underflow, or overflowed. What else
// overflows is seen by the result.
template <class R>
struct Extreme {
    using Limits = std::numeric_limits<R>;
    static constexpr R least = Limits::min() / Limits::epsilon(), most = 1 / least;

    LUMO_DEVICE static bool has(R length) {
        const R square = length * length;
        return !(square >= least && square <= most);
    }
};

template <class T>
LUMO_KERNEL void NextColumn_k(int rows, int columns, int count, T* a, int lda, const T* w, int ldw,
                              T* p, int ldp, const T* heads, const T* parts, int ldparts,
                              int partCount, const RealOf<T>* e, const T* tau, bool update) {
    using R = RealOf<T>;
    cudalib::kernel<256>([&](StripTeam team) LUMO_INLINED {
        LUMO_SHARED typename StripSums<T>::Parts shared;
        LUMO_SHARED R odd[stripRows];
        const long first = team.x() * stripRows;
        const long here = rows - first < stripRows ? rows - first : stripRows;
        T *const mine = a + first, *const reflected = p + first;

        // (A - P W^H) e1.
        cudalib::LaneValues<StripTeam, T> before, after;
        const StripSums<T> old(team, shared, here);
        old.add(count, reflected, ldp, [&](int k) {
            return T(0) - lumo::conjugate(w[std::size_t(k) * std::size_t(ldw)]);
        });
        old.each([&](int x, T sum) { before.at(0, x) = mine[x] + sum; });

        const R length = *e, perLength = 1 / length;
        const StripSums<T> products(team, shared, here);
        products.add(partCount, parts + first, ldparts, [](int) { return T(1); });
        products.add(count, reflected, ldp, [&](int k) { return T(0) - heads[k]; });
        products.each([&](int x, T sum) {
            const T next = perLength * sum;
            after.at(0, x) = next;
            odd[x] = (lumo::realPart(next) + lumo::imaginaryPart(next)) * 0;
        });

        if (Extreme<R>::has(length) || anyIsNotZero(team, odd, here)) {
            const T* const u = w + std::size_t(count) * std::size_t(ldw);
            auto s = [&](int j) { return T(j == 0) - *tau * u[j]; };
            LUMO_SHARED T again[2 * lumo::mostPanelColumns];
            team.rows(1, [&](int) {
                for (int k = 0; k < count; k += stripRows)
                    team.lanes(count - k, [&](int x) {
                        const T* const column = w + std::size_t(k + x) * std::size_t(ldw);
                        T sum = T(0);
                        for (int j = 0; j < columns; ++j)
                            sum = sum + lumo::conjugate(column[j]) * s(j);
                        again[k + x] = sum;
                    });
            });
            team.barrier();
            const StripSums<T> anew(team, shared, here);
            anew.add(columns, mine, lda, s);
            anew.add(count, reflected, ldp, [&](int k) { return T(0) - again[k]; });
            anew.each([&](int x, T sum) { after.at(0, x) = sum; });
        }

        team.rows(1, [&](int) {
            team.lanes(here, [&](int x) {
                reflected[std::size_t(count) * std::size_t(ldp) + x] =
                    before.at(0, x) - after.at(0, x);
            });
            if (update) team.lanes(here, [&](int x) { mine[x] = after.at(0, x); });
        });
    });
}

// As it is but for extreme data. A lane has some reads under way together; then sums are gathered.
template <class T>
struct NextColumnCost {
    static cudalib::Work of(int rows, int, int count, T*, int, const T*, int, T*, int, const T*,
                            const T*, int, int partCount, const RealOf<T>*, const T*, bool) {
        const double size = double(rows) * (count + partCount + 3);
        return {size * sizeof(T), cudalib::flopsOfProduct<T> * size,
                double(count + partCount) / (4 * lumo::nextColumnSplits) + 8};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&NextColumn_k<T>, NextColumnCost<T>>)
