#include "vendor_solver.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

#include "lumo.h"
#include "lumo_memory.h"

namespace bench {
namespace {

// The solver's C interface; pointers to elements pass as void*.
using Create = int(void**);
using BufferSize = int(void* handle, int m, int n, void* a, int lda, int* elements);
using Getrf = int(void* handle, int m, int n, void* a, int lda, void* workspace, int* ipiv,
                  int* info);

template <class F>
bool find(void* library, const char* name, F*& function) {
    function = reinterpret_cast<F*>(dlsym(library, name));
    return function != nullptr;
}

template <class T>
constexpr int kind = sizeof(T) == sizeof(float) ? 0 : 1;

}  // namespace

struct VendorSolver::Functions {
    BufferSize* bufferSize[2];
    Getrf* getrf[2];
};

const VendorSolver* VendorSolver::get() {
    static const VendorSolver* solver = []() -> VendorSolver* {
        const char* platform = std::getenv("LUMO_PLATFORM");
        if (platform && std::strcmp(platform, "software") == 0) return nullptr;
        void* library = nullptr;
        for (const char* name : {"libcusolver.so.12", "libcusolver.so.11", "libcusolver.so"})
            if (!library) library = dlopen(name, RTLD_NOW | RTLD_LOCAL);
        if (!library) return nullptr;
        auto made = std::unique_ptr<VendorSolver>(new VendorSolver);
        made->f_ = std::make_unique<Functions>();
        Functions& f = *made->f_;
        Create* create = nullptr;
        const bool complete = find(library, "cusolverDnCreate", create) &&
                              find(library, "cusolverDnSgetrf_bufferSize", f.bufferSize[0]) &&
                              find(library, "cusolverDnCgetrf_bufferSize", f.bufferSize[1]) &&
                              find(library, "cusolverDnSgetrf", f.getrf[0]) &&
                              find(library, "cusolverDnCgetrf", f.getrf[1]);
        if (!complete || create(&made->handle_) != 0) return nullptr;
        return made.release();
    }();
    return solver;
}

template <class T>
bool VendorSolver::prepare(int n, T* a) const {
    int elements = 0;
    if (f_->bufferSize[kind<T>](handle_, n, n, a, n, &elements) != 0) return false;
    lumoDeviceFree(workspace_);
    lumoDeviceFree(pivots_);
    return lumoDeviceMalloc(&workspace_, std::size_t(elements) * sizeof(T)) == lumoNoError &&
           lumoDeviceMalloc(&pivots_, (std::size_t(n) + 1) * sizeof(int)) == lumoNoError;
}

template <class T>
int VendorSolver::getrf(int n, T* a) const {
    int* ipiv = static_cast<int*>(pivots_);
    if (f_->getrf[kind<T>](handle_, n, n, a, n, workspace_, ipiv, ipiv + n) != 0) return 1;
    int info = -1;  // its blocking copy is the wait
    if (lumoDeviceGetMatrix(1, 1, sizeof(int), ipiv + n, 1, &info, 1) != lumoNoError) return 1;
    return info;
}

template bool VendorSolver::prepare(int, float*) const;
template bool VendorSolver::prepare(int, std::complex<float>*) const;
template int VendorSolver::getrf(int, float*) const;
template int VendorSolver::getrf(int, std::complex<float>*) const;

}  // namespace bench
