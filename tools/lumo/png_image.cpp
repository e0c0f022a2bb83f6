#include "png_image.h"

#include <csetjmp>
#include <cstring>
#include <new>
#include <ostream>
#include <vector>

#include "dense.h"
#include "input_file.h"
#ifdef LUMO_HAVE_PNG
#include <png.h>
#endif

namespace lumo {

#ifdef LUMO_HAVE_PNG

namespace {

// What libpng's functions share. They report an error by a jump into `guarded`.
struct Codec {
    explicit Codec(bool reads)
        : reads(reads),
          png((reads ? png_create_read_struct : png_create_write_struct)(
              PNG_LIBPNG_VER_STRING, this, &Codec::fail, [](png_structp, png_const_charp) {})),
          info(png ? png_create_info_struct(png) : nullptr) {
        if (!info) throw std::bad_alloc();
    }
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;
    ~Codec() {
        if (reads)
            png_destroy_read_struct(&png, &info, nullptr);
        else
            png_destroy_write_struct(&png, &info);
    }

    // Throws a FileError for an error of libpng's. The work has no objects with destructors.
    template <class Work>
    void guarded(const Work& work) {
        if (setjmp(png_jmpbuf(png))) throw FileError(message);
        work();
    }

    static void fail(png_structp png, png_const_charp text) {
        Codec& codec = *static_cast<Codec*>(png_get_error_ptr(png));
        std::strncpy(codec.message, text, sizeof codec.message - 1);
        png_longjmp(png, 1);
    }

    bool reads;
    char message[100] = "";
    png_structp png;
    png_infop info;
};

void take(png_structp png, png_bytep to, std::size_t count) {
    auto& rest = *static_cast<std::string_view*>(png_get_io_ptr(png));
    if (count > rest.size()) png_error(png, "ends early");
    std::memcpy(to, rest.data(), count);
    rest.remove_prefix(count);
}

void put(png_structp png, png_bytep from, std::size_t count) {
    auto& out = *static_cast<std::ostream*>(png_get_io_ptr(png));
    out.write(reinterpret_cast<const char*>(from), std::streamsize(count));
}

// Samples in the file's byte order, and where each row starts.
struct Rows {
    Rows(std::size_t height, std::size_t bytesEach) : bytes(height * bytesEach), starts(height) {
        for (std::size_t i = 0; i < height; ++i) starts[i] = bytes.data() + i * bytesEach;
    }
    std::vector<png_byte> bytes;
    std::vector<png_bytep> starts;
};

}  // namespace

Image readPng(std::string_view bytes) {
    const std::size_t size = bytes.size();
    Codec codec(true);
    png_structp const png = codec.png;
    png_uint_32 height = 0, width = 0;
    std::size_t packed = 0, channels = 0, depth = 0;
    Image image{"png"};
    codec.guarded([&] {
        png_set_read_fn(png, &bytes, take);
        png_read_info(png, codec.info);
        height = png_get_image_height(png, codec.info);
        width = png_get_image_width(png, codec.info);
        packed = png_get_rowbytes(png, codec.info);
        png_get_gAMA_fixed(png, codec.info, &image.gamma);
        png_set_expand(png);
        png_set_interlace_handling(png);
        png_read_update_info(png, codec.info);
        channels = png_get_channels(png, codec.info);
        depth = png_get_bit_depth(png, codec.info) / 8;
    });
    if (double(height) * double(packed) > double(deflateRatio) * double(size))
        throw FileError("ends early");
    const bool alpha = channels % 2 == 0;
    image.channels = int(channels - alpha);
    image.white = depth == 1 ? 255 : 65535;
    reserveSamples(image, height, width);
    Rows rows(height, width * channels * depth);
    codec.guarded([&] {
        png_read_image(png, rows.starts.data());
        png_read_end(png, nullptr);
    });

    std::uint16_t* to = image.samples.data();
    const png_byte* from = rows.bytes.data();
    for (std::size_t k = 0; k < rows.bytes.size() / depth; ++k, from += depth) {
        const int sample = depth == 1 ? from[0] : from[0] << 8 | from[1];
        if (!alpha || k % channels < channels - 1)
            *to++ = std::uint16_t(sample);
        else if (sample != image.white)
            throw FileError("has transparency, flatten it first");
    }
    return image;
}

void writePng(std::ostream& out, const Image& image) {
    const std::size_t depth = image.white > 255 ? 2 : 1;
    Rows rows(std::size_t(image.height), std::size_t(image.width * image.channels) * depth);
    png_byte* to = rows.bytes.data();
    for (const std::uint16_t sample : image.samples) {
        if (depth == 2) *to++ = png_byte(sample >> 8);
        *to++ = png_byte(sample);
    }
    Codec codec(false);
    png_structp const png = codec.png;
    codec.guarded([&] {
        png_set_write_fn(png, &out, put, nullptr);
        png_set_IHDR(png, codec.info, png_uint_32(image.width), png_uint_32(image.height),
                     int(8 * depth), image.channels == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (image.gamma > 0) png_set_gAMA_fixed(png, codec.info, image.gamma);
        png_write_info(png, codec.info);
        png_write_image(png, rows.starts.data());
        png_write_end(png, nullptr);
    });
}

#else

Image readPng(std::string_view) {
    throw FileError(
        "a PNG image, which this command was built without libpng for; convert it to "
        "PGM or PPM, or install libpng-dev and build again");
}
void writePng(std::ostream&, const Image&) {}  // none was read

#endif

}  // namespace lumo
