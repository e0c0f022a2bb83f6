// Runs a fuzzer where libFuzzer is not: program [-random COUNT] FOLDER... On every file of the
// folders, and on COUNT random inputs, the same ones each time. A fault ends the program.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "fuzz.h"

namespace {

void run(const std::vector<char>& bytes) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int first = 1, count = 0;
    if (argc > 2 && std::strcmp(argv[1], "-random") == 0) {
        count = std::atoi(argv[2]);
        first = 3;
    }
    std::mt19937 engine;
    std::vector<char> bytes(64);
    for (int i = 0; i < count; ++i) {
        for (char& byte : bytes) byte = char(engine());
        run(bytes);
    }
    for (; first < argc; ++first)
        for (const auto& entry : std::filesystem::directory_iterator(argv[first])) {
            std::ifstream in(entry.path(), std::ios::binary);
            run({std::istreambuf_iterator<char>(in), {}});
            ++count;
        }
    std::printf("%d inputs\n", count);
    return count == 0;
}
