// A picture of what `lumo bench` measured, or `lumo predict` found.
#pragma once

#include <string>
#include <vector>

#include "output_file.h"
#include "speed_curve.h"

namespace lumo {

// A panel for each routine, both axes logarithmic, the crossover marked. `ours` is what Lumo's
// curve is called.
void plotSpeeds(OutputFile& file, const std::string& title, const std::vector<SpeedCurve>& curves,
                const std::string& ours = "Lumo");

}  // namespace lumo
