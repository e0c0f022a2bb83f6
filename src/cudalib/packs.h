// Products of columns' elements in sequence: of as many at a time as a CPU has in a vector, written
// as vectors, for a compiler's code of loops took up to a third longer; of one on a GPU, where the
// next ones are other lanes'. A kernel that has packs is a template on their bytes, usualPack, and
// is registered with its widePack one as what CPUs with AVX-512 run. What is left at a column's end
// it takes in halves of a pack, down to smallestPack.
#pragma once

#include <cstring>

#include "common/complex.h"
#include "cudalib/block.h"

namespace cudalib {

constexpr int usualPack = 32, smallestPack = 16;  // bytes

#ifdef __CUDACC__

// A loop that would take more registers unrolled than are left for other blocks.
#define LUMO_ROLLED _Pragma("unroll 1")

constexpr int widePack = usualPack;

// The elements of a pack.
template <class T, int bytes>
constexpr int packed = 1;

// The sum of conjugate(a) x over packs of two columns.
template <class T, int bytes>
class DotProduct {
  public:
    LUMO_DEVICE void add(const T* a, const T* x) { sum_ = sum_ + lumo::conjugate(*a) * *x; }
    LUMO_DEVICE T total() const { return sum_; }

  private:
    T sum_ = T(0);
};

// f a + g b + ... for a pack of each of the columns a, b, ...
template <class T, int bytes>
class Combination {
  public:
    LUMO_DEVICE void add(const T* a, T factor) { sum_ = sum_ + *a * factor; }
    LUMO_DEVICE void store(T* y) const { *y = sum_; }
    LUMO_DEVICE void addTo(T* y) const { *y = *y + sum_; }

  private:
    T sum_ = T(0);
};

#else

#define LUMO_ROLLED

constexpr int widePack = 64;

template <class T, int bytes>
constexpr int packed = bytes / int(sizeof(T));

// Real numbers that lie anywhere, as a vector: in a structure, for not every compiler heeds an
// alignment that is given to a vector's type.
template <class R, int bytes>
struct Reals {
    static constexpr int count = packed<R, bytes>;
    using Vector __attribute__((vector_size(bytes))) = R;
    struct __attribute__((packed, may_alias)) Anywhere {
        Vector all;
    };

    LUMO_DEVICE static const Anywhere& of(const void* p) {
        return *static_cast<const Anywhere*>(p);
    }
    LUMO_DEVICE static Anywhere& of(void* p) { return *static_cast<Anywhere*>(p); }
    LUMO_DEVICE static void addHalves(const void* wider, Vector& result) {
        Vector halves[2];
        std::memcpy(halves, wider, sizeof halves);
        result = halves[0] + halves[1];
    }
    // The first and the second of each pair exchanged.
    LUMO_DEVICE static void exchange(const Vector& x, Vector& result) {
        if constexpr (count == 16)
            result = Vector{x[1], x[0], x[3],  x[2],  x[5],  x[4],  x[7],  x[6],
                            x[9], x[8], x[11], x[10], x[13], x[12], x[15], x[14]};
        else if constexpr (count == 8)
            result = Vector{x[1], x[0], x[3], x[2], x[5], x[4], x[7], x[6]};
        else if constexpr (count == 4)
            result = Vector{x[1], x[0], x[3], x[2]};
        else
            result = Vector{x[1], x[0]};
    }
};

template <class T, int bytes>
class DotProduct {
    using R = Reals<T, bytes>;

  public:
    DotProduct() = default;
    LUMO_DEVICE explicit DotProduct(const DotProduct<T, 2 * bytes>& wider) {
        R::addHalves(&wider.sum_, sum_);
    }
    LUMO_DEVICE void add(const T* a, const T* x) { sum_ += R::of(a).all * R::of(x).all; }
    LUMO_DEVICE T total() const {
        T sum = sum_[0];
        for (int i = 1; i < R::count; ++i) sum += sum_[i];
        return sum;
    }

  private:
    template <class, int>
    friend class DotProduct;

    typename R::Vector sum_ = {};
};

template <class T, int bytes>
class Combination {
    using R = Reals<T, bytes>;

  public:
    LUMO_DEVICE void add(const T* a, T factor) { sum_ += R::of(a).all * factor; }
    LUMO_DEVICE void store(T* y) const { R::of(y).all = sum_; }
    LUMO_DEVICE void addTo(T* y) const { R::of(y).all += sum_; }

  private:
    typename R::Vector sum_ = {};
};

// A complex number is a pair of reals: products of like parts, and of unlike ones.
template <class T, int bytes>
class DotProduct<lumo::Complex<T>, bytes> {
    using C = lumo::Complex<T>;
    using R = Reals<T, bytes>;

  public:
    DotProduct() = default;
    LUMO_DEVICE explicit DotProduct(const DotProduct<C, 2 * bytes>& wider) {
        R::addHalves(&wider.like_, like_);
        R::addHalves(&wider.unlike_, unlike_);
    }
    LUMO_DEVICE void add(const C* a, const C* x) {
        const typename R::Vector elements = R::of(a).all, others = R::of(x).all;
        typename R::Vector exchanged;
        R::exchange(others, exchanged);
        like_ += elements * others;
        unlike_ += elements * exchanged;
    }
    LUMO_DEVICE C total() const {
        C sum(T(0));
        for (int i = 0; i < R::count; i += 2) {
            sum.re += like_[i] + like_[i + 1];
            sum.im += unlike_[i] - unlike_[i + 1];
        }
        return sum;
    }

  private:
    template <class, int>
    friend class DotProduct;

    typename R::Vector like_ = {}, unlike_ = {};
};

template <class T, int bytes>
class Combination<lumo::Complex<T>, bytes> {
    using C = lumo::Complex<T>;
    using R = Reals<T, bytes>;

  public:
    LUMO_DEVICE void add(const C* a, C factor) {
        byReal_ += R::of(a).all * factor.re;
        byImaginary_ += R::of(a).all * factor.im;
    }
    LUMO_DEVICE void store(C* y) const {
        typename R::Vector result;
        sum(result);
        R::of(y).all = result;
    }
    LUMO_DEVICE void addTo(C* y) const {
        typename R::Vector added;
        sum(added);
        R::of(y).all += added;
    }

  private:
    // i (a + b i) = -b + a i
    LUMO_DEVICE void sum(typename R::Vector& result) const {
        typename R::Vector turned, signs;
        R::exchange(byImaginary_, turned);
        for (int i = 0; i < R::count; ++i) signs[i] = i % 2 ? T(1) : T(-1);
        result = byReal_ + signs * turned;
    }

    typename R::Vector byReal_ = {}, byImaginary_ = {};
};

#endif

}  // namespace cudalib
