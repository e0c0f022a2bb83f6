// The report at exit, which LUMO_REPORT asks for.
#pragma once

namespace lumo::dropin {

bool reporting();

}  // namespace lumo::dropin
