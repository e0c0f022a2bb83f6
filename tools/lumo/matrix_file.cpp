#include "matrix_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "matrix_market.h"
#include "npy.h"
#include "output_file.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;

Dense readEither(const std::string& file) {
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) throw FileError("is a directory");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw FileError(std::strerror(errno));
    const std::int64_t bytes =
        fs::is_regular_file(file, ignored) ? std::int64_t(fs::file_size(file, ignored)) : -1;
    switch (in.peek()) {
        case std::ifstream::traits_type::eof():
            throw FileError("is empty");
        case static_cast<unsigned char>(npyMagic[0]):
            return readNpy(in, bytes);
        case '%':
            return readMatrixMarket(in, bytes);
        default:
            throw FileError("neither a Matrix Market nor a NumPy file");
    }
}

}  // namespace

Dense readMatrix(const std::string& file) try {
    return readEither(file);
} catch (const FileError& error) {
    throw FileError(file + ": " + error.what());
} catch (const std::bad_alloc&) {
    throw FileError(file + ": too large for this machine's memory");
}

void checkOutputName(const std::string& file) {
    const std::string suffix = fs::path(file).extension();
    if (suffix != ".mtx" && suffix != ".npy")
        throw FileError(file + ": solutions are written as .mtx or .npy");
    checkIsFileOrNew(file);
}

template <class T>
void writeMatrix(OutputFile& file, int m, int n, const T* x, bool isVector) {
    if (fs::path(file.name()).extension() == ".npy")
        writeNpy(file.stream(), m, n, x, isVector);
    else
        writeMatrixMarket(file.stream(), m, n, x);
    file.close();
}

template void writeMatrix(OutputFile&, int, int, const float*, bool);
template void writeMatrix(OutputFile&, int, int, const std::complex<float>*, bool);

template <class T>
void writeMatrix(const std::string& file, int m, int n, const T* x, bool isVector) {
    OutputFile output(file);
    writeMatrix(output, m, n, x, isVector);
    output.commit();
}

template void writeMatrix(const std::string&, int, int, const float*, bool);
template void writeMatrix(const std::string&, int, int, const std::complex<float>*, bool);

}  // namespace lumo
