#include "svd_files.h"

#include <algorithm>
#include <cstdio>

namespace lumo {
namespace {

namespace fs = std::filesystem;

// Of a matrix of the same format as A.
std::string extensionFor(const std::string& A) {
    const fs::path file(A), inner = file.extension() == ".gz" ? file.stem() : file;
    return inner.extension() == ".npy" ? ".npy" : ".mtx";
}

}  // namespace

SvdFiles::SvdFiles(const SvdTask& task, const Image* image)
    : prefix_(task.prefix),
      matrix_(image ? ".mtx" : extensionFor(task.a)),
      approximation_(image ? "." + std::string(image->extension) : matrix_) {
    if (!wanted()) return;
    std::vector<std::string> all;
    for (const int rank : task.ranks) all.push_back(approximationName(rank));
    all.push_back(prefix_ + ".s" + matrix_);
    if (task.ranks.empty() && !image)
        all.insert(all.end(), {prefix_ + ".u" + matrix_, prefix_ + ".vt" + matrix_});
    all.push_back(plotName());
    for (const std::string& file : all) {
        std::error_code ignored;
        if (fs::equivalent(file, task.a, ignored))
            throw FileError(file + ": would overwrite A; choose another name for -o");
        outputs_.emplace_back(file);
    }
}

OutputFile& SvdFiles::opened(const std::string& name) {
    return *std::find_if(outputs_.begin(), outputs_.end(),
                         [&](const OutputFile& output) { return output.name() == name; });
}

void SvdFiles::leaveOut(const OutputFile& file) {
    outputs_.remove_if([&](const OutputFile& output) { return &output == &file; });
}

void SvdFiles::commit() {
    for (OutputFile& output : outputs_) {
        output.commit();
        std::printf("wrote:      %s\n", output.name().c_str());
    }
}

}  // namespace lumo
