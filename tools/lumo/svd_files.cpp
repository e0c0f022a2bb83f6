#include "svd_files.h"

namespace lumo {

SvdFiles::SvdFiles(const SvdTask& task, const Image* image)
    : prefix_(task.prefix),
      matrix_(image ? ".mtx" : extensionFor(task.a)),
      approximation_(image ? "." + std::string(image->extension) : matrix_),
      files_(names(task, image), task.a) {}

std::vector<std::string> SvdFiles::names(const SvdTask& task, bool isImage) const {
    std::vector<std::string> all;
    if (!wanted()) return all;
    for (const int rank : task.ranks) all.push_back(approximationName(rank));
    all.push_back(prefix_ + ".s" + matrix_);
    if (task.ranks.empty() && !isImage)
        all.insert(all.end(), {prefix_ + ".u" + matrix_, prefix_ + ".vt" + matrix_});
    all.push_back(plotName());
    return all;
}

}  // namespace lumo
