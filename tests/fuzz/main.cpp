// Runs a fuzzer where libFuzzer is not: program COUNT FOLDER... On COUNT random inputs, the same
// ones each time, and on every file of the folders. A fault ends the program.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "fuzz.h"

int main(int argc, char** argv) {
    int count = 0;
    const auto run = [&](const std::string& bytes) {
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++count;
    };
    std::mt19937 engine;
    std::string bytes(64, '\0');
    while (argc > 1 && count < std::atoi(argv[1])) {
        for (char& byte : bytes) byte = char(engine());
        run(bytes);
    }
    for (int i = 2; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream in(entry.path(), std::ios::binary);
            run({std::istreambuf_iterator<char>(in), {}});
        }
    std::printf("%d inputs\n", count);
    return count == 0;
}
