#include "matrix_file.h"

#include <filesystem>

#include "matrix_market.h"
#include "npy.h"

namespace lumo {

namespace fs = std::filesystem;

Dense readMatrix(InputFile& in, const char* others) try {
    if (in.start().empty()) throw FileError("is empty");
    switch (in.start()[0]) {
        case npyMagic[0]:
            return readNpy(in);
        case '%':
            return readMatrixMarket(in);
        default:
            throw FileError(std::string("neither a Matrix Market nor a NumPy file") + others);
    }
} catch (const FileError& error) {
    throw FileError(in.name() + ": " + error.what());
} catch (const std::bad_alloc&) {
    throw FileError(in.name() + ": too large for this machine's memory");
}

std::unique_ptr<OutputFile> openMatrix(const std::string& file) {
    const std::string suffix = fs::path(file).extension();
    if (!file.empty() && file != "-" && suffix != ".mtx" && suffix != ".npy")
        throw FileError(file + ": solutions are written as .mtx or .npy");
    return openOutput(file);
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
template void writeMatrix(OutputFile&, int, int, const double*, bool);
template void writeMatrix(OutputFile&, int, int, const std::complex<float>*, bool);
template void writeMatrix(OutputFile&, int, int, const std::complex<double>*, bool);

}  // namespace lumo
