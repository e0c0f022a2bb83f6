#include "output_files.h"

#include <algorithm>
#include <cstdio>

namespace lumo {

namespace fs = std::filesystem;

std::string extensionFor(const std::string& A) {
    const fs::path file(A), inner = file.extension() == ".gz" ? file.stem() : file;
    return inner.extension() == ".npy" ? ".npy" : ".mtx";
}

OutputFiles::OutputFiles(const std::vector<std::string>& names, const std::string& A) {
    for (const std::string& name : names) {
        std::error_code ignored;
        if (fs::equivalent(name, A, ignored))
            throw FileError(name + ": would overwrite A; choose another name for -o");
        files_.emplace_back(name);
    }
}

OutputFile& OutputFiles::operator[](const std::string& name) {
    return *std::find_if(files_.begin(), files_.end(),
                         [&](const OutputFile& file) { return file.name() == name; });
}

void OutputFiles::leaveOut(const OutputFile& file) {
    files_.remove_if([&](const OutputFile& other) { return &other == &file; });
}

void OutputFiles::commit() {
    for (OutputFile& file : files_) {
        file.commit();
        std::printf("wrote:      %s\n", file.name().c_str());
    }
}

}  // namespace lumo
