// Pictures, drawn by gnuplot.
#pragma once

#include <string>

#include "output_file.h"

namespace lumo {

// What keeps gnuplot from drawing a file of this name, in words; empty if nothing does. The file's
// ending tells the format: .svg, .png or .pdf.
std::string obstacleToPlot(const std::string& file);

// Draws what the script says; throws a FileError if gnuplot fails.
struct PictureSize {
    int width, height;  // in pixels
};
void drawPicture(OutputFile& file, PictureSize size, const std::string& script);

// A string for gnuplot, which takes all but the quote as it is.
std::string quotedForGnuplot(const std::string& text);

}  // namespace lumo
