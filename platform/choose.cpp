// Which platform runs: decided once per process, at its first CUDA call.
//
//   LUMO_PLATFORM=software|cuda  forces one;
//   LUMO_CUDA_PLUGIN=FILE        is loaded in place of liblumo-cuda.so beside this library;
//   LUMO_PANELS=cpu|device       factorises panels there, not where tuning has them;
//   LUMO_PROFILE=1               reports at exit where the time went.
//
// A machine without a driver, a device or the plugin runs on the software device. A driver that
// is there but too old, or a plugin that does not load, is reported to the caller as CUDA would
// report it and never hidden behind the CPU.
#include <dlfcn.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/cuda3.h"
#include "platform/host_lapack.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/software/table.h"
#include "platform/unavailable.h"

namespace platform {
namespace {

struct Decision {
    const Table* table;
    std::string reason;
    bool available = true;
    Panels panels = Panels::asTuned;
};

Decision unavailable(std::string reason) {
    return {&unavailableTable(), std::move(reason), false};
}

// Cheap to ask (0.1 ms), where loading CUBLAS takes up to 0.6 s.
bool driverPresent() {
    void* driver = dlopen("libcuda.so.1", RTLD_LAZY | RTLD_LOCAL);
    if (driver) dlclose(driver);
    return driver != nullptr;
}

// Beside this library; or, for a program that has the library built in, where the program's
// libraries are installed.
std::filesystem::path pluginPath() {
    // What a program with raised rights loads is not its caller's to say.
    if (const char* file = secure_getenv("LUMO_CUDA_PLUGIN")) return file;
    std::filesystem::path name = "liblumo-cuda.so";
    Dl_info self;
    if (!dladdr(reinterpret_cast<const void*>(&pluginPath), &self) || !self.dli_fname) return name;
    const std::filesystem::path here = std::filesystem::path(self.dli_fname).parent_path();
    const std::filesystem::path elsewhere = here / LUMO_BIN_TO_LIB / name;
    std::error_code ignored;
    return std::filesystem::exists(elsewhere, ignored) ? elsewhere : here / name;
}

// Loads the plugin for good: unloading it would pull code from under exit handlers.
const Table* loadPlugin(const std::filesystem::path& path, std::string& error) {
    void* plugin = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!plugin) {
        error = dlerror();
        return nullptr;
    }
    auto tableOf = reinterpret_cast<TableFunction>(dlsym(plugin, "lumoPlatformTable"));
    const Table* table = tableOf ? tableOf(tableVersion) : nullptr;
    if (!table || table->version != tableVersion) {
        error = path.string() + " was built for another version of this library";
        return nullptr;
    }
    return table;
}

// Of the lumo command (lumo_private_platform).
std::atomic<const Table*> given{nullptr};

Decision decide() {
    if (const Table* own = given) return {own, "the program's own"};
    const char* word = std::getenv("LUMO_PLATFORM");
    const std::string wish = word ? word : "";
    if (wish == "software") return {&software::table(), "LUMO_PLATFORM=software"};
    const bool forced = wish == "cuda";
    if (!wish.empty() && !forced)
        return unavailable("LUMO_PLATFORM=" + wish + " names no platform (software, cuda)");

    if (!driverPresent()) {
        if (forced) return unavailable("LUMO_PLATFORM=cuda, but there is no NVIDIA driver");
        return {&software::table(), "no NVIDIA driver"};
    }
    const std::filesystem::path path = pluginPath();
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        const std::string missing = "the CUDA plugin is not installed (" + path.string() + ")";
        if (forced) return unavailable("LUMO_PLATFORM=cuda, but " + missing);
        return {&software::table(), missing};
    }
    std::string error;
    const Table* cuda = loadPlugin(path, error);
    if (!cuda) return unavailable("the CUDA plugin does not load: " + error);
    if (forced) return {cuda, "LUMO_PLATFORM=cuda"};

    int devices = 0;
    const int status = cuda->getDeviceCount(&devices);
    if (status != cudaSuccess) cuda->getLastError();
    if (status == cudaErrorNoDevice || (status == cudaSuccess && devices == 0))
        return {&software::table(), "an NVIDIA driver, but no device"};
    if (status != cudaSuccess)
        return {cuda, "an NVIDIA driver that fails: " + std::string(cuda->getErrorString(status))};
    return {cuda, "an NVIDIA driver and a device"};
}

void decidePanels(Decision& decision) {
    const char* word = std::getenv("LUMO_PANELS");
    const std::string wish = word ? word : "";
    if (wish == "cpu")
        decision.panels = Panels::ofCpu;
    else if (wish == "device")
        decision.panels = Panels::ofDevice;
    else if (!wish.empty())
        decision = unavailable("LUMO_PANELS=" + wish + " names no panels (cpu, device)");
}

const Kernel* kernelWith(const char* partOfName) {
    for (const Kernel* kernel : registeredKernels())
        if (std::strstr(kernel->name, partOfName)) return kernel;
    return nullptr;
}

}  // namespace

const Choice& choice() {
    static const auto* decision = [] {
        auto* made = new Decision(decide());
        decidePanels(*made);
        auto* complete = new Table(*made->table);
        fillOptional(*complete, PanelThreads::ofLibrary);
        made->table = complete;
        const char* profile = std::getenv("LUMO_PROFILE");
        if (profile && *profile && *profile != '0') made->table = &profiled(*made->table);
        return made;
    }();
    static const Choice chosen{decision->table, decision->reason.c_str(), decision->available,
                               kernelWith, decision->panels};
    return chosen;
}

const Choice* lumo_private_platform(const Table* own) {
    if (own) given = own;
    return &choice();
}

}  // namespace platform
