// A picture of what `lumo bench` measured.
#pragma once

#include <string>
#include <vector>

#include "speed_curve.h"

namespace lumo {

// An SVG image: a panel for each routine, both axes logarithmic, the crossover marked.
std::string plotSpeeds(const std::string& title, const std::vector<SpeedCurve>& curves);

}  // namespace lumo
