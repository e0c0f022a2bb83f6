// A problem made from a routine's description.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "blas/cublas.h"
#include "common/measure.h"
#include "common/plain_pivots.h"
#include "common/routines.h"
#include "lapack/gels.h"
#include "lapack/gelsd.h"
#include "lapack/geqrf.h"
#include "lapack/gesdd.h"
#include "lapack/gesvd.h"
#include "lapack/gglse.h"
#include "lapack/orgqr.h"
#include "lapack/ormqr.h"
#include "lapack/syevd.h"
#include "lapack/sygvd.h"
#include "platform/cpu/lapack.h"
#include "routine/c_interface.h"

namespace lumo {

// What LAPACK's interface has between a routine's arguments and info. Where there are integers,
// complex routines take reals in front of them; the lengths of both are told only withLengths.
enum class Workspace { none, work, workAndReal, withIntegers, withLengths };
template <class Routine>
constexpr Workspace workspaceOf = Workspace::none;
template <class T>
constexpr Workspace workspaceOf<Geqrf<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Orgqr<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Ormqr<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gels<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gglse<T>> = Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gesvd<T>> = isComplex<T> ? Workspace::workAndReal : Workspace::work;
template <class T>
constexpr Workspace workspaceOf<Gesdd<T>> = Workspace::withIntegers;
template <class T>
constexpr Workspace workspaceOf<Gelsd<T>> = Workspace::withIntegers;
template <class T>
constexpr Workspace workspaceOf<Syevd<T>> = Workspace::withLengths;
template <class T>
constexpr Workspace workspaceOf<Sygvd<T>> = Workspace::withLengths;

// Calls a Fortran routine: its arguments, then the lengths of the strings.
template <class... P>
void call(void* routine, P... arguments) {
    constexpr std::size_t one = 1;
    reinterpret_cast<void (*)(P..., std::size_t, std::size_t, std::size_t, std::size_t)>(routine)(
        arguments..., one, one, one, one);
}

// Makes random operands those of a call that makes sense: factors of something.
template <class Routine>
void makeSense(Routine& routine) {
    fillPivots(routine);
}
template <class T>
void factorize(int m, int k, const T* a, int lda, const T* tau) {
    using Number = decltype(cublas::plain(T()));
    auto* const at = reinterpret_cast<Number*>(const_cast<T*>(a));
    auto* const factors = reinterpret_cast<Number*>(const_cast<T*>(tau));
    cpu::withWorkspace<Number>(1, [&](Number* work, int size) {
        return cpu::geqrf<Number>(m, k, at, lda, factors, work, size);
    });
}
template <class T>
void makeSense(Orgqr<T>& r) {
    factorize(r.m, r.k, r.a, r.lda, r.tau);
}
template <class T>
void makeSense(Ormqr<T>& r) {
    factorize(r.side == 'L' ? r.m : r.n, r.k, r.a, r.lda, r.tau);
}

// A description whose operands are memory of this object's.
template <class Routine, class Function>
class DescribedProblem : public Problem {
    using T = typename Routine::Element;

  public:
    DescribedProblem(Routine routine, Function lumo) : routine_(routine), lumo_(lumo) {
        routine_.operands([&](auto... operands) { (provide(operands), ...); });
        makeSense(routine_);
        routine_.operands([&](auto... operands) { (keep(operands), ...); });
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

  private:
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
            work_.reserve(std::size_t(size) + std::size_t(longest_));
            work_.resize(std::size_t(size), T(0));
        }
        call(work_.data(), int(work_.size()), &info);
        return info;
    }

    template <class P>
    void provide(const MatrixOperand<P>& o) {
        if (o.ld) *o.ld = std::max(1, o.rows);
        const bool definite = o.triangle && o.access == Access::inOut;
        provide(o.pointer, o.rows, o.columns, o.access, definite || o.access == Access::in);
    }
    template <class P>
    void provide(const VectorOperand<P>& o) {
        o.increment = 1;
        provide(o.pointer, o.length, 1, o.access, o.access == Access::in);
    }
    // What is only read has a heavy diagonal: its triangles are well-conditioned. So has a triangle
    // that is overwritten: with it a matrix is definite.
    template <class P, class E = std::remove_const_t<std::remove_pointer_t<P>>>
    void provide(P& pointer, int rows, int columns, Access access, bool heavyDiagonal) {
        longest_ = std::max({longest_, rows, columns});
        const std::size_t count = std::size_t(rows) * std::size_t(columns);
        auto memory = std::make_shared<std::vector<E>>(count);
        if constexpr (!std::is_same_v<E, int>) {
            if (access != Access::out) *memory = randomElements<E>(count);
            for (int i = 0; i < std::min(rows, columns) && heavyDiagonal; ++i) {
                E& pivot = (*memory)[std::size_t(i) * std::size_t(rows + 1)];
                pivot = pivot + E(RealOf<E>(rows));
            }
        }
        // gemv of a CPU BLAS may read, and not use, what lies behind the last element of a row.
        memory->reserve(count + std::size_t(rows));
        pointer = memory->data();
        owners_.push_back(memory);
    }
    template <class P>
    void keep(const MatrixOperand<P>& o) {
        keep(o.pointer, std::size_t(o.rows) * std::size_t(o.columns), o.access);
    }
    template <class P>
    void keep(const VectorOperand<P>& o) {
        keep(o.pointer, std::size_t(o.length), o.access);
    }
    template <class E>
    void keep(E* a, std::size_t count, Access access) {
        if (access != Access::inOut && access != Access::scratch) return;
        if constexpr (!std::is_const_v<E>)
            restore_.emplace_back([a, original = std::vector<E>(a, a + count)] {
                std::copy(original.begin(), original.end(), a);
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
                else if constexpr (workspaceOf<Routine> == Workspace::workAndReal)
                    call(routine, arguments..., work, &size, real_.data(), result);
                else
                    withIntegers([&](auto... others) {
                        call(routine, arguments..., work, &size, others..., result);
                    });
            });
        return info;
    }
    template <class Call>
    void withIntegers(Call call) {
        integers_.resize(107 * std::size_t(longest_));  // xGELSD, of up to 32 levels
        const int integers = int(integers_.size()), reals = int(real_.size());
        if constexpr (workspaceOf<Routine> == Workspace::withIntegers && isComplex<T>)
            call(real_.data(), integers_.data());
        else if constexpr (workspaceOf<Routine> == Workspace::withIntegers)
            call(integers_.data());
        else if constexpr (isComplex<T>)
            call(real_.data(), &reals, integers_.data(), &integers);
        else
            call(integers_.data(), &integers);
    }
    // More than either of xGESDD and xGELSD, with blocks of 25, takes.
    std::size_t realSize() const {
        const std::size_t n = std::size_t(longest_);
        return isComplex<T> ? 8 * n * n + 420 * n + 676 : 0;
    }

    Routine routine_;
    const Function lumo_;
    std::vector<std::shared_ptr<void>> owners_;
    std::vector<std::function<void()>> restore_;
    std::vector<T> work_;
    std::vector<RealOf<T>> real_;
    std::vector<int> integers_;
    int longest_ = 1;
};

}  // namespace lumo
