// Files that a command writes for a matrix A, which appear all together.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "output_file.h"

namespace lumo {

// How the name of a matrix of the same format as A's file ends.
std::string extensionFor(const std::string& A);

class OutputFiles {
  public:
    // Opens them. Throws a FileError if a name is taken by something else than a file, or is A
    // itself.
    OutputFiles(const std::vector<std::string>& names, const std::string& A);

    bool empty() const { return files_.empty(); }
    OutputFile& operator[](const std::string& name);
    void leaveOut(const OutputFile& file);
    // Tells of each.
    void commit();

  private:
    std::list<OutputFile> files_;
};

}  // namespace lumo
