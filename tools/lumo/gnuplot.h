// Pictures, drawn by gnuplot.
#pragma once

#include <string>

#include "output_file.h"

namespace lumo {

// Throws a FileError if gnuplot is not there, or cannot draw a file of this name, whose ending
// tells the format: .svg, .png or .pdf.
void checkPlot(const std::string& file);

// Draws what the script says. Throws a FileError if gnuplot fails.
struct PictureSize {
    int width, height;  // in pixels
};
void drawPicture(OutputFile& file, PictureSize size, const std::string& script);

// A string for gnuplot, which takes all but the quote as it is.
std::string quotedForGnuplot(const std::string& text);

}  // namespace lumo
