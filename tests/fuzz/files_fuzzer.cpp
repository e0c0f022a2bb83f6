// Any bytes as a file: for the command an image if it begins like one, else a matrix, and for the
// drop-in library the measured crossovers. What an image is written as, it is read as.
#include <sys/mman.h>
#include <unistd.h>

#include <sstream>

#include "dropin/crossover_file.h"
#include "fuzz.h"
#include "tools/lumo/image.h"
#include "tools/lumo/matrix_file.h"
#ifdef LUMO_HAVE_ZLIB
#include <zlib.h>
#endif

// The readers' idea of this machine: one that refuses 16 MB, which a short input can ask for.
extern "C" long smallMachine(int what) noexcept {
    return what == _SC_PHYS_PAGES ? 4096 : sysconf(what);
}

namespace {

// A file in memory, by the name that the readers want.
std::string store(const std::string& bytes) {
    static const int file = memfd_create("input", MFD_CLOEXEC);
    require(ftruncate(file, 0) == 0 &&
                pwrite(file, bytes.data(), bytes.size(), 0) == ssize_t(bytes.size()),
            "the input is stored");
    return "/proc/self/fd/" + std::to_string(file);
}

// Gives the chunks of a PNG the checksums that they should have: what is changed at random has none
// that are right, and would be refused for that.
void seal([[maybe_unused]] std::string& bytes) {
#ifdef LUMO_HAVE_ZLIB
    auto* const at = reinterpret_cast<unsigned char*>(bytes.data());
    std::size_t i = 8, length = 0;
    for (; bytes[0] == '\x89' && i + 12 <= bytes.size(); i += 12 + length) {
        length = std::size_t(at[i]) << 24 | at[i + 1] << 16 | at[i + 2] << 8 | at[i + 3];
        if (length > bytes.size() - i - 12) return;
        const auto sum = crc32(0, at + i + 4, unsigned(length) + 4);
        for (int k = 0; k < 4; ++k) at[i + 8 + length + k] = sum >> (24 - 8 * k);
    }
#endif
}

void read(const std::string& file) try {
    lumo::InputFile in(file);
    if (!lumo::isImage(in.start())) {
        lumo::readMatrix(in);
        return;
    }
    const lumo::Image image = lumo::readImage(in);
    std::ostringstream out;
    lumo::writeImage(out, image);
    lumo::InputFile written(store(out.str()));
    const lumo::Image again = lumo::readImage(written);
    require(again.samples == image.samples && again.width == image.width, "written as read");
} catch (const lumo::FileError&) {
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    std::istringstream lines(bytes);
    for (const auto& [routine, least] : lumo::dropin::readCrossovers(lines, "software", [](int) {}))
        require(!routine.empty() && least >= 0, routine + " has a size");
    seal(bytes);
    read(store(bytes));
    return 0;
}
