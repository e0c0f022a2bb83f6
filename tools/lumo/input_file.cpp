#include "input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <streambuf>
#include <vector>

#include "dense.h"
#ifdef LUMO_HAVE_ZLIB
#include <zlib.h>
#endif

namespace lumo {
namespace {

constexpr std::size_t longestMagic = 8;

[[noreturn]] void throwSystemError() {
    throw FileError(std::strerror(errno));
}

#ifdef LUMO_HAVE_ZLIB

// What is not compressed passes as it is.
class Reader {
  public:
    explicit Reader(int descriptor) : file_(gzdopen(descriptor, "rb")) {
        if (!file_) throw std::bad_alloc();
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { gzclose_r(file_); }

    // Once something is read.
    bool unpacks() { return !gzdirect(file_); }
    // 0 at the end.
    std::size_t read(char* to, std::size_t bytes) {
        const int count = gzread(file_, to, unsigned(bytes));
        int error = Z_OK;
        const char* const message = gzerror(file_, &error);
        if (error == Z_ERRNO) throwSystemError();
        if (error == Z_BUF_ERROR) throw FileError("ends early");
        if (error != Z_OK) throw FileError(std::string("cannot be unpacked: ") + message);
        return std::size_t(count);
    }

  private:
    gzFile file_;
};

#else

class Reader {
  public:
    explicit Reader(int descriptor) : descriptor_(descriptor) {}
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { close(descriptor_); }

    bool unpacks() { return false; }
    std::size_t read(char* to, std::size_t bytes) {
        const ssize_t count = ::read(descriptor_, to, bytes);
        if (count < 0) throwSystemError();
        return std::size_t(count);
    }

  private:
    int descriptor_;
};

#endif

// The length of a file, negative if it has none.
std::int64_t lengthOf(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status)) throwSystemError();
    if (S_ISDIR(status.st_mode)) throw FileError("is a directory");
    return S_ISREG(status.st_mode) ? std::int64_t(status.st_size) : -1;
}

}  // namespace

class InputFile::Buffer : public std::streambuf {
  public:
    explicit Buffer(int descriptor) : reader_(descriptor), bytes_(1 << 16) {}

    // The file's first bytes, or all of them.
    std::string start() {
        underflow();
        return {gptr(), std::min(egptr(), gptr() + longestMagic)};
    }
    bool unpacks() { return reader_.unpacks(); }

  private:
    // Fills up: a pipe delivers little at a time.
    int_type underflow() override {
        std::size_t filled = 0, count = 0;
        do {
            count = reader_.read(bytes_.data() + filled, bytes_.size() - filled);
            filled += count;
        } while (count > 0 && filled < bytes_.size());
        setg(bytes_.data(), bytes_.data(), bytes_.data() + filled);
        return filled > 0 ? traits_type::to_int_type(bytes_[0]) : traits_type::eof();
    }

    Reader reader_;
    std::vector<char> bytes_;
};

InputFile::InputFile(const std::string& file) : std::istream(nullptr), name_(file) {
    try {
        open();
    } catch (const FileError& error) {
        throw FileError(file + ": " + error.what());
    }
}

InputFile::~InputFile() = default;

void InputFile::open() {
    const int descriptor = name_ == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                        : ::open(name_.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throwSystemError();
    buffer_ = std::make_unique<Buffer>(descriptor);
    rdbuf(buffer_.get());
    exceptions(std::ios::badbit);  // not to take a failure for the end
    bytes_ = lengthOf(descriptor);
    start_ = buffer_->start();
    if (buffer_->unpacks()) bytes_ *= deflateRatio;
#ifndef LUMO_HAVE_ZLIB
    if (start_.compare(0, 2, "\x1f\x8b") == 0)
        throw FileError(
            "compressed by gzip, which this command was built without zlib for; unpack it, or "
            "install zlib1g-dev and build again");
#endif
}

}  // namespace lumo
