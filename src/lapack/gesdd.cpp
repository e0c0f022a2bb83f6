#include "lapack/gesdd.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "basic/Transpose/Transpose.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/bdsdc.h"
#include "lapack/bdsqr_scalars.h"
#include "lapack/gesvd.h"
#include "lapack/host_lapack.h"
#include "lapack/long_bidiagonal.h"
#include "lapack/norm_scaling.h"
#include "lapack/tuning.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// Of a matrix that is no wider than long, A = L S R^H: the n values to the host, R (n x n), and the
// first columns of L, n or m of them. A is destroyed.
template <class T>
void decompose(int m, int n, T* a, int lda, RealOf<T>* values, T* left, int ldl, int columns,
               T* right, int ldr) {
    using Numbers = cudalib::Workspace<RealOf<T>>;
    std::vector<RealOf<T>> e;
    const LongBidiagonal<T> bidiagonal(m, n, a, lda, values, e);
    const Numbers u(std::size_t(n) * std::size_t(n)), v(std::size_t(n) * std::size_t(n));
    bdsdc(n, values, e.data(), u.data(), n, v.data(), n);
    LASET('A', m, columns, T(0), T(1), left, ldl);
    bidiagonal.place(u.data(), left, ldl);
    bidiagonal.place(v.data(), right, ldr);
    bidiagonal.applyQ('N', columns, left, ldl);
    bidiagonal.applyP('N', n, right, ldr);
}

template <class T>
class SingularVectors {
    using R = RealOf<T>;

  public:
    explicit SingularVectors(const Gesdd<T>& r) : r_(r), values_(std::size_t(count())) {}

    void run() {
        const R norm = largestElement(r_.m, r_.n, r_.a, r_.lda);
        const R scale = scaleFor(norm, std::sqrt(safeMinimum<R>) / (2 * roundingUnit<R>));
        multiplyMatrix(scale, r_.m, r_.n, r_.a, r_.lda);
        try {
            if (!std::isfinite(norm)) refuse();
            if (r_.jobz == 'N')
                findValues();
            else if (r_.m >= r_.n)
                decomposeLong();
            else
                decomposeWide();
        } catch (const InfoException& e) {
            if (e.info() < 1) throw;
            failure_ = e;
            clear();
        }
        if (scale != 1)
            for (R& x : values_) x /= scale;
        cudalib::checkCudaError(
            cudaMemcpy(r_.s, values_.data(), values_.size() * sizeof(R), cudaMemcpyHostToDevice));
        if (failure_) throw *failure_;
    }

  private:
    int count() const { return std::min(r_.m, r_.n); }
    bool overwrites() const { return r_.jobz == 'O'; }

    [[noreturn]] void refuse() {
        std::fill(values_.begin(), values_.end(), std::numeric_limits<R>::quiet_NaN());
        throwDataError(count());
    }
    // Of memory that nobody has written to, nothing comes out.
    void clear() const {
        LASET('A', r_.m, r_.columnsOfU(), T(0), T(0), r_.u, r_.ldu);
        LASET('A', r_.rowsOfVt(), r_.n, T(0), T(0), r_.vt, r_.ldvt);
    }

    void findValues() {
        const auto fetch = [&] {
            cudalib::checkCudaError(cudaMemcpy(values_.data(), r_.s, values_.size() * sizeof(R),
                                               cudaMemcpyDeviceToHost));
        };
        try {
            Gesvd<T>{'N', 'N', r_.m, r_.n, r_.a, r_.lda, r_.s, nullptr, 1, nullptr, 1}.run();
        } catch (const InfoException&) {
            fetch();
            throw;
        }
        fetch();
    }

    void decomposeLong() {
        const int m = r_.m, n = r_.n, columns = overwrites() ? n : r_.columnsOfU();
        const cudalib::Workspace<T> right(std::size_t(n) * std::size_t(n)),
            left(overwrites() ? std::size_t(m) * std::size_t(n) : 0);
        T* const u = overwrites() ? left.data() : r_.u;
        const int ldu = overwrites() ? m : r_.ldu;
        decompose(m, n, r_.a, r_.lda, values_.data(), u, ldu, columns, right.data(), n);
        transpose(r_.vt, std::size_t(r_.ldvt), right.data(), std::size_t(n), std::size_t(n),
                  std::size_t(n), isComplex<T>);
        if (overwrites()) LACPY('A', m, n, u, ldu, r_.a, r_.lda);
    }

    // A^H = V S U^H.
    void decomposeWide() {
        const int m = r_.m, n = r_.n, columns = overwrites() ? m : r_.rowsOfVt();
        const cudalib::Workspace<T> mirrored(std::size_t(n) * std::size_t(m)),
            left(std::size_t(n) * std::size_t(columns));
        transpose(mirrored.data(), std::size_t(n), r_.a, std::size_t(r_.lda), std::size_t(m),
                  std::size_t(n), isComplex<T>);
        decompose(n, m, mirrored.data(), n, values_.data(), left.data(), n, columns, r_.u, r_.ldu);
        T* const vt = overwrites() ? r_.a : r_.vt;
        const int ldvt = overwrites() ? r_.lda : r_.ldvt;
        transpose(vt, std::size_t(ldvt), left.data(), std::size_t(n), std::size_t(n),
                  std::size_t(columns), isComplex<T>);
    }

    const Gesdd<T>& r_;
    std::vector<R> values_;
    std::optional<InfoException> failure_;
};

}  // namespace

template <class T>
void Gesdd<T>::run() const {
    SingularVectors<T>(*this).run();
}

template <class T>
bool Gesdd<T>::isSmall() const {
    const int most = jobz == 'N' ? smallSingularValues<T>() : smallDividedSvd<T>();
    return std::max(m, n) <= most && host::isFinite(m, n, a, lda);
}
template <class T>
lumoStatus Gesdd<T>::runOnCpu() const {
    host::gesdd(jobz, m, n, a, lda, s, u, ldu, columnsOfU(), vt, ldvt, rowsOfVt());
    return lumoNoError;
}

LUMO_INSTANTIATE_MEMBERS(Gesdd)
LUMO_EXPORT_S_D_C_Z(gesdd, Gesdd)

}  // namespace lumo
