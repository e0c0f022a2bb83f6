// The files that `lumo svd` writes.
#pragma once

#include <list>
#include <string>

#include "commands.h"
#include "image.h"
#include "output_file.h"

namespace lumo {

// They appear all together.
class SvdFiles {
  public:
    // Opens what the task asks for. Throws a FileError if a name is taken by something else than a
    // file, or is A itself. image: what A is, or null.
    SvdFiles(const SvdTask& task, const Image* image);

    bool wanted() const { return !prefix_.empty(); }
    OutputFile& approximation(int rank) { return opened(approximationName(rank)); }
    OutputFile& values() { return opened(prefix_ + ".s" + matrix_); }
    OutputFile& left() { return opened(prefix_ + ".u" + matrix_); }
    OutputFile& right() { return opened(prefix_ + ".vt" + matrix_); }
    OutputFile& plot() { return opened(plotName()); }
    void leaveOut(const OutputFile& file);
    // Tells of each.
    void commit();

  private:
    std::string approximationName(int rank) const {
        return prefix_ + ".k" + std::to_string(rank) + approximation_;
    }
    std::string plotName() const { return prefix_ + ".spectrum.png"; }
    OutputFile& opened(const std::string& name);

    std::string prefix_, matrix_, approximation_;
    std::list<OutputFile> outputs_;
};

}  // namespace lumo
