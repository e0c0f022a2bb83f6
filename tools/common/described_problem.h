// A problem made from a routine's description.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "common/measure.h"
#include "common/routines.h"
#include "lapack/gels.h"
#include "lapack/geqrf.h"
#include "lapack/gesvd.h"
#include "lapack/gglse.h"
#include "platform/cpu/fortran.h"
#include "routine/c_interface.h"

namespace lumo {

// What LAPACK's interface has between a routine's arguments and info.
enum class Workspace { none, work, workAndReal };
template <class Routine>
constexpr Workspace workspaceOf = Workspace::none;
template <class T>
constexpr Workspace workspaceOf<Geqrf<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gels<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gglse<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gesvd<T>> = isComplex<T> ? Workspace::workAndReal : Workspace::work;

// Calls a Fortran routine: its arguments, then the lengths of the strings.
template <class... P>
void call(void* routine, P... arguments) {
    constexpr std::size_t one = 1;
    reinterpret_cast<void (*)(P..., std::size_t, std::size_t, std::size_t, std::size_t)>(routine)(
        arguments..., one, one, one, one);
}

// A description whose operands are memory of this object's.
template <class Routine, class Function>
class DescribedProblem : public Problem {
    using T = typename Routine::Element;

  public:
    DescribedProblem(Routine routine, Function lumo) : routine_(routine), lumo_(lumo) {
        routine_.operands([&](auto... operands) { (provide(operands), ...); });
    }

    void restore() override {
        for (const auto& restoreOperand : restore_) restoreOperand();
    }
    int lumo() override {
        return routine_.arguments([&](auto... a) { return int(lumo_(external(a)...)); });
    }
    int by(void* routine) override {
        return routine_.arguments(
            [&](const auto&... a) { return run(routine, cpu::reference(a)...); });
    }

  protected:
    // As xGESVD takes it, with work and lwork before what else it has before info.
    template <class Call>
    int withWorkspace(Call call) {
        int info = 0;
        if (work_.empty()) {
            T best(0);
            real_.resize(realSize());
            call(&best, -1, &info);
            RealOf<T> size;
            std::memcpy(&size, &best, sizeof size);  // the real part
            work_.resize(std::size_t(size), T(0));
        }
        call(work_.data(), int(work_.size()), &info);
        return info;
    }

    Routine routine_;
    std::vector<RealOf<T>> real_;

  private:
    template <class P>
    void provide(const MatrixOperand<P>& o) {
        if (o.ld) *o.ld = std::max(1, o.rows);
        provide(o.pointer, o.rows, o.columns, o.access);
    }
    template <class P>
    void provide(const VectorOperand<P>& o) {
        o.increment = 1;
        provide(o.pointer, o.length, 1, o.access);
    }
    // What is only read has a heavy diagonal: its triangles are well-conditioned.
    template <class P, class E = std::remove_const_t<std::remove_pointer_t<P>>>
    void provide(P& pointer, int rows, int columns, Access access) {
        longest_ = std::max({longest_, rows, columns});
        const std::size_t count = std::size_t(rows) * std::size_t(columns);
        auto memory = std::make_shared<std::vector<E>>(count);
        if constexpr (!std::is_same_v<E, int>) {
            if (access != Access::out) *memory = randomElements<E>(count);
            if (access == Access::in)
                for (int i = 0; i < std::min(rows, columns); ++i) {
                    E& pivot = (*memory)[std::size_t(i) * std::size_t(rows + 1)];
                    pivot = pivot + E(RealOf<E>(rows));
                }
        }
        pointer = memory->data();
        if (access == Access::in || access == Access::out)
            restore_.emplace_back([memory] {});
        else
            restore_.emplace_back([memory, original = *memory] {
                std::copy(original.begin(), original.end(), memory->begin());
            });
    }

    template <class... P>
    int run(void* routine, P... arguments) {
        int info = 0;
        if constexpr (Routine::family == Family::blas)
            call(routine, arguments...);
        else if constexpr (workspaceOf<Routine> == Workspace::none)
            call(routine, arguments..., &info);
        else
            info = withWorkspace([&](T* work, int size, int* result) {
                if constexpr (workspaceOf<Routine> == Workspace::work)
                    call(routine, arguments..., work, &size, result);
                else
                    call(routine, arguments..., work, &size, real_.data(), result);
            });
        return info;
    }
    // What xGESDD takes, which takes most.
    std::size_t realSize() const {
        const std::size_t n = std::size_t(longest_);
        return isComplex<T> ? 7 * n * n + 7 * n : 0;
    }

    const Function lumo_;
    std::vector<std::function<void()>> restore_;  // and owners of the operands
    std::vector<T> work_;
    int longest_ = 1;
};

}  // namespace lumo
