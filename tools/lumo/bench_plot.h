// A picture of what `lumo bench` measured.
#pragma once

#include <string>
#include <vector>

#include "output_file.h"
#include "speed_curve.h"

namespace lumo {

// A panel for each routine, both axes logarithmic, the crossover marked.
void plotSpeeds(OutputFile& file, const std::string& title, const std::vector<SpeedCurve>& curves);

}  // namespace lumo
