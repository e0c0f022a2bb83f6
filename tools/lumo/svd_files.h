// The files that `lumo svd` writes.
#pragma once

#include <string>
#include <vector>

#include "commands.h"
#include "image.h"
#include "output_files.h"

namespace lumo {

class SvdFiles {
  public:
    // Opens what the task asks for. image: what A is, or null.
    SvdFiles(const SvdTask& task, const Image* image);

    bool wanted() const { return !prefix_.empty(); }
    OutputFile& approximation(int rank) { return files_[approximationName(rank)]; }
    OutputFile& values() { return files_[prefix_ + ".s" + matrix_]; }
    OutputFile& left() { return files_[prefix_ + ".u" + matrix_]; }
    OutputFile& right() { return files_[prefix_ + ".vt" + matrix_]; }
    OutputFile& plot() { return files_[plotName()]; }
    void leaveOut(const OutputFile& file) { files_.leaveOut(file); }
    void commit() { files_.commit(); }

  private:
    std::vector<std::string> names(const SvdTask& task, bool isImage) const;
    std::string approximationName(int rank) const {
        return prefix_ + ".k" + std::to_string(rank) + approximation_;
    }
    std::string plotName() const { return prefix_ + ".spectrum.png"; }

    std::string prefix_, matrix_, approximation_;
    OutputFiles files_;
};

}  // namespace lumo
