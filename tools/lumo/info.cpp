// `lumo info`: what Lumo runs on here, and why.
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>

#include "commands.h"
#include "platform/cuda3.h"
#include "session.h"

namespace lumo {
namespace {

constexpr double mebibyte = 1 << 20;

const platform::Table& table() {
    return *platform::lumo_private_platform(nullptr)->table;
}

std::string versionText(int (*query)(int*)) {
    int version = 0;
    if (const cudaError_t error = query(&version)) return table().getErrorString(error);
    if (version == 0) return "none";
    return std::to_string(version / 1000) + "." + std::to_string(version % 1000 / 10);
}

void printDevice(int device) {
    cudaDeviceProp p;
    if (const cudaError_t error = table().getDeviceProperties(&p, device)) {
        std::printf("device %d:       %s\n", device, table().getErrorString(error));
        return;
    }
    std::printf("device %d:       %s\n", device, deviceText(device).c_str());
    std::printf("  capability    %d.%d\n", p.major, p.minor);
    std::printf("  memory        %.0f MiB\n", double(p.totalGlobalMem) / mebibyte);
    std::printf("  processors    %d, %.0f MHz\n", p.multiProcessorCount, p.clockRate / 1000.0);
}

// What only the device in use tells.
void printDeviceInUse() {
    const Session session;
    int device = 0;
    std::size_t free = 0, total = 0;
    lumoGetExecutingDevice(&device);
    const cudaError_t error = table().memGetInfo(&free, &total);
    std::printf("in use:         device %d, ", device);
    if (error)
        std::printf("%s\n", table().getErrorString(error));
    else
        std::printf("%.0f MiB of %.0f MiB free\n", double(free) / mebibyte,
                    double(total) / mebibyte);
}

void printCpuLapack() {
    Dl_info provider;
    void* routine = dlsym(RTLD_DEFAULT, "sgetrf_");
    if (routine && dladdr(routine, &provider) && provider.dli_fname) {
        std::error_code failed;
        const auto file = std::filesystem::canonical(provider.dli_fname, failed);
        std::printf("CPU LAPACK:     %s\n", failed ? provider.dli_fname : file.c_str());
    } else {
        std::printf("CPU LAPACK:     linked statically\n");
    }
    using Configuration = char*();
    if (auto* of = reinterpret_cast<Configuration*>(dlsym(RTLD_DEFAULT, "openblas_get_config")))
        std::printf("                %s\n", of());
}

}  // namespace

void showInfo() {
    const platform::Choice& choice = *platform::lumo_private_platform(nullptr);
    std::printf("Lumo:           %s\n", LUMO_VERSION);
    std::printf("platform:       %s (%s)\n", choice.table->name, choice.reason);
    std::printf("CUDA runtime:   %s\n", versionText(table().runtimeGetVersion).c_str());
    std::printf("CUDA driver:    %s\n", versionText(table().driverGetVersion).c_str());
    printCpuLapack();

    int devices = 0;
    if (const lumoStatus status = lumoGetDeviceCount(&devices))
        throw std::runtime_error(describe(status, lumoGetThreadErrorInfo()));
    if (devices == 0) std::printf("devices:        none\n");
    for (int device = 0; device < devices; ++device) printDevice(device);
    printDeviceInUse();
}

}  // namespace lumo
