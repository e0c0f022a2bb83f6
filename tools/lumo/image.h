// Images in files: PGM and PPM, plain and raw; PNG, if built with libpng. Of up to 16 bits.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "input_file.h"

namespace lumo {

struct Image {
    const char* extension = "";  // of the files of its format: "pgm", "ppm" or "png"
    int height = 0, width = 0;
    int channels = 1;                      // grey; or 3: red, green, blue
    int white = 255;                       // the largest sample
    int gamma = 0;                         // as a PNG file has it, in 100000ths; 0 if it has none
    std::vector<std::uint16_t> samples{};  // row by row, the channels of a pixel side by side
};

// Whether a file that starts so is an image.
bool isImage(const std::string& start);

// Throws a FileError that begins with the file's name. Images with transparency are refused.
Image readImage(InputFile& in);

// Makes room for the samples. Throws a FileError if there are none, or more than the machine could
// hold.
void reserveSamples(Image& image, std::int64_t height, std::int64_t width);

// In its own format, PGM and PPM raw.
void writeImage(std::ostream& out, const Image& image);

// A channel as a matrix, height x width, column-major. T: float or double.
template <class T>
std::vector<T> channelOf(const Image& image, int channel);

// Replaces the channels by such matrices, rounded, and tells what that changes: the root of the
// samples' mean square difference, and its ratio to the largest sample in decibels.
struct Loss {
    double rms, psnr;
};
template <class T>
Loss replaceChannels(Image& image, const std::vector<std::vector<T>>& channels);

}  // namespace lumo
