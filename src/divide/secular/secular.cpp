#include "divide/secular/secular.h"

#include "cudalib/launch.h"
#include "divide/secular/shape.h"

template <class R>
void SecularRoots_k(int count, const lumo::Merge<R>* merges, const R* d, const R* z, R* origin,
                    R* offset, R* root);
template <class R>
void SecularWeights_k(int count, const lumo::Merge<R>* merges, const R* d, const R* z,
                      const int* rows, const R* origin, const R* offset, R* pole, R* weight);
template <class R>
void SecularVectors_k(int count, const lumo::Merge<R>* merges, const R* origin, const R* offset,
                      const R* pole, const R* weight, R* s, int lds);

namespace lumo {
namespace {

// So many blocks for each merge.
struct MergesMap {
    unsigned blocks, merges, lanes;
    dim3 blockShape() const { return {lanes, 1, 1}; }
    dim3 gridShape() const { return {blocks, merges, 1}; }
};

template <class R>
MergesMap lanesOf(const SecularProblem<R>& p) {
    return {unsigned(cudalib::ceilDiv(p.order, secularLanes)), unsigned(p.count), secularLanes};
}

}  // namespace

template <class R>
void secularRoots(const SecularProblem<R>& p) {
    cudalib::launch(lanesOf(p), &SecularRoots_k<R>, p.count, p.merges, p.d, p.z, p.origin, p.offset,
                    p.root);
}

template <class R>
void secularWeights(const SecularProblem<R>& p) {
    cudalib::launch(lanesOf(p), &SecularWeights_k<R>, p.count, p.merges, p.d, p.z, p.rows, p.origin,
                    p.offset, p.pole, p.weight);
}

template <class R>
void secularVectors(const SecularProblem<R>& p, R* s, int lds) {
    cudalib::launch(MergesMap{unsigned(p.order), unsigned(p.count), vectorLanes},
                    &SecularVectors_k<R>, p.count, p.merges, p.origin, p.offset, p.pole, p.weight,
                    s, lds);
}

LUMO_INSTANTIATE_REAL(secularRoots)
LUMO_INSTANTIATE_REAL(secularWeights)
LUMO_INSTANTIATE_REAL(secularVectors)

}  // namespace lumo
