#include "basic/lasr/shape.h"
#include "cudalib/kernel.h"

using lumo::ColumnMap;
using lumo::RealOf;
using lumo::RowMap;

// A lane owns a line of A: a column for side "L", a row for side "R". Along it the rotations form
// a chain, whose link, the element that two neighbouring rotations share, the lane keeps.
// Rotations go in groups: the loads of a group are independent of each other, and a CPU passes
// over memory once for all of them.
template <char side, char direct, class T>
struct RotationSequence {
    using Real = RealOf<T>;
    static constexpr bool right = side == 'R', forward = direct == 'F';
    static constexpr int grouped = 8;  // on a CPU half as many do as well

    LUMO_DEVICE static void apply(cudalib::Strip lines, int m, int n, const Real* c, const Real* s,
                                  T* a, int lda) {
        const int count = right ? m : n, planes = (right ? n : m) - 1;
        if (planes < 1) return;
        // Backward is forward from the other end of the line, with the sines negated.
        const std::ptrdiff_t pitch = right ? lda : 1, step = forward ? pitch : -pitch;
        T* at = forward ? a : a + planes * pitch;

        cudalib::Strip::Kept<T> link(lines);
        lines.each(count, [&](std::size_t i) { link[i] = *element(at, i, lda); });
        int k = 0;
        for (; k + grouped <= planes; k += grouped, at += grouped * step) {
            Rotations<grouped> rotations(c, s, planes, k);
            if (rotations.anyIdentity())
                for (int r = 0; r < grouped; ++r)
                    rotateOnce(lines, count, link, Rotations<1>(c, s, planes, k + r), at + r * step,
                               step, lda);
            else
                rotate(lines, count, link, rotations, at, step, lda);
        }
        for (; k < planes; ++k, at += step)
            rotateOnce(lines, count, link, Rotations<1>(c, s, planes, k), at, step, lda);
        lines.each(count, [&](std::size_t i) { *element(at, i, lda) = link[i]; });
    }

  private:
    template <int n>
    struct Rotations {
        Real c[n], s[n];

        LUMO_DEVICE Rotations(const Real* cosines, const Real* sines, int planes, int first) {
            for (int r = 0; r < n; ++r) {
                const int k = forward ? first + r : planes - 1 - first - r;
                c[r] = cosines[k];
                s[r] = forward ? sines[k] : -sines[k];
            }
        }
        LUMO_DEVICE bool anyIdentity() const {
            bool any = false;
            for (int r = 0; r < n; ++r) any |= c[r] == 1 && s[r] == 0;
            return any;
        }
    };

    // Element i lanes further.
    LUMO_DEVICE static T* element(T* at, std::size_t i, int lda) {
        return right ? at + i : at + i * std::size_t(lda);
    }

    template <int n>
    LUMO_DEVICE static void rotate(cudalib::Strip lines, int count, cudalib::Strip::Kept<T>& link,
                                   const Rotations<n>& by, T* at, std::ptrdiff_t step, int lda) {
        lines.each(count, [&](std::size_t i) {
            T* x = element(at, i, lda);
            T next[n];
            for (int r = 0; r < n; ++r) next[r] = x[(r + 1) * step];
            T shared = link[i];
            for (int r = 0; r < n; ++r) {
                x[r * step] = by.s[r] * next[r] + by.c[r] * shared;
                shared = by.c[r] * next[r] - by.s[r] * shared;
            }
            link[i] = shared;
        });
    }

    // One rotation. The identity is no product: it must not turn an infinity into a NaN.
    LUMO_DEVICE static void rotateOnce(cudalib::Strip lines, int count,
                                       cudalib::Strip::Kept<T>& link, const Rotations<1>& by, T* at,
                                       std::ptrdiff_t step, int lda) {
        if (!by.anyIdentity()) return rotate(lines, count, link, by, at, step, lda);
        lines.each(count, [&](std::size_t i) {
            T* x = element(at, i, lda);
            x[0] = link[i];
            link[i] = x[step];
        });
    }
};

template <class Map, char side, char pivot, char direct, class T>
LUMO_KERNEL void LASR_k(int m, int n, const RealOf<T>* c, const RealOf<T>* s, T* a, int lda) {
    static_assert(pivot == 'V');
    cudalib::kernel<256>([&](cudalib::Strip lines) LUMO_INLINED {
        RotationSequence<side, direct, T>::apply(lines, m, n, c, s, a, lda);
    });
}

// The matrix once there and back; a lane goes along a line, eight elements at a time.
template <char side, class T>
struct LasrCost {
    static cudalib::Work of(int m, int n, const RealOf<T>*, const RealOf<T>*, T*, int) {
        const double size = double(m) * n;
        return {2 * size * sizeof(T), cudalib::flopsOfRotation<T> * size,
                (side == 'R' ? n : m) / 8.};
    }
};

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&LASR_k<ColumnMap, 'L', 'V', 'F', T>, LasrCost<'L', T>>,
              cudalib::Kernel<&LASR_k<ColumnMap, 'L', 'V', 'B', T>, LasrCost<'L', T>>,
              cudalib::Kernel<&LASR_k<RowMap, 'R', 'V', 'F', T>, LasrCost<'R', T>>,
              cudalib::Kernel<&LASR_k<RowMap, 'R', 'V', 'B', T>, LasrCost<'R', T>>)
