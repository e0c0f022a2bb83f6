// The routines that are measured, by the benchmarks, `lumo bench` and `lumo tune`: each by Lumo and
// by a CPU library, on data of its own.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumo {

// k: the inner extent of a product, right-hand sides, constraints; 0 for singular values alone.
struct Shape {
    int m, n, k;
};

// Memory of so many bytes for an operand; pivots want the host's, which can be read.
using Reserve = std::function<void*(std::size_t bytes, bool pivots)>;
// Calls a routine of Lumo's: the status.
using PlannedCall = std::function<int()>;

// Calls of one routine on operands that it may overwrite.
class Problem {
  public:
    Problem() = default;
    virtual ~Problem() = default;
    Problem(const Problem&) = delete;
    Problem& operator=(const Problem&) = delete;

    virtual void restore() = 0;         // the operands, before a call
    virtual int lumo() = 0;             // by Lumo's host function: the status
    virtual int by(void* routine) = 0;  // by one of Fortran's interface: LAPACK's info
};

struct MeasuredRoutine {
    std::string name;  // as "sgemm"
    // Of real arithmetic with a problem of order 1, as LAPACK's timing programs count them, n^3 as
    // many with one of order n; 0 for routines that `lumo bench` leaves out.
    double flops;
    std::function<std::unique_ptr<Problem>(Shape)> make;
    // One of order n, with one right-hand side; a quarter of the unknowns are constrained.
    std::function<std::unique_ptr<Problem>(int n)> makeSquare;
    // Such a problem's shape, and its call on memory that need not be there, by the host or the
    // device function.
    Shape (*shapeOf)(int n);
    std::function<PlannedCall(Shape, const Reserve&)> planHost, planDevice;
};

const std::vector<MeasuredRoutine>& measuredRoutines();
// Those, and what the CPU library has nothing to compare with: all that there are.
std::vector<MeasuredRoutine> allRoutines();
const MeasuredRoutine& measuredRoutine(const std::string& name);

// The routine of the CPU library that this program is linked to. Throws if it has none.
void* cpuRoutine(const std::string& name);

}  // namespace lumo
