// The names of the files that `lumo svd` writes.
#pragma once

#include <string>

#include "commands.h"
#include "image.h"

namespace lumo {

class SvdFiles {
  public:
    // Throws a FileError if a file that the task asks for is taken by something else than a file,
    // or is A itself. image: what A is, or null.
    SvdFiles(const SvdTask& task, const Image* image);

    bool wanted() const { return !prefix_.empty(); }
    std::string values() const { return prefix_ + ".s" + matrix_; }
    std::string left() const { return prefix_ + ".u" + matrix_; }
    std::string right() const { return prefix_ + ".vt" + matrix_; }
    std::string plot() const { return prefix_ + ".spectrum.png"; }
    std::string approximation(int rank) const {
        return prefix_ + ".k" + std::to_string(rank) + approximation_;
    }

  private:
    std::string prefix_, matrix_, approximation_;
};

}  // namespace lumo
