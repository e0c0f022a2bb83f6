// Predictions in words, in JSON and as a picture, each of which says that it is a prediction.
#pragma once

#include <string>
#include <vector>

#include "output_file.h"
#include "platform/timeline/machine.h"
#include "prediction.h"

namespace lumo {

struct PredictionTitle {
    std::string machine;  // as "NVIDIA H100 SXM (h100.ini)"
    bool device;
};

void printHeading(const PredictionTitle& title, bool cpu);
void print(const PredictedRoutine& routine);
std::string json(const PredictionTitle& title, const std::vector<PredictedRoutine>& routines);
void plot(OutputFile& file, const PredictionTitle& title,
          const std::vector<PredictedRoutine>& routines);

}  // namespace lumo
