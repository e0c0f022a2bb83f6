// Files that appear under their names when they are complete, or not at all: not after an error,
// nor after a signal that ends the program.
#pragma once

#include <ext/stdio_filebuf.h>

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>

#include "dense.h"

namespace lumo {

// Refuses, with a FileError, a name that is taken by something else than a file.
void checkIsFileOrNew(const std::string& file);

// A file under another name beside its own, which it takes when committed. What goes wrong is a
// FileError that begins with the file's name. Made before the work for it, which would be in vain
// if it could not be.
//
// "-" is the standard output; what is printed there otherwise goes to the standard error stream
// from then on.
class OutputFile {
  public:
    explicit OutputFile(const std::string& file);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    const std::string& name() const { return name_; }
    std::ostream& stream() { return out_; }
    // For another program to write to.
    int descriptor() { return buffer_.fd(); }
    // Ends the writing.
    void close();
    void commit();

  private:
    struct Unfinished;
    static Unfinished* note(const std::string& file);
    static void removeUnfinished(int signal);

    std::string name_;
    std::filesystem::path target_;
    Unfinished* temporary_ = nullptr;  // none for the standard output
    __gnu_cxx::stdio_filebuf<char> buffer_;
    std::ostream out_;
};

// Commits a file, and says so.
void deliver(OutputFile& file);

// Null for an empty name.
std::unique_ptr<OutputFile> openOutput(const std::string& file);

}  // namespace lumo
