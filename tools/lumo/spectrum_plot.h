// A picture of singular values.
#pragma once

#include <string>
#include <vector>

#include "output_file.h"

namespace lumo {

struct Spectrum {
    std::string name;  // of a channel; a single one may have none
    std::vector<double> values;
};

// Draws the values against their indices, on a logarithmic scale, and a line at each of `ranks`.
void plotSpectra(OutputFile& file, const std::string& title, const std::vector<Spectrum>& spectra,
                 const std::vector<int>& ranks);

}  // namespace lumo
