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
    read(store(data, size));
    return 0;
}
