// The `lumo` command as its user meets it: files in; a result, or one line and a failure, out.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <complex>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace test {

namespace fs = std::filesystem;
using namespace std::string_literals;
using Number = std::complex<double>;
using Numbers = std::vector<Number>;

inline std::string read(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct Outcome {
    int code;
    std::string out, err;
};

class Command : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "lumo-command-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(name.data()));
        folder = name;
    }
    void TearDown() override { fs::remove_all(folder); }

    void write(const char* name, const std::string& contents) const {
        std::ofstream(folder / name, std::ios::binary) << contents;
    }
    Outcome run(const std::string& arguments) const {
        return shell("'" LUMO_COMMAND "' " + arguments);
    }
    Outcome shell(const std::string& command) const {
        const std::string all = "cd '" + folder.string() + "' && (" + command + ") >out 2>err";
        const int status = std::system(all.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(folder / "out"),
                read(folder / "err")};
    }
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename());
        return names;
    }
    // The numbers of a Matrix Market array that the command wrote, under this header.
    Numbers numbers(const char* name, const std::string& header) const {
        std::istringstream in(read(folder / name));
        std::string first, second;
        std::getline(in, first);
        std::getline(in, second);
        EXPECT_EQ(header, first.substr(first.find("array")) + ", " + second);
        Numbers all;
        const bool complex = header.find("complex") != header.npos;
        for (double re, im = 0; in >> re && (!complex || in >> im);) all.emplace_back(re, im);
        EXPECT_TRUE(in.eof()) << name;
        return all;
    }
    // `error` is relative, of numbers below 1 absolute.
    static void expectNear(const Numbers& expected, const Numbers& actual, double error) {
        ASSERT_EQ(expected.size(), actual.size());
        for (std::size_t i = 0; i < actual.size(); ++i)
            EXPECT_LE(std::abs(expected[i] - actual[i]),
                      error * std::max(1., std::abs(expected[i])))
                << i << ": " << actual[i];
    }
    static void expectWords(const std::string& text, const std::vector<std::string>& words) {
        for (const std::string& word : words)
            EXPECT_NE(std::string::npos, text.find(word)) << word << "\n" << text;
    }
    // Fails unless the command says one line with all these words, after warnings if any, and
    // leaves nothing behind.
    void expectRefusal(const std::string& arguments, const std::vector<std::string>& words) const {
        write("out", "");
        write("err", "");
        const auto before = files();
        const Outcome outcome = run(arguments);
        EXPECT_EQ(1, outcome.code);
        const std::string line = outcome.err.substr(outcome.err.rfind("\nlumo: ") + 1);
        EXPECT_EQ(0u, line.rfind("lumo: ", 0)) << outcome.err;
        EXPECT_EQ(1, std::count(line.begin(), line.end(), '\n')) << outcome.err;
        expectWords(outcome.err, words);
        EXPECT_EQ(before, files());
    }

    fs::path folder;
};

inline std::string mtx(const std::string& kind, const std::string& rest) {
    return "%%MatrixMarket matrix " + kind + "\n" + rest;
}

inline std::string npy(const std::string& descr, bool fortran, const std::string& shape,
                       const std::string& data, int version = 1) {
    const std::string header = "{'descr': '" + descr +
                               "', 'fortran_order': " + (fortran ? "True" : "False") +
                               ", 'shape': (" + shape + "), }\n";
    std::string length{char(header.size()), char(header.size() >> 8)};
    if (version > 1) length += "\0\0"s;
    return "\x93NUMPY"s + char(version) + '\0' + length + header + data;
}

}  // namespace test
