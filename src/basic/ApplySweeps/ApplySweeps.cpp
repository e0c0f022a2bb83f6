#include "basic/ApplySweeps/ApplySweeps.h"

#include "cudalib/launch.h"

template <class T>
void ApplySweeps_k(int m, int elements, int stages, int groups,
                   const lumo::Rotation<lumo::RealOf<T>>* table, int pitch, T* a,
                   std::ptrdiff_t step);

namespace lumo {
namespace {

struct LinesMap {
    int lines, stages;
    dim3 blockShape() const { return {linesOfBlock, unsigned(stages), 1}; }
    dim3 gridShape() const { return {unsigned(cudalib::ceilDiv(lines, linesOfBlock)), 1, 1}; }
};

}  // namespace

template <class T>
void applySweeps(int m, int elements, int stages, const Rotation<RealOf<T>>* table, int pitch, T* a,
                 std::ptrdiff_t step) {
    if (m < 1 || elements < 2 || stages < 1) return;
    cudalib::launch(LinesMap{m, stages}, &ApplySweeps_k<T>, m, elements, stages,
                    sweepTableRows(elements, stages) / elementsAtOnce, table, pitch, a, step);
}

LUMO_INSTANTIATE(applySweeps)

}  // namespace lumo
