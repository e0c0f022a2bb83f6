#include "svd_files.h"

#include "output_file.h"

namespace lumo {

namespace fs = std::filesystem;

SvdFiles::SvdFiles(const SvdTask& task, const Image* image)
    : prefix_(task.prefix),
      matrix_(!image && fs::path(task.a).extension() == ".npy" ? ".npy" : ".mtx"),
      approximation_(image ? "." + std::string(image->extension) : matrix_) {
    if (!wanted()) return;
    std::vector<std::string> all{values(), plot()};
    for (const int rank : task.ranks) all.push_back(approximation(rank));
    if (task.ranks.empty() && !image) all.insert(all.end(), {left(), right()});
    for (const std::string& file : all) {
        checkIsFileOrNew(file);
        std::error_code ignored;
        if (fs::equivalent(file, task.a, ignored))
            throw FileError(file + ": would overwrite A; choose another name for -o");
    }
}

}  // namespace lumo
