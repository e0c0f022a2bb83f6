#include <stdexcept>
#include "commands.h"
namespace lumo {
void calibrate(const CalibrateOptions&) {
    throw std::runtime_error("not yet");
}
}  // namespace lumo
