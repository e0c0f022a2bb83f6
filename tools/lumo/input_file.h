// A file to read from, unpacked if it is compressed by gzip; "-" is the standard input.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <string>

namespace lumo {

constexpr int deflateRatio = 1032;  // what gzip and PNG files may make of a byte, at best

// A failure to read is a FileError, thrown by the stream's own functions too. It has the file's
// name if it is the constructor's.
class InputFile : public std::istream {
  public:
    explicit InputFile(const std::string& file);
    ~InputFile() override;

    const std::string& name() const { return name_; }
    // What it begins with, by which formats are recognised.
    const std::string& start() const { return start_; }
    // The most that it can hold, negative if that is unknown; makes short work of headers that
    // announce too much.
    std::int64_t bytes() const { return bytes_; }

  private:
    class Buffer;
    void open();

    std::string name_, start_;
    std::int64_t bytes_ = -1;
    std::unique_ptr<Buffer> buffer_;
};

}  // namespace lumo
