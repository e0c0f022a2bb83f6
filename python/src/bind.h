// The parts of the module.
#pragma once

#include <pybind11/pybind11.h>

namespace lumo::python {

void bindBlas(pybind11::module_& module);
void bindLapack(pybind11::module_& module);

// Functions take operands that were prepared under the interpreter's lock, and work without it.
using Unlocked = pybind11::call_guard<pybind11::gil_scoped_release>;

}  // namespace lumo::python
