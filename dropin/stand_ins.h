// What stands in for operands that lie in memory otherwise than Lumo takes them: matrices stored by
// rows, and pivots of 64 bits.
#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "routine/description.h"

namespace lumo::dropin {

// The transpose of a column-major m x n matrix, by tiles that stay in the cache. A caller's complex
// numbers may be aligned as reals are.
template <class T>
void transpose(int m, int n, const T* from, std::ptrdiff_t ldFrom, T* to, std::ptrdiff_t ldTo) {
    constexpr int tile = 32;
    for (int j = 0; j < n; j += tile)
        for (int i = 0; i < m; i += tile)
            for (int y = j; y < std::min(n, j + tile); ++y)
                for (int x = i; x < std::min(m, i + tile); ++x)
                    std::memcpy(to + y + x * ldTo, from + x + y * ldFrom, sizeof(T));
}

// For one call. `Integer` is the caller's. Where nothing lies otherwise, this does nothing.
template <class Integer>
class StandIns {
  public:
    explicit StandIns(bool byRows = false) : byRows_(byRows) {}

    // Gives the routine the leading dimensions that it will have, of columns where the caller's are
    // of rows. What sizes its operands have is known when its other arguments are right. False if
    // one is not, or a leading dimension of the caller's too small.
    template <class Routine>
    bool layOut(Routine& routine) {
        if (!byRows_) return true;
        std::vector<int> given;
        routine.operands([&](auto... o) { (setAside(o, given), ...); });
        if (routine.badArgument() != 0) return false;
        auto next = given.begin();
        bool good = true;
        routine.operands([&](auto... o) { ((good = settle(o, next) && good), ...); });
        return good;
    }

    // Copies what lies otherwise, and points the routine to the copies. False if a number of the
    // caller's is too large.
    template <class Routine>
    bool take(Routine& routine) {
        bool good = true;
        routine.operands([&](auto... o) { ((good = good && takeOne(o)), ...); });
        return good;
    }

    // Copies the results to where the caller wants them.
    void giveBack() {
        for (const auto& one : results_) one();
    }

  private:
    // Vectors with increments are the BLAS's, whose calls by rows are calls by columns with other
    // letters.
    template <class P>
    void setAside(const VectorOperand<P>&, std::vector<int>&) {}
    template <class P>
    bool settle(const VectorOperand<P>&, std::vector<int>::iterator&) {
        return true;
    }
    template <class P>
    bool takeOne(const VectorOperand<P>&) {
        return true;
    }

    using Given = std::vector<int>::iterator;

    template <class P>
    void setAside(const MatrixOperand<P>& o, std::vector<int>& given) {
        if (!o.ld) return;
        given.push_back(*o.ld);
        *o.ld = INT_MAX;
    }
    template <class P>
    bool settle(const MatrixOperand<P>& o, Given& given) {
        if (!o.ld) return true;
        const int least = std::max(1, o.access == Access::none ? 1 : o.columns);
        lds_.push_back(*given);
        *o.ld = std::max(1, o.rows);
        return *given++ >= least;
    }
    template <class P>
    bool takeOne(const MatrixOperand<P>& o) {
        using T = typename MatrixOperand<P>::Element;
        if constexpr (std::is_same_v<T, int>) {
            if constexpr (!std::is_same_v<Integer, int>) return takeIntegers(o);
        } else if (byRows_ && o.ld) {
            takeRows(o, lds_[taken_++]);
        }
        return true;
    }

    template <class P>
    void takeRows(const MatrixOperand<P>& o, int ld) {
        using T = typename MatrixOperand<P>::Element;
        if (o.access == Access::none) return;
        const auto copy = std::make_shared<std::vector<T>>(std::size_t(o.rows) * o.columns);
        const P caller = o.pointer;
        if (o.access != Access::out || o.triangle)
            transpose<T>(o.columns, o.rows, caller, ld, copy->data(), *o.ld);
        o.pointer = copy->data();
        keep(o, [copy, caller, ld, rows = o.rows, columns = o.columns] {
            if constexpr (!std::is_const_v<std::remove_pointer_t<P>>)
                transpose<T>(rows, columns, copy->data(), rows, caller, ld);
        });
    }
    // The caller's pointer is one to his integers, whatever its type says.
    template <class P>
    bool takeIntegers(const MatrixOperand<P>& o) {
        const auto copy = std::make_shared<std::vector<int>>(std::size_t(o.rows) * o.columns);
        using Element = std::remove_pointer_t<P>;
        using Its = std::conditional_t<std::is_const_v<Element>, const Integer, Integer>;
        auto* const caller = reinterpret_cast<Its*>(o.pointer);
        o.pointer = copy->data();
        if (o.access == Access::in || o.access == Access::inOut)
            for (std::size_t i = 0; i < copy->size(); ++i) {
                (*copy)[i] = int(caller[i]);
                if ((*copy)[i] != caller[i]) return false;
            }
        keep(o, [copy, caller] {
            if constexpr (!std::is_const_v<Its>) std::copy(copy->begin(), copy->end(), caller);
        });
        return true;
    }
    // For as long as this lives.
    template <class P, class F>
    void keep(const MatrixOperand<P>& o, F giveBack) {
        if (o.access == Access::out || o.access == Access::inOut)
            results_.push_back(giveBack);
        else
            kept_.push_back(giveBack);
    }

    bool byRows_;
    std::size_t taken_ = 0;
    std::vector<int> lds_;  // the caller's
    std::vector<std::function<void()>> results_, kept_;
};

}  // namespace lumo::dropin
