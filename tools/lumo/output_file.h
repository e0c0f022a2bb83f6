// Files that appear under their names when they are complete, or not at all.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "dense.h"

namespace lumo {

// Refuses, with a FileError, a name that is taken by something else than a file.
void checkIsFileOrNew(const std::string& file);

// A file under another name beside its own, which it takes when committed. What goes wrong is a
// FileError that begins with the file's name.
class OutputFile {
  public:
    explicit OutputFile(const std::string& file);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    const std::string& name() const { return name_; }
    // Where it lies until then, for another program to write it.
    const std::filesystem::path& temporary() const { return temporary_; }
    std::ostream& stream() { return out_; }
    // Ends the writing.
    void close();
    void commit();

  private:
    std::string name_;
    std::filesystem::path target_, temporary_;
    std::ofstream out_;
    bool committed_ = false;
};

}  // namespace lumo
