// Any bytes as a file for the command: read as an image if it begins like one, else as a matrix.
// What an image is written as, it is read as.
#include <sys/mman.h>
#include <unistd.h>

#include <sstream>

#include "fuzz.h"
#include "tools/lumo/image.h"
#include "tools/lumo/matrix_file.h"

// The readers' idea of this machine: one that refuses 16 MB, which a short input can ask for.
extern "C" long smallMachine(int what) noexcept {
    return what == _SC_PHYS_PAGES ? 4096 : sysconf(what);
}

namespace {

// A file in memory, by the name that the readers want.
std::string store(const void* data, std::size_t size) {
    static const int file = memfd_create("input", MFD_CLOEXEC);
    require(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == ssize_t(size), "stored");
    return "/proc/self/fd/" + std::to_string(file);
}

// A PNG's chunks with the checksums that they should have: what is changed at random has none that
// are right, and would be refused for that.
void seal(std::string& bytes) {
    const auto at = [&](std::size_t i) { return std::uint32_t(std::uint8_t(bytes[i])); };
    std::size_t begin = 8;
    while (bytes.compare(0, 4, "\x89PNG") == 0 && begin + 12 <= bytes.size()) {
        const std::size_t length =
            at(begin) << 24 | at(begin + 1) << 16 | at(begin + 2) << 8 | at(begin + 3);
        if (length > bytes.size() - begin - 12) return;
        const std::size_t end = begin + 8 + length;
        std::uint32_t sum = ~0U;
        for (begin += 4; begin < end; ++begin) {
            sum ^= at(begin);
            for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320U : 0);
        }
        for (int shift = 24; shift >= 0; shift -= 8) bytes[begin++] = char(~sum >> shift);
    }
}

void read(const std::string& file) try {
    if (!lumo::isImage(file)) {
        const lumo::Dense matrix = lumo::readMatrix(file);
        require(matrix.rows() >= 0 && matrix.columns() >= 0, "a matrix has a size");
        return;
    }
    lumo::Image image = lumo::readImage(file);
    std::vector<std::vector<float>> channels;
    for (int channel = 0; channel < image.channels; ++channel)
        channels.push_back(lumo::channelOf(image, channel));
    require(lumo::replaceChannels(image, channels).rms == 0, "the channels are the image");
    std::ostringstream out;
    lumo::writeImage(out, image);
    const std::string bytes = out.str();
    const lumo::Image again = lumo::readImage(store(bytes.data(), bytes.size()));
    require(again.samples == image.samples && again.width == image.width, "written as read");
} catch (const lumo::FileError&) {
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    seal(bytes);
    read(store(bytes.data(), bytes.size()));
    return 0;
}
