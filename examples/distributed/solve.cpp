// Dense systems and a least-squares problem on many machines, by ScaLAPACK over MPI. The program
// knows nothing of Lumo: run under the drop-in library, each rank's local products and panels are
// Lumo's (see docs/distributed.md).
//
//     mpirun -n 4 solve [n [block]]
//
// Every rank makes its own part of the matrices, from the global indices, so that the problem is
// the same whatever the number of ranks. Exits with 1 if a residual is too large.
#define OMPI_SKIP_MPICXX 1  // the C interface is all that is used here
#define MPICH_SKIP_MPICXX 1
#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

extern "C" {
void Cblacs_pinfo(int* rank, int* ranks);
void Cblacs_get(int context, int what, int* value);
void Cblacs_gridinit(int* context, const char* order, int rows, int columns);
void Cblacs_gridinfo(int context, int* rows, int* columns, int* row, int* column);
void Cblacs_gridexit(int context);
void Cblacs_exit(int keepMpi);
int numroc_(const int* n, const int* block, const int* rank, const int* source, const int* ranks);
void descinit_(int* desc, const int* m, const int* n, const int* mb, const int* nb, const int* row,
               const int* column, const int* context, const int* ld, int* info);

void psgesv_(const int* n, const int* nrhs, void* a, const int* ia, const int* ja, const int* desca,
             int* ipiv, void* b, const int* ib, const int* jb, const int* descb, int* info);
decltype(psgesv_) pdgesv_, pcgesv_;
void pdposv_(const char* uplo, const int* n, const int* nrhs, double* a, const int* ia,
             const int* ja, const int* desca, double* b, const int* ib, const int* jb,
             const int* descb, int* info, std::size_t);
void psgels_(const char* trans, const int* m, const int* n, const int* nrhs, float* a,
             const int* ia, const int* ja, const int* desca, float* b, const int* ib, const int* jb,
             const int* descb, float* work, const int* lwork, int* info, std::size_t);
void psgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
             const void* alpha, const void* a, const int* ia, const int* ja, const int* desca,
             const void* b, const int* ib, const int* jb, const int* descb, const void* beta,
             void* c, const int* ic, const int* jc, const int* descc, std::size_t, std::size_t);
decltype(psgemm_) pdgemm_, pcgemm_;
float pslange_(const char* norm, const int* m, const int* n, const void* a, const int* ia,
               const int* ja, const int* desca, float* work, std::size_t);
decltype(pslange_) pclange_;
double pdlange_(const char* norm, const int* m, const int* n, const void* a, const int* ia,
                const int* ja, const int* desca, double* work, std::size_t);
}

namespace {

const int one = 1;
using Complex = std::complex<float>;

template <class T>
struct Routines;
template <>
struct Routines<float> {
    using Real = float;
    static constexpr auto* gesv = psgesv_;
    static constexpr auto* gemm = psgemm_;
    static constexpr auto* lange = pslange_;
};
template <>
struct Routines<double> {
    using Real = double;
    static constexpr auto* gesv = pdgesv_;
    static constexpr auto* gemm = pdgemm_;
    static constexpr auto* lange = pdlange_;
};
template <>
struct Routines<Complex> {
    using Real = float;
    static constexpr auto* gesv = pcgesv_;
    static constexpr auto* gemm = pcgemm_;
    static constexpr auto* lange = pclange_;
};

// The ranks as a grid, as square as their number allows.
struct Grid {
    int context = 0, rank = 0, ranks = 0, rows = 1, columns = 1, row = 0, column = 0;
    Grid() {
        Cblacs_pinfo(&rank, &ranks);
        for (int r = 1; r * r <= ranks; ++r)
            if (ranks % r == 0) rows = r;
        columns = ranks / rows;
        Cblacs_get(-1, 0, &context);
        Cblacs_gridinit(&context, "Row", rows, columns);
        Cblacs_gridinfo(context, &rows, &columns, &row, &column);
    }
};

// Uniform in [-1, 1) from the global indices (the finaliser of SplitMix64).
double uniform(std::uint64_t i, std::uint64_t j, std::uint64_t seed) {
    std::uint64_t z = seed + 0x9E3779B97F4A7C15u * (i * 1000003u + j + 1);
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
    z = (z ^ z >> 27) * 0x94D049BB133111EBu;
    return double(std::int64_t(z ^ z >> 31)) * 0x1p-63;
}

// What a matrix is made of.
template <class T>
struct Random {
    std::uint64_t seed;
    T operator()(std::uint64_t i, std::uint64_t j) const {
        if constexpr (std::is_same_v<T, Complex>)
            return {float(uniform(i, j, seed)), float(uniform(i, j, seed + 1))};
        else
            return T(uniform(i, j, seed));
    }
};
// Symmetric, and by its diagonal positive definite.
struct Definite {
    int n;
    double operator()(std::uint64_t i, std::uint64_t j) const {
        return uniform(std::min(i, j), std::max(i, j), 5) + (i == j ? n : 0);
    }
};

// The global index of a local one.
std::uint64_t global(int local, int block, int rank, int ranks) {
    const std::uint64_t blocksBefore =
        std::uint64_t(local / block) * unsigned(ranks) + unsigned(rank);
    return blocksBefore * unsigned(block) + unsigned(local % block);
}

// A block-cyclic matrix, this rank's part of it.
template <class T>
struct Distributed {
    int m, n, localRows, localColumns, desc[9];
    std::vector<T> local;

    template <class Elements>
    Distributed(const Grid& grid, int m_, int n_, int block, Elements elements) : m(m_), n(n_) {
        const int zero = 0;
        localRows = numroc_(&m, &block, &grid.row, &zero, &grid.rows);
        localColumns = numroc_(&n, &block, &grid.column, &zero, &grid.columns);
        const int ld = std::max(1, localRows);
        int info = 0;
        descinit_(desc, &m, &n, &block, &block, &zero, &zero, &grid.context, &ld, &info);
        local.resize(std::size_t(ld) * std::max(1, localColumns));
        for (int j = 0; j < localColumns; ++j)
            for (int i = 0; i < localRows; ++i)
                local[std::size_t(j) * ld + i] =
                    elements(global(i, block, grid.row, grid.rows),
                             global(j, block, grid.column, grid.columns));
    }
};

template <class T>
double norm1(const Distributed<T>& a) {
    std::vector<typename Routines<T>::Real> work(std::size_t(a.localColumns) + 1);
    return Routines<T>::lange("1", &a.m, &a.n, a.local.data(), &one, &one, a.desc, work.data(), 1);
}

// C := alpha op(A) B + beta C, with the rows and columns of B and C that count.
template <class T>
void multiply(const char* trans, T alpha, const Distributed<T>& a, const Distributed<T>& b, T beta,
              Distributed<T>& c) {
    const bool plain = *trans == 'N';
    const int m = plain ? a.m : a.n, k = plain ? a.n : a.m;
    Routines<T>::gemm(trans, "N", &m, &c.n, &k, &alpha, a.local.data(), &one, &one, a.desc,
                      b.local.data(), &one, &one, b.desc, &beta, c.local.data(), &one, &one, c.desc,
                      1, 1);
}

// Tells the outcome once; whether it is right.
bool tell(const Grid& grid, const char* what, int m, int n, int nrhs, double seconds, int info,
          double residual, double bound) {
    const bool right = info == 0 && residual < bound;
    if (grid.rank == 0)
        std::printf(
            "%s, %d x %d, %d right-hand sides: %.2f s on %d ranks (%d x %d), "
            "scaled residual %.3g%s\n",
            what, m, n, nrhs, seconds, grid.ranks, grid.rows, grid.columns, residual,
            right ? "" : "  TOO LARGE");
    return right;
}

template <class T>
double eps() {
    return std::numeric_limits<typename Routines<T>::Real>::epsilon() / 2;
}

// || A X - B || / (n || A || || X || eps) of what solver(a, b) makes of A and B; it returns its
// info.
template <class T, class Solver>
bool solve(const Grid& grid, const char* what, Distributed<T> a, int block, Solver solver) {
    const int n = a.n, nrhs = 8;
    Distributed<T> b(grid, n, nrhs, block, Random<T>{7});
    const Distributed<T> a0 = a;
    Distributed<T> r = b;
    MPI_Barrier(MPI_COMM_WORLD);
    const double start = MPI_Wtime();
    const int info = solver(a, b);
    const double seconds = MPI_Wtime() - start;
    multiply("N", T(1), a0, b, T(-1), r);
    return tell(grid, what, n, n, nrhs, seconds, info,
                norm1(r) / (n * norm1(a0) * norm1(b) * eps<T>()), 1);
}

template <class T>
bool solveGeneral(const Grid& grid, const char* what, int n, int block) {
    const Distributed<T> matrix(grid, n, n, block, Random<T>{1});
    return solve(grid, what, matrix, block, [&](Distributed<T>& a, Distributed<T>& b) {
        std::vector<int> ipiv(std::size_t(a.localRows + block));
        int info = 0;
        Routines<T>::gesv(&a.n, &b.n, a.local.data(), &one, &one, a.desc, ipiv.data(),
                          b.local.data(), &one, &one, b.desc, &info);
        return info;
    });
}

bool solveDefinite(const Grid& grid, int n, int block) {
    const Distributed<double> matrix(grid, n, n, block, Definite{n});
    return solve(grid, "pdposv", matrix, block, [](Distributed<double>& a, Distributed<double>& b) {
        int info = 0;
        pdposv_("L", &a.n, &b.n, a.local.data(), &one, &one, a.desc, b.local.data(), &one, &one,
                b.desc, &info, 1);
        return info;
    });
}

// || A^T (A X - B) || / (m || A || || B || eps): the residual is orthogonal to A's columns.
bool leastSquares(const Grid& grid, int m, int n, int block) {
    const int nrhs = 4;
    Distributed<float> a(grid, m, n, block, Random<float>{3}),
        b(grid, m, nrhs, block, Random<float>{9});
    const Distributed<float> a0 = a, b0 = b;
    Distributed<float> r = b, gradient(grid, n, nrhs, block, Random<float>{0});
    int info = 0, query = -1;
    float size = 0;
    psgels_("N", &m, &n, &nrhs, a.local.data(), &one, &one, a.desc, b.local.data(), &one, &one,
            b.desc, &size, &query, &info, 1);
    const int lwork = int(size);
    std::vector<float> work(std::size_t(std::max(1, lwork)));
    MPI_Barrier(MPI_COMM_WORLD);
    const double start = MPI_Wtime();
    psgels_("N", &m, &n, &nrhs, a.local.data(), &one, &one, a.desc, b.local.data(), &one, &one,
            b.desc, work.data(), &lwork, &info, 1);
    const double seconds = MPI_Wtime() - start;
    multiply("N", 1.f, a0, b, -1.f, r);
    multiply("T", 1.f, a0, r, 0.f, gradient);
    return tell(grid, "psgels", m, n, nrhs, seconds, info,
                norm1(gradient) / (m * norm1(a0) * norm1(b0) * eps<float>()), 1);
}

}  // namespace

int main(int argc, char** argv) {
    MPI_Init(&argc, &argv);
    const int n = argc > 1 ? std::atoi(argv[1]) : 1500, block = argc > 2 ? std::atoi(argv[2]) : 128;
    bool right = n > 0 && block > 0;
    if (right) {
        const Grid grid;
        right = solveGeneral<float>(grid, "psgesv", n, block);
        right = solveGeneral<double>(grid, "pdgesv", n, block) && right;
        right = solveGeneral<Complex>(grid, "pcgesv", n / 2 + 1, block) && right;
        right = solveDefinite(grid, n, block) && right;
        right = leastSquares(grid, 2 * n, n / 2 + 1, block) && right;
        Cblacs_gridexit(grid.context);
    } else {
        std::fprintf(stderr, "usage: %s [n [block]]\n", argv[0]);
    }
    MPI_Finalize();
    return right ? 0 : 1;
}
