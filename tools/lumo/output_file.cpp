#include "output_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace lumo {
namespace fs = std::filesystem;

void checkIsFileOrNew(const std::string& file) {
    std::error_code ignored;
    if (fs::exists(file, ignored) && !fs::is_regular_file(file, ignored))
        throw FileError(file + ": exists and is not a file");
}

OutputFile::OutputFile(const std::string& file) : name_(file) {
    std::error_code error;
    target_ = fs::weakly_canonical(file, error);  // not to replace a link by the file
    if (error) throw FileError(file + ": " + error.message());
    temporary_ = target_.string() + "." + std::to_string(getpid()) + ".part";
    out_.open(temporary_, std::ios::binary | std::ios::trunc);
    if (!out_) throw FileError(file + ": " + std::strerror(errno));
}

OutputFile::~OutputFile() {
    std::error_code ignored;
    if (!committed_) fs::remove(temporary_, ignored);
}

void OutputFile::close() {
    if (!out_.is_open()) return;
    out_.close();
    if (!out_) throw FileError(name_ + ": cannot be written: " + std::strerror(errno));
}

void OutputFile::commit() {
    close();
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) throw FileError(name_ + ": " + error.message());
    committed_ = true;
}

}  // namespace lumo
