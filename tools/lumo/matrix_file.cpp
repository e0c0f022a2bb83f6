#include "matrix_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "matrix_market.h"
#include "npy.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;

Dense readEither(const std::string& file) {
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) throw FileError("is a directory");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw FileError(std::strerror(errno));
    const std::int64_t bytes =
        fs::is_regular_file(file, ignored) ? std::int64_t(fs::file_size(file, ignored)) : -1;
    switch (in.peek()) {
        case std::ifstream::traits_type::eof():
            throw FileError("is empty");
        case static_cast<unsigned char>(npyMagic[0]):
            return readNpy(in, bytes);
        case '%':
            return readMatrixMarket(in, bytes);
        default:
            throw FileError("neither a Matrix Market nor a NumPy file");
    }
}

// A file under another name beside its own, which it takes when committed.
class Unfinished {
  public:
    explicit Unfinished(const std::string& file)
        : target_(fs::weakly_canonical(file)),  // not to replace a link by the file
          temporary_(target_.string() + "." + std::to_string(getpid()) + ".part"),
          out_(temporary_, std::ios::binary | std::ios::trunc) {
        if (!out_) throw FileError(std::strerror(errno));
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        std::error_code ignored;
        if (!committed_) fs::remove(temporary_, ignored);
    }
    std::ostream& stream() { return out_; }
    void commit() {
        out_.close();
        if (!out_) throw FileError("cannot be written: " + std::string(std::strerror(errno)));
        fs::rename(temporary_, target_);
        committed_ = true;
    }

  private:
    fs::path target_, temporary_;
    std::ofstream out_;
    bool committed_ = false;
};

}  // namespace

Dense readMatrix(const std::string& file) try {
    return readEither(file);
} catch (const FileError& error) {
    throw FileError(file + ": " + error.what());
} catch (const std::bad_alloc&) {
    throw FileError(file + ": too large for this machine's memory");
}

void checkOutputName(const std::string& file) {
    const std::string suffix = fs::path(file).extension();
    if (suffix != ".mtx" && suffix != ".npy")
        throw FileError(file + ": solutions are written as .mtx or .npy");
    std::error_code ignored;
    if (fs::exists(file, ignored) && !fs::is_regular_file(file, ignored))
        throw FileError(file + ": exists and is not a file");
}

template <class T>
void writeMatrix(const std::string& file, int m, int n, const T* x, bool isVector) try {
    Unfinished unfinished(file);
    if (fs::path(file).extension() == ".npy")
        writeNpy(unfinished.stream(), m, n, x, isVector);
    else
        writeMatrixMarket(unfinished.stream(), m, n, x);
    unfinished.commit();
} catch (const FileError& error) {
    throw FileError(file + ": " + error.what());
} catch (const fs::filesystem_error& error) {
    throw FileError(file + ": " + error.code().message());
}

template void writeMatrix(const std::string&, int, int, const float*, bool);
template void writeMatrix(const std::string&, int, int, const std::complex<float>*, bool);

}  // namespace lumo
