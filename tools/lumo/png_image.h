// PNG images, if built with libpng.
#pragma once

#include <iosfwd>
#include <string_view>

#include "image.h"

namespace lumo {

// Samples are taken as they are, without regard to their colour space; those of less than 8 bits
// and of palettes become 8 bits. Throws a FileError.
Image readPng(std::string_view bytes);
void writePng(std::ostream& out, const Image& image);

}  // namespace lumo
