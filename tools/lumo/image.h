// Images in files: PGM and PPM, plain and raw, of up to 16 bits; PNG of 8 bits, if built with
// libpng.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace lumo {

struct Image {
    const char* extension = "";  // of the files of its format: "pgm", "ppm" or "png"
    int height = 0, width = 0;
    int channels = 1;                      // grey; or 3: red, green, blue
    int white = 255;                       // the largest sample
    std::vector<std::uint16_t> samples{};  // row by row, the channels of a pixel side by side
};

// Whether the file begins as an image does.
bool isImage(const std::string& file);

// Throws a FileError that begins with the file's name. Images with transparency are refused.
Image readImage(const std::string& file);

// In its own format, PGM and PPM raw.
void writeImage(std::ostream& out, const Image& image);

// A channel as a matrix, height x width, column-major.
std::vector<float> channelOf(const Image& image, int channel);

// Replaces the channels by such matrices, rounded, and tells what that changes: the root of the
// samples' mean square difference, and its ratio to the largest sample in decibels.
struct Loss {
    double rms, psnr;
};
Loss replaceChannels(Image& image, const std::vector<std::vector<float>>& channels);

}  // namespace lumo
