// The LAPACK exports against the CPU LAPACK: whole calls of the host interface, on the same data,
// in turn in one run. Columns: `Time` is Lumo's, `cpu` the CPU LAPACK's median, `ratio` Lumo's
// median over it.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_lapack [--benchmark_filter=...]
// The device interface, on a matrix in device memory, is compared with the CUDA toolkit's solver
// where there is one (`cusolver`), else with the CPU LAPACK on the same matrix in host memory.
#include "contest.h"
#include "lumo_memory.h"
#include "vendor_solver.h"

extern "C" {
void sgetrf_(const int*, const int*, float*, const int*, int*, int*);
void cgetrf_(const int*, const int*, std::complex<float>*, const int*, int*, int*);
void sgesv_(const int*, const int*, float*, const int*, int*, float*, const int*, int*);
void cgesv_(const int*, const int*, std::complex<float>*, const int*, int*, std::complex<float>*,
            const int*, int*);
}

namespace {

lumoFloatComplex* exported(std::complex<float>* p) {
    return reinterpret_cast<lumoFloatComplex*>(p);
}

// The data of one solve, restored before every call.
template <class T>
struct System {
    int n;
    std::vector<T> a0, b0, a, b;
    std::vector<int> ipiv;

    explicit System(int order)
        : n(order),
          a0(bench::randomElements<T>(std::size_t(n) * n)),
          b0(bench::randomElements<T>(n)),
          a(a0),
          b(b0),
          ipiv(n) {}
    void restore() {
        a = a0;
        b = b0;
    }
};

// The same matrix in device memory, for a factorisation there.
template <class T>
struct DeviceMatrix : System<T> {
    void* device = nullptr;

    explicit DeviceMatrix(int order) : System<T>(order) {
        if (lumoDeviceMalloc(&device, this->a0.size() * sizeof(T)) != lumoNoError)
            throw std::bad_alloc();
        if (const auto* vendor = bench::VendorSolver::get())
            if (!vendor->prepare(order, onDevice())) throw std::bad_alloc();
    }
    ~DeviceMatrix() { lumoDeviceFree(device); }
    DeviceMatrix(const DeviceMatrix&) = delete;
    DeviceMatrix& operator=(const DeviceMatrix&) = delete;

    T* onDevice() const { return static_cast<T*>(device); }
    void restore() {
        System<T>::restore();
        const int n = this->n;
        lumoDeviceSetMatrix(n, n, sizeof(T), this->a0.data(), n, device, n);
    }
};

int cpuGetrf(System<float>& s) {
    int info = 0;
    sgetrf_(&s.n, &s.n, s.a.data(), &s.n, s.ipiv.data(), &info);
    return info;
}
int cpuGetrf(System<std::complex<float>>& s) {
    int info = 0;
    cgetrf_(&s.n, &s.n, s.a.data(), &s.n, s.ipiv.data(), &info);
    return info;
}

template <class T, class Getrf>
void addDeviceGetrf(const char* name, Getrf getrf, const bench::Rounds& rounds) {
    using Data = DeviceMatrix<T>;
    auto lumo = [getrf](Data& d) { return getrf(d); };
    if (const auto* vendor = bench::VendorSolver::get())
        bench::add<Data>(
            {name, lumo, [vendor](Data& d) { return vendor->getrf(d.n, d.onDevice()); },
             "cusolver"},
            rounds);
    else
        bench::add<Data>({name, lumo, [](Data& d) { return cpuGetrf(d); }}, rounds);
}

const bench::Rounds rounds{{512, 41}, {1024, 21}, {2048, 11}, {4096, 7}};
const int one = 1;

}  // namespace

int main(int argc, char** argv) {
    bench::Rounds manyRounds = rounds;
    if (bench::VendorSolver::get()) manyRounds.push_back({16384, 3});  // too long for most CPUs
    using Real = System<float>;
    using Complex = System<std::complex<float>>;
    bench::add<Real>(
        {"lumoSgetrf",
         [](Real& s) { return int(lumoSgetrf(s.n, s.n, s.a.data(), s.n, s.ipiv.data())); },
         [](Real& s) { return cpuGetrf(s); }},
        manyRounds);
    bench::add<Real>(
        {"lumoSgesv",
         [](Real& s) {
             return int(lumoSgesv(s.n, 1, s.a.data(), s.n, s.ipiv.data(), s.b.data(), s.n));
         },
         [](Real& s) {
             int info = 0;
             sgesv_(&s.n, &one, s.a.data(), &s.n, s.ipiv.data(), s.b.data(), &s.n, &info);
             return info;
         }},
        manyRounds);
    bench::add<Complex>({"lumoCgesv",
                         [](Complex& s) {
                             return int(lumoCgesv(s.n, 1, exported(s.a.data()), s.n, s.ipiv.data(),
                                                  exported(s.b.data()), s.n));
                         },
                         [](Complex& s) {
                             int info = 0;
                             cgesv_(&s.n, &one, s.a.data(), &s.n, s.ipiv.data(), s.b.data(), &s.n,
                                    &info);
                             return info;
                         }},
                        manyRounds);
    addDeviceGetrf<float>(
        "lumoDeviceSgetrf",
        [](auto& d) { return int(lumoDeviceSgetrf(d.n, d.n, d.onDevice(), d.n, d.ipiv.data())); },
        manyRounds);
    addDeviceGetrf<std::complex<float>>(
        "lumoDeviceCgetrf",
        [](auto& d) {
            return int(lumoDeviceCgetrf(d.n, d.n, exported(d.onDevice()), d.n, d.ipiv.data()));
        },
        manyRounds);
    return bench::runAll(argc, argv);
}
