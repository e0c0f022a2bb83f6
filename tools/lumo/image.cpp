#include "image.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <ostream>
#include <string_view>

#include "dense.h"
#include "png_image.h"

namespace lumo {
namespace {

constexpr std::string_view pngMagic = "\x89PNG\r\n\x1a\n";
constexpr std::string_view blanks = " \t\r\n\v\f";

bool isPnm(std::string_view bytes) {
    return bytes.size() > 2 && bytes[0] == 'P' &&
           std::string_view("2356").find(bytes[1]) != std::string_view::npos &&
           (blanks.find(bytes[2]) != std::string_view::npos || bytes[2] == '#');
}

// The numbers of a header or of plain samples.
class PnmReader {
  public:
    explicit PnmReader(std::string_view bytes) : rest_(bytes) {}

    // The next number after blanks and comments.
    int number(const char* what) {
        for (;;) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
            if (rest_.empty()) throw FileError("ends early");
            if (rest_[0] != '#') break;
            rest_.remove_prefix(std::min(rest_.find('\n'), rest_.size()));
        }
        int value = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        if (error != std::errc() || value < 0) throw FileError(std::string("expected ") + what);
        rest_.remove_prefix(std::size_t(end - rest_.data()));
        return value;
    }
    // Passes the single blank between a raw file's header and its samples.
    void passBlank() {
        if (rest_.empty() || blanks.find(rest_[0]) == std::string_view::npos)
            throw FileError("expected a blank after the header");
        rest_.remove_prefix(1);
    }
    std::string_view rest() const { return rest_; }

  private:
    std::string_view rest_;
};

Image readPnm(std::string_view bytes) {
    const bool raw = bytes[1] >= '5', color = bytes[1] == '3' || bytes[1] == '6';
    PnmReader reader(bytes.substr(2));
    Image image{color ? "ppm" : "pgm"};
    image.channels = color ? 3 : 1;
    const int width = reader.number("the width"), height = reader.number("the height");
    image.white = reader.number("the largest sample");
    if (image.white < 1 || image.white > 65535)
        throw FileError("its largest sample is " + std::to_string(image.white) +
                        ", not from 1 to 65535");
    const std::size_t size = image.white > 255 ? 2 : 1;  // a plain sample takes two, but the last
    const double least = double(height) * width * image.channels * double(raw ? size : 2) - !raw;
    if (double(reader.rest().size()) < least) throw FileError("ends early");
    reserveSamples(image, height, width);

    if (raw) reader.passBlank();
    const std::string_view data = reader.rest();
    if (raw && data.size() < image.samples.size() * size) throw FileError("ends early");
    if (raw && data.size() > image.samples.size() * size)
        throw FileError("more than the header announced");
    for (std::size_t k = 0; k < image.samples.size(); ++k) {
        int sample = 0;
        if (!raw) sample = reader.number("a sample");
        for (std::size_t i = 0; raw && i < size; ++i)
            sample = sample << 8 | static_cast<unsigned char>(data[k * size + i]);
        if (sample > image.white)
            throw FileError("a sample of " + std::to_string(sample) + " where the largest is " +
                            std::to_string(image.white));
        image.samples[k] = std::uint16_t(sample);
    }
    if (!raw && reader.rest().find_first_not_of(blanks) != std::string_view::npos)
        throw FileError("more than the header announced");
    return image;
}

void writePnm(std::ostream& out, const Image& image) {
    out << (image.channels == 3 ? "P6\n" : "P5\n") << image.width << ' ' << image.height << '\n'
        << image.white << '\n';
    std::string data;
    for (const std::uint16_t sample : image.samples) {
        if (image.white > 255) data.push_back(char(sample >> 8));
        data.push_back(char(sample));
    }
    out << data;
}

}  // namespace

void reserveSamples(Image& image, std::int64_t height, std::int64_t width) {
    if (height < 1 || width < 1) throw FileError("the image has no pixels");
    checkSize(height, width * image.channels, false);
    image.height = int(height);
    image.width = int(width);
    image.samples.resize(std::size_t(height) * std::size_t(width) * std::size_t(image.channels));
}

bool isImage(const std::string& start) {
    return start == pngMagic || isPnm(start);
}

Image readImage(InputFile& in) try {
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    return isPnm(bytes) ? readPnm(bytes) : readPng(bytes);
} catch (const FileError& error) {
    throw FileError(in.name() + ": " + error.what());
} catch (const std::bad_alloc&) {
    throw FileError(in.name() + ": too large for this machine's memory");
}

void writeImage(std::ostream& out, const Image& image) {
    image.extension == std::string_view("png") ? writePng(out, image) : writePnm(out, image);
}

template <class T>
std::vector<T> channelOf(const Image& image, int channel) {
    std::vector<T> matrix;
    matrix.reserve(image.samples.size() / std::size_t(image.channels));
    for (std::size_t j = 0; j < std::size_t(image.width); ++j)
        for (std::size_t i = 0; i < std::size_t(image.height); ++i)
            matrix.push_back(image.samples[(i * image.width + j) * image.channels + channel]);
    return matrix;
}

template <class T>
Loss replaceChannels(Image& image, const std::vector<std::vector<T>>& channels) {
    double squares = 0;
    for (std::size_t k = 0; k < image.samples.size(); ++k) {
        const std::size_t channel = k % image.channels, pixel = k / image.channels;
        const std::size_t i = pixel / image.width, j = pixel % image.width;
        const T value = std::round(channels[channel][j * image.height + i]);
        const T sample = std::clamp(value, T(0), T(image.white));
        squares += std::pow(double(sample) - image.samples[k], 2);
        image.samples[k] = std::uint16_t(sample);
    }
    const double rms = std::sqrt(squares / double(image.samples.size()));
    return {rms, 20 * std::log10(image.white / rms)};
}

template std::vector<float> channelOf(const Image&, int);
template std::vector<double> channelOf(const Image&, int);
template Loss replaceChannels(Image&, const std::vector<std::vector<float>>&);
template Loss replaceChannels(Image&, const std::vector<std::vector<double>>&);

}  // namespace lumo
