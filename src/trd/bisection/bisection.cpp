#include "trd/bisection/bisection.h"

#include "common/element_types.h"
#include "cudalib/launch.h"
#include "trd/bisection/shape.h"

template <class R>
void Bisection_k(int n, const R* d, const R* squares, int first, int count, int candidates,
                 R* values);

namespace lumo {
namespace {

struct BisectionMap {
    int blocks;
    dim3 blockShape() const { return {bisectionLanes, 1, 1}; }
    dim3 gridShape() const { return {unsigned(blocks), 1, 1}; }
};

}  // namespace

template <class R>
void bisection(int n, const R* d, const R* squares, int first, int count, int candidates,
               R* values) {
    if (count < 1) return;
    const int blocks = cudalib::ceilDiv(count, bisectionLanes / candidates);
    cudalib::launch(BisectionMap{blocks}, &Bisection_k<R>, n, d, squares, first, count, candidates,
                    values);
}

LUMO_INSTANTIATE_REAL(bisection)

}  // namespace lumo
