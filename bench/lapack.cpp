// The LAPACK exports against the CPU LAPACK: whole calls of the host interface, on the same data,
// in turn in one run. Columns: `Time` is Lumo's, `cpu` the CPU LAPACK's median, `ratio` Lumo's
// median over it.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_lapack [--benchmark_filter=...]
// The device interface, on a matrix in device memory, is compared with the CUDA toolkit's solver
// where there is one (`cusolver`), else with the CPU LAPACK on the same matrix in host memory.
#include <complex>

#include "contest.h"
#include "lumo_memory.h"
#include "vendor_solver.h"

namespace {

// A factorisation in device memory, and the same matrix in host memory for the CPU library.
template <class T, class Exported>
class DeviceGetrf : public lumo::Problem {
  public:
    using Function = lumoStatus (*)(int, int, Exported*, int, int*);

    DeviceGetrf(int n, Function lumo)
        : n_(n),
          original_(bench::randomElements<T>(std::size_t(n) * std::size_t(n))),
          a_(original_),
          pivots_(std::size_t(n)),
          lumo_(lumo) {
        if (lumoDeviceMalloc(&device_, a_.size() * sizeof(T)) != lumoNoError)
            throw std::bad_alloc();
        if (const auto* vendor = bench::VendorSolver::get())
            if (!vendor->prepare(n, static_cast<T*>(device_))) throw std::bad_alloc();
    }
    ~DeviceGetrf() override { lumoDeviceFree(device_); }

    void restore() override {
        a_ = original_;
        lumoDeviceSetMatrix(n_, n_, sizeof(T), original_.data(), n_, device_, n_);
    }
    int lumo() override {
        return int(lumo_(n_, n_, static_cast<Exported*>(device_), n_, pivots_.data()));
    }
    int by(void* getrf) override {
        int info = 0;
        using Getrf = void (*)(const int*, const int*, T*, const int*, int*, int*);
        reinterpret_cast<Getrf>(getrf)(&n_, &n_, a_.data(), &n_, pivots_.data(), &info);
        return info;
    }
    int byVendor() { return bench::VendorSolver::get()->getrf(n_, static_cast<T*>(device_)); }

  private:
    const int n_;
    const std::vector<T> original_;
    std::vector<T> a_;
    std::vector<int> pivots_;
    const Function lumo_;
    void* device_ = nullptr;
};

template <class T, class Exported>
void addDeviceGetrf(const std::string& name,
                    lumoStatus (*lumoGetrf)(int, int, Exported*, int, int*),
                    const std::string& cpuName, const bench::Rounds& rounds) {
    using Data = DeviceGetrf<T, Exported>;
    const bool vendor = bench::VendorSolver::get() != nullptr;
    void* const cpu = lumo::cpuRoutine(cpuName);
    for (auto [n, repetitions] : rounds)
        bench::add({name + "/" + std::to_string(n),
                    [=, n = n] { return std::make_unique<Data>(n, lumoGetrf); },
                    [=](lumo::Problem& p) {
                        return vendor ? static_cast<Data&>(p).byVendor() : p.by(cpu);
                    },
                    vendor ? "cusolver" : "cpu"},
                   repetitions);
}

}  // namespace

int main(int argc, char** argv) {
    bench::Rounds rounds{{512, 41}, {1024, 21}, {2048, 11}, {4096, 7}};
    if (bench::VendorSolver::get()) rounds.push_back({16384, 3});  // too long for most CPUs
    for (const char* name : {"sgetrf", "dgetrf", "spotrf", "dpotrf", "cpotrf", "zpotrf"})
        bench::add(name, rounds);
    for (const char* name : {"sgesv", "dgesv", "cgesv", "zgesv", "dposv"})
        bench::add(name, rounds, 1);
    addDeviceGetrf<float>("lumoDeviceSgetrf", lumoDeviceSgetrf, "sgetrf", rounds);
    addDeviceGetrf<std::complex<float>>("lumoDeviceCgetrf", lumoDeviceCgetrf, "cgetrf", rounds);
    return bench::runAll(argc, argv);
}
