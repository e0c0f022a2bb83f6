// lumo._core: Lumo's functions on NumPy arrays, for the Python layer. It checks types and storage,
// not shapes.
#include <dlfcn.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <string>
#include <vector>

#include "bind.h"
#include "call.h"

using namespace lumo::python;

namespace {

std::string describe(int device) {
    char text[300];
    check(lumoGetDeviceInfo(device, text, sizeof text));
    return text;
}

std::vector<std::string> devices() {
    int count = 0;
    check(lumoGetDeviceCount(&count));
    std::vector<std::string> all;
    all.reserve(std::size_t(count));
    for (int device = 0; device < count; ++device) all.push_back(describe(device));
    return all;
}

int executingDevice() {
    registerThread();
    int device = 0;
    check(lumoGetExecutingDevice(&device));
    return device;
}

// The file that a function of the process comes from.
std::string fileOf(const void* function) {
    Dl_info provider;
    return function && dladdr(function, &provider) && provider.dli_fname ? provider.dli_fname : "";
}

}  // namespace

PYBIND11_MODULE(_core, m) {
    // pybind11 looks NumPy up behind a static's lock, by an import that lets other threads run. One
    // that came to that lock would wait with the interpreter's in hand, so that nobody went on.
    pybind11::detail::npy_api::get();
    m.attr("__version__") = LUMO_VERSION;
    m.attr("loaded_from") = fileOf(reinterpret_cast<const void*>(&lumoInitialize));
    m.def("devices", &devices, Unlocked());
    m.def("executing_device", &executingDevice, Unlocked());
    m.def(
        "select_device", [](int device) { check(lumoSelectDevice(device)); }, Unlocked());
    bindBlas(m);
    bindLapack(m);
}
