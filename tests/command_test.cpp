// The `lumo` command as its user meets it: files in; a solution, or one line and a failure, out.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "tools/lumo/speed_curve.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using Number = std::complex<double>;
using Square = std::vector<Number>;  // by rows

const Number solution[] = {1, -2, 0.5};

std::string read(const fs::path& file) {
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
        const std::string command =
            "cd '" + folder.string() + "' && '" LUMO_COMMAND "' " + arguments + " >out 2>err";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(folder / "out"),
                read(folder / "err")};
    }
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename());
        return names;
    }
    // The numbers of a Matrix Market array that the command wrote, with what its header says.
    std::vector<double> numbers(const char* name, const std::string& header) const {
        std::istringstream in(read(folder / name));
        std::string first, second;
        std::getline(in, first);
        std::getline(in, second);
        EXPECT_EQ(header, first.substr(first.find("array")) + ", " + second);
        return {std::istream_iterator<double>(in), {}};
    }
    // Fails unless the command says one line with all these words and leaves nothing behind.
    void expectRefusal(const std::string& arguments, const std::vector<std::string>& words) const {
        write("out", "");
        write("err", "");
        const auto before = files();
        const Outcome outcome = run(arguments);
        EXPECT_EQ(1, outcome.code);
        EXPECT_EQ(0u, outcome.err.rfind("lumo: ", 0)) << outcome.err;
        EXPECT_EQ(1, std::count(outcome.err.begin(), outcome.err.end(), '\n')) << outcome.err;
        for (const std::string& word : words)
            EXPECT_NE(std::string::npos, outcome.err.find(word)) << word << "\n" << outcome.err;
        EXPECT_EQ(before, files());
    }

    fs::path folder;
};

bool isComplex(const Square& a) {
    return std::any_of(a.begin(), a.end(), [](Number z) { return z.imag() != 0; });
}

// b = A * solution, as a Matrix Market file that is complex only if it must be.
std::string rightHandSide(const Square& a) {
    const std::size_t n = a.size() == 9 ? 3 : 2;
    std::ostringstream out;
    out << "%%MatrixMarket matrix array " << (isComplex(a) ? "complex" : "real") << " general\n"
        << n << " 1\n";
    for (std::size_t i = 0; i < n; ++i) {
        Number sum = 0;
        for (std::size_t j = 0; j < n; ++j) sum += a[n * i + j] * solution[j];
        out << sum.real();
        if (isComplex(a)) out << ' ' << sum.imag();
        out << '\n';
    }
    return out.str();
}

const Square general{4, 1, 2, 0, 5, 1, 3, 0, 6};
const Square generalComplex{{4, 1}, 1, 2, 0, {5, -2}, 1, 3, 0, {6, 3}};

std::string mtx(const std::string& kind, const std::string& rest) {
    return "%%MatrixMarket matrix " + kind + "\n" + rest;
}

std::string npy(const std::string& descr, bool fortran, const std::string& shape,
                const std::string& data, int version = 1) {
    const std::string header = "{'descr': '" + descr +
                               "', 'fortran_order': " + (fortran ? "True" : "False") +
                               ", 'shape': (" + shape + "), }\n";
    std::string length{char(header.size()), char(header.size() >> 8)};
    if (version > 1) length += "\0\0"s;
    return "\x93NUMPY"s + char(version) + '\0' + length + header + data;
}

// The general matrix in another element type.
template <class T>
std::string bytes(bool fortran, bool bigEndian) {
    std::string data;
    const auto append = [&](auto value) {
        std::string text(reinterpret_cast<const char*>(&value), sizeof value);
        if (bigEndian) std::reverse(text.begin(), text.end());
        data += text;
    };
    for (int k = 0; k < 9; ++k) {
        const int at = fortran ? k % 3 * 3 + k / 3 : k;
        if constexpr (std::is_arithmetic_v<T>) {
            append(T(general[at].real()));
        } else {
            append(typename T::value_type(generalComplex[at].real()));
            append(typename T::value_type(generalComplex[at].imag()));
        }
    }
    return data;
}

TEST_F(Command, SolvesEveryFormat) {
    using Single = std::complex<float>;
    const struct {
        const char* name;
        std::string file;
        Square meaning;
    } cases[] = {
        {"comments, blank lines, carriage returns, signs and exponents",
         "%%MatrixMarket MATRIX Array Real general\r\n% a\n\n%b\r\n 3\t3\r\n+4\n0.\n.3E1\n\n1e0\r\n"
         "5\n0\n2\n1\n60e-1",
         general},
        {"integer", mtx("array integer general", "3 3\n4\n0\n3\n1\n5\n0\n2\n1\n6\n"), general},
        {"coordinates in any order, one twice",
         mtx("coordinate real general",
             "3 3 8\n3 3 6\n1 1 4\n1 2 1\n1 3 2\n2 2 2.5\n2 3 1\n3 1 3\n2 2 2.5\n"),
         general},
        {"complex coordinates",
         mtx("coordinate complex general",
             "3 3 7\n1 1 4 1\n1 2 1 0\n1 3 2 0\n2 2 5 -2\n2 3 1 0\n3 1 3 0\n3 3 6 3\n"),
         generalComplex},
        {"symmetric coordinates",
         mtx("coordinate real symmetric", "3 3 4\n1 1 4\n2 1 1\n2 2 5\n3 3 6\n"),
         {4, 1, 0, 1, 5, 0, 0, 0, 6}},
        {"symmetric array",
         mtx("array real symmetric", "3 3\n4\n1\n2\n5\n3\n6\n"),
         {4, 1, 2, 1, 5, 3, 2, 3, 6}},
        {"complex symmetric",
         mtx("array complex symmetric", "2 2\n4 0\n1 1\n5 2\n"),
         {4, {1, 1}, {1, 1}, {5, 2}}},
        {"Hermitian",
         mtx("coordinate complex hermitian", "2 2 3\n1 1 4 0\n2 1 1 1\n2 2 5 0\n"),
         {4, {1, -1}, {1, 1}, 5}},
        {"skew-symmetric",
         mtx("array complex skew-symmetric", "2 2\n3 1\n"),
         {0, {-3, -1}, {3, 1}, 0}},
        {"f4", npy("<f4", false, "3, 3", bytes<float>(false, false)), general},
        {"f8 by columns", npy("<f8", true, "3, 3", bytes<double>(true, false)), general},
        {"f8 big endian, version 2", npy(">f8", false, "3, 3", bytes<double>(false, true), 2),
         general},
        {"c8", npy("<c8", false, "3, 3", bytes<Single>(false, false)), generalComplex},
        {"c16 big endian by columns, version 3",
         npy(">c16", true, "3, 3", bytes<Number>(true, true), 3), generalComplex},
        {"i1", npy("|i1", false, "3, 3", bytes<std::int8_t>(false, false)), general},
        {"u1 by columns", npy("|u1", true, "3,3,", bytes<std::uint8_t>(true, false)), general},
        {"i2 big endian", npy(">i2", false, "3, 3", bytes<std::int16_t>(false, true)), general},
        {"u4", npy("<u4", false, "3, 3", bytes<std::uint32_t>(false, false)), general},
        {"i8 big endian", npy(">i8", false, "3, 3", bytes<std::int64_t>(false, true)), general},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        write("A", c.file);
        write("b", rightHandSide(c.meaning));
        const Outcome outcome = run("solve A b -o x.mtx");
        EXPECT_EQ(0, outcome.code);
        EXPECT_EQ("", outcome.err);
        const bool wide = isComplex(c.meaning);
        EXPECT_NE(std::string::npos, outcome.out.find(wide ? "lumoCgesv" : "lumoSgesv"));
        const std::size_t n = c.meaning.size() == 9 ? 3 : 2;
        const auto x =
            numbers("x.mtx", (wide ? "array complex general, " : "array real general, ") +
                                 std::to_string(n) + " 1");
        ASSERT_EQ(n * (wide ? 2 : 1), x.size());
        for (std::size_t i = 0; i < n; ++i) {
            const Number xi = wide ? Number(x[2 * i], x[2 * i + 1]) : Number(x[i]);
            EXPECT_LT(std::abs(xi - solution[i]), 1e-5) << i;
        }
    }
}

// A real matrix with complex right-hand sides; what is written as .npy is read again.
TEST_F(Command, WritesNumpyFilesThatItReads) {
    write("A.mtx", mtx("coordinate real general", "2 2 2\n1 1 2\n2 2 4\n"));
    write("I.mtx", mtx("coordinate real general", "2 2 2\n1 1 1\n2 2 1\n"));
    write("B.mtx", mtx("array complex general", "2 2\n2 0\n0 4\n2 2\n8 0\n"));
    EXPECT_EQ(0, run("solve A.mtx B.mtx -o X.npy").code);
    const std::string file = read(folder / "X.npy");
    EXPECT_NE(std::string::npos,
              file.find("{'descr': '<c8', 'fortran_order': True, 'shape': (2, 2), }"));
    EXPECT_EQ(128 + 4 * sizeof(std::complex<float>), file.size());
    EXPECT_EQ(0, run("solve I.mtx X.npy -o Y.mtx").code);
    EXPECT_EQ((std::vector<double>{1, 0, 0, 1, 1, 1, 2, 0}),
              numbers("Y.mtx", "array complex general, 2 2"));

    const float b[] = {6, 2};
    write("b.npy", npy("<f4", false, "2,", {reinterpret_cast<const char*>(b), sizeof b}));
    EXPECT_EQ(0, run("solve A.mtx b.npy -o x.npy").code);
    const float x[] = {3, 0.5};
    const std::string vector = read(folder / "x.npy");
    EXPECT_NE(std::string::npos, vector.find("'<f4', 'fortran_order': True, 'shape': (2,), }"));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(x), sizeof x),
              vector.substr(vector.size() - sizeof x));
}

TEST_F(Command, SaysWhenPrecisionIsLost) {
    write("b", mtx("array real general", "1 1\n1\n"));
    write("exact", npy("<f8", false, "1,1", std::string(6, '\0') + "\xf8\x3f"));  // 1.5
    write("more", mtx("array real general", "1 1\n1.1\n"));
    EXPECT_EQ(std::string::npos, run("solve exact b").out.find("rounded"));
    EXPECT_NE(std::string::npos, run("solve more b").out.find("more: rounded"));
}

TEST_F(Command, RefusesBadFilesInOneLine) {
    const std::string real = "array real general", sparse = "coordinate real general";
    const std::string infinity("\0\0\x80\x7f", 4);
    const struct {
        std::string file;
        std::vector<std::string> words;
    } cases[] = {
        {"", {"empty"}},
        {"1 2\n3 4\n", {"neither"}},
        {"%%MatrixMarket tensor array real general\n1 1\n1\n", {"line 1", "tensor"}},
        {mtx("coordinate pattern general", "2 2 1\n1 1\n"), {"pattern"}},
        {mtx("array real hermitian", "1 1\n1\n"), {"Hermitian"}},
        {mtx(real, mtx(real, "2 2\n1\n0\n0\n1\n")), {"line 2", "second header"}},
        {mtx(real, "% nothing more\n"), {"ends"}},
        {mtx(real, "2 two\n1\n"), {"line 2", "number of columns"}},
        {mtx(real, "2 2 2\n1\n0\n0\n1\n"), {"line 2"}},
        {mtx(real, "-1 2\n"), {"negative"}},
        {mtx(real, "2 3\n1\n0\n0\n1\n0\n0\n"), {"not square", "2 x 3"}},
        {mtx(real, "0 0\n"), {"no elements"}},
        {mtx(real, "2 2\n1\n0\n0\n"), {"ends in column 2"}},
        {mtx(real, "2 2\n1\n0\n0\n1\n1\n"), {"line 7", "more than"}},
        {mtx(real, "2 2\n1\n0x\n0\n1\n"), {"line 4", "number"}},
        {mtx(real, "2 2\n1\n0 0\n0\n1\n"), {"line 4"}},
        {mtx(real, "2 2\n1\n0\nnan\n1\n"), {"(1, 2)", "not finite"}},
        {mtx(real, "2 2\n1\n1e999\n0\n1\n"), {"(2, 1)", "not finite"}},
        {mtx(real, "2 2\n1\n-1e39\n0\n1\n"), {"(2, 1)", "too large for single"}},
        {mtx(real, "2000000000 2000000000\n1\n"), {"2000000000 x 2000000000"}},
        {mtx(real, "99999999999999999999 1\n1\n"), {"line 2"}},
        {mtx("array integer general", "1 1\n1.5\n"), {"line 3", "integer"}},
        {mtx(sparse, "2000000000 2000000000 1\n1 1 1\n"), {"too large"}},
        {mtx(sparse, "3000000000 3000000000 1\n1 1 1\n"), {"too large"}},
        {mtx(sparse, "2 2 2\n1 1 1\n3 2 1\n"), {"line 4", "(3, 2)"}},
        {mtx(sparse, "2 2 2\n1 1 1\n0 2 1\n"), {"line 4", "(0, 2)"}},
        {mtx(sparse, "2 2 9\n1 1 1\n2 2 1\n"), {"after 2 of 9"}},
        {mtx("coordinate real symmetric", "2 2 1\n1 2 1\n"), {"line 3", "above the diagonal"}},
        {mtx("coordinate real symmetric", "2 3 1\n1 1 1\n"), {"line 2", "not square"}},
        {mtx("coordinate real skew-symmetric", "2 2 1\n1 1 1\n"), {"line 3", "diagonal"}},
        {mtx("coordinate complex hermitian", "1 1 1\n1 1 1 1\n"), {"line 3", "diagonal"}},
        {"\x93NUMPX", {"ends early"}},
        {"\x93NUMPX\1\0.."s, {"not a NumPy"}},
        {"\x93NUMPY\t\0v\0{}"s, {"version 9"}},
        {npy("<f2", false, "1, 1", ".."), {"'<f2'"}},
        {npy("|O", false, "1, 1", ".."), {"'|O'"}},
        {npy("<f4", false, "1, 1, 1", "...."), {"3 dimensions"}},
        {npy("<f4", false, "", "...."), {"0 dimensions"}},
        {npy("<f4", false, "4", std::string(16, 'a')), {"not square"}},
        {npy("<f4", false, "-1, 1", "...."), {"negative"}},
        {npy("<f4", false, "2000000000, 2000000000", "...."), {"2000000000 x 2000000000"}},
        {npy("<f4", false, "99999999999999999999, 1", "...."), {"header"}},
        {npy("<f4', 'descr': '<f4", false, "1, 1", "...."), {"header"}},
        {npy("<f4", false, "1, 1", "..."), {"ends"}},
        {npy("<f4", false, "1, 1", "....."), {"more than"}},
        {npy("<f4", true, "2, 2", "aaaaaaaa" + infinity + "aaaa"), {"(1, 2)", "not finite"}},
        {"\x93NUMPY\2\0\xff\xff\xff\xff{}"s, {"header"}},
    };
    write("b", mtx(real, "2 1\n1\n1\n"));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        write("A", c.file);
        std::vector<std::string> words = c.words;
        words.push_back("lumo: A: ");
        expectRefusal("solve A b -o x.mtx", words);
    }
}

TEST_F(Command, RefusesWhatDoesNotFit) {
    write("A", mtx("array real general", "2 2\n1\n0\n0\n1\n"));
    write("b", mtx("array real general", "2 1\n1\n1\n"));
    write("long", mtx("array real general", "3 1\n1\n1\n1\n"));
    write("none", mtx("array real general", "2 0\n"));
    fs::create_directory(folder / "folder.mtx");
    expectRefusal("solve A long -o x.mtx", {"long: ", "3 rows"});
    expectRefusal("solve A none -o x.mtx", {"none: "});
    expectRefusal("solve A absent -o x.mtx", {"absent: ", "No such file"});
    expectRefusal("solve folder.mtx b -o x.mtx", {"folder.mtx: ", "directory"});
    expectRefusal("solve A b -o x.txt", {"x.txt: "});
    expectRefusal("solve A b -o folder.mtx", {"folder.mtx: "});
    expectRefusal("solve A b -o absent/x.mtx", {"absent/x.mtx: "});
    EXPECT_NE(0, run("solve A").code);
    EXPECT_NE(0, run("").code);
}

TEST_F(Command, NamesTheColumnOfASingularMatrix) {
    // The third column is the sum of the first two, exactly.
    write("A", mtx("array real general", "3 3\n1\n0\n0\n0\n2\n0\n1\n2\n0\n"));
    write("b", mtx("array real general", "3 1\n1\n1\n1\n"));
    write("x.mtx", "an older solution");
    expectRefusal("solve A b -o x.mtx", {"A: ", "singular", "column 3"});
    EXPECT_EQ("an older solution", read(folder / "x.mtx"));

    write("A", mtx("array real general", "1 1\n1e-30\n"));
    write("b", mtx("array real general", "1 1\n1e30\n"));
    expectRefusal("solve A b -o x.mtx", {"A: ", "not finite"});
    write("b", mtx("array real general", "1 2\n1e30\n1\n"));  // the second solution is finite
    expectRefusal("solve A b -o x.mtx", {"A: ", "not finite"});
    expectRefusal("lstsq A b -o x.mtx", {"A: ", "not finite"});
}

// The columns of each A, or its rows if there are fewer, are orthogonal: X and the residuals are
// worked out by hand.
TEST_F(Command, FitsOrFindsTheSmallestSolution) {
    const struct {
        const char *name, *A, *B, *header;
        std::vector<double> x;
        std::vector<std::string> words;
    } cases[] = {
        {"least squares, two right-hand sides",
         "real general\n4 2\n1\n1\n1\n1\n-3\n-1\n1\n3\n",
         "real general\n4 2\n-5\n-3\n1\n7\n4\n1\n-3\n2\n",
         "array real general, 2 2",
         {0, 2, 1, -0.5},
         {"lumoSgels", "4 x 2", "least squares", "= 2, 0.218 of ||b||  (column 1)",
          "= 4.58258, 0.837 of ||b||  (column 2)"}},
        {"many right-hand sides",
         "real general\n2 1\n2\n0\n",
         "real general\n2 9\n2\n1\n2\n1\n2\n-4\n2\n1\n2\n3\n2\n1\n2\n1\n2\n1\n2\n0\n",
         "array real general, 1 9",
         std::vector<double>(9, 1.),
         {"= 4, 0.894 of ||b||  (the largest, column 3)"}},
        {"complex least squares",
         "complex general\n3 1\n1 0\n0 1\n0 0\n",
         "complex general\n3 1\n1 2\n0 1\n0 3\n",
         "array complex general, 1 1",
         {1, 1},
         {"lumoCgels", "least squares", "= 3.31662, 0.856 of ||b||\n"}},
        {"minimum norm",
         "real general\n2 3\n1\n0\n0\n2\n2\n0\n",
         "real general\n2 1\n5\n4\n",
         "array real general, 3 1",
         {1, 2, 2},
         {"lumoSgels", "2 x 3", "minimum norm", "norm of X:  3\n"}},
        {"complex minimum norm, real right-hand side",
         "complex general\n1 2\n3 0\n0 4\n",
         "real general\n1 1\n25\n",
         "array complex general, 2 1",
         {3, 0, 0, -4},
         {"lumoCgels", "minimum norm", "norm of X:  5\n"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        write("A", mtx("array "s + c.A, ""));
        write("B", mtx("array "s + c.B, ""));
        const Outcome outcome = run("lstsq A B -o x.mtx");
        EXPECT_EQ(0, outcome.code);
        EXPECT_EQ("", outcome.err);
        for (const std::string& word : c.words)
            EXPECT_NE(std::string::npos, outcome.out.find(word)) << word << "\n" << outcome.out;
        EXPECT_EQ(std::string::npos, outcome.out.find("hardly")) << outcome.out;
        const auto x = numbers("x.mtx", c.header);
        ASSERT_EQ(c.x.size(), x.size());
        for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(c.x[i], x[i], 1e-5) << i;
    }
}
TEST_F(Command, NamesTheColumnOrRowThatLacksRank) {
    write("tall", mtx("array real general", "3 2\n1\n2\n2\n0\n0\n0\n"));
    write("wide", mtx("array complex general", "2 3\n1 0\n0 0\n2 1\n0 0\n2 0\n0 0\n"));
    write("b2", mtx("array real general", "2 1\n1\n1\n"));
    write("b3", mtx("array real general", "3 1\n1\n1\n1\n"));
    write("x.npy", "an older solution");
    expectRefusal("lstsq tall b3 -o x.npy", {"tall: ", "rank", "factor R", "column 2"});
    expectRefusal("lstsq wide b2 -o x.npy", {"wide: ", "rank", "factor L", "row 2"});
    expectRefusal("lstsq wide b3 -o x.npy", {"b3: ", "3 rows", "wide has 2"});
    EXPECT_EQ("an older solution", read(folder / "x.npy"));

    // The second line is the first but for a last bit, at both scales.
    const std::string real = "array real general";
    write("tall", mtx(real, "3 2\n1\n1\n1\n3\n3\n3.000001\n"));
    write("steep", mtx(real, "3 2\n1\n1\n1\n3e9\n3e9\n3.000001e9\n"));
    write("wide", mtx(real, "2 3\n1\n3e9\n1\n3e9\n1\n3.000001e9\n"));
    for (const char* files : {"tall b3", "steep b3", "wide b2"}) {
        const Outcome outcome = run("lstsq "s + files);
        EXPECT_NE(std::string::npos, outcome.out.find("hardly has full rank")) << outcome.out;
    }
}

TEST_F(Command, SaysThatLeastSquaresAreNotScaled) {
    write("b", mtx("array real general", "2 1\n1\n1\n"));
    for (const char* value : {"1e-34", "1e34"}) {
        write("A", mtx("array real general", "2 1\n"s + value + "\n0\n"));
        const Outcome outcome = run("lstsq A b");
        EXPECT_NE(std::string::npos, outcome.out.find("A: the largest element is 1e"));
        EXPECT_EQ(std::string::npos, outcome.out.find("b: the largest"));
    }
    // The sum of squares is beyond single precision, and so is the solution.
    write("A", mtx("array real general", "2 1\n3e38\n3e38\n"));
    expectRefusal("lstsq A b -o x.mtx", {"A: ", "scaling"});
}

// The values, norms and approximations of matrices small enough to be worked out by hand.
TEST_F(Command, DecomposesMatrices) {
    const struct {
        const char *name, *A, *k;
        int m, n;
        std::vector<double> s, best;  // singular values, the approximation of rank 1
        std::vector<std::string> words;
    } cases[] = {
        {"wide",
         "real general\n2 3\n3\n2\n2\n3\n2\n-2\n",
         "-k 1,2,1",
         2,
         3,
         {5, 3},
         {2.5, 2.5, 2.5, 2.5, 0, 0},
         {"lumoSgesvd", "2 x 3", "values:     5 3\n", "condition:  1.67", "rank:       2 ",
          "residual:  ", "norm:       5.83095",
          "1   5.1450e-01  5.1450e-01   6.0000e-01  6.0000e-01   100.0 %", "2   0.0000e+00"}},
        {"complex and tall",
         "complex general\n3 2\n2 0\n0 1\n0 0\n0 2\n1 0\n0 0\n",
         "-k 1",
         3,
         2,
         {std::sqrt(8), std::sqrt(2)},
         {2, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0},
         {"lumoCgesvd", "3 x 2", "condition:  2  ",
          "1   4.4721e-01  4.4721e-01   5.0000e-01  5.0000e-01   100.0 %"}},
        {"of lower rank",
         "real general\n3 2\n1\n2\n2\n2\n4\n4\n",
         "-k 1",
         3,
         2,
         {std::sqrt(45), 0},
         {1, 2, 2, 2, 4, 4},
         {"rank:       1 "}},
        {"zero", "real general\n1 2\n0\n0\n", "-k 1", 1, 2, {0}, {0, 0}, {"rank:       0 "}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const bool wide = std::string(c.A).rfind("complex", 0) == 0;
        const std::string kind = wide ? "array complex general, " : "array real general, ";
        const int count = int(c.s.size());
        const auto shape = [](int m, int n) { return std::to_string(m) + " " + std::to_string(n); };
        const auto expectNear = [](const std::vector<double>& expected,
                                   const std::vector<double>& x) {
            ASSERT_EQ(expected.size(), x.size());
            for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(expected[i], x[i], 5e-6) << i;
        };
        fs::remove(folder / "x.u.mtx");
        write("A", mtx("array "s + c.A, ""));
        const Outcome best = run("svd "s + c.k + " A -o x --compare");
        EXPECT_EQ(0, best.code);
        EXPECT_EQ("", best.err);
        for (const std::string& word : c.words)
            EXPECT_NE(std::string::npos, best.out.find(word)) << word << "\n" << best.out;
        expectNear(c.s, numbers("x.s.mtx", "array real general, " + shape(count, 1)));
        expectNear(c.best, numbers("x.k1.mtx", kind + shape(c.m, c.n)));
        EXPECT_EQ(0u, files().count("x.u.mtx"));

        // The factors' product.
        EXPECT_NE(std::string::npos, run("svd A").out.find("values only"));
        EXPECT_EQ(0, run("svd A -o x").code);
        const auto s = numbers("x.s.mtx", "array real general, " + shape(count, 1));
        const auto u = numbers("x.u.mtx", kind + shape(c.m, count));
        const auto vt = numbers("x.vt.mtx", kind + shape(count, c.n));
        const auto at = [&](const std::vector<double>& x, int k) {
            return wide ? Number(x.at(2 * k), x.at(2 * k + 1)) : Number(x.at(k));
        };
        std::vector<double> product;
        for (int j = 0; j < c.n; ++j)
            for (int i = 0; i < c.m; ++i) {
                Number sum = 0;
                for (int l = 0; l < count; ++l)
                    sum += at(u, l * c.m + i) * s[l] * at(vt, j * count + l);
                product.push_back(sum.real());
                if (wide) product.push_back(sum.imag());
            }
        write("A.npy", npy("<f4", false, "1,", "aaaa"));  // the factors are of the same format
        EXPECT_EQ(0, run("svd A.npy -o y").code);
        EXPECT_EQ(1u, files().count("y.vt.npy"));
        expectNear(numbers("A", kind + shape(c.m, c.n)), product);
    }
}

// An image of full rank is itself; samples in the wrong channel or place would show.
TEST_F(Command, DecomposesImages) {
    std::string samples, plain, wide = "\xff\xff"s;
    for (int k = 0; k < 60; ++k) {
        const int sample = k * k * 37 % 251 + (k % 7 == 0 ? 4 : 0);
        samples.push_back(char(sample));
        plain += std::to_string(sample) + (k % 9 ? " " : " # comment\n");
        if (k < 11) wide += {char(k * 23), char(k * k)};
    }
    const struct {
        const char* extension;
        std::string file, raw;  // as it is, as it is written
        const char* rank;
    } cases[] = {
        {"ppm", "P6\n5 4\n255\n" + samples, "", "4"},
        {"ppm", "P3 4 # x\n5 255\n" + plain, "P6\n4 5\n255\n" + samples, "4"},
        {"pgm", "P5\n6 10\n255\n" + samples, "", "6"},
        {"pgm", "P2 60 1 255 " + plain, "P5\n60 1\n255\n" + samples, "1"},
        {"pgm", "P5\n4 3\n65535\n" + wide, "", "3"},
        {"pgm", "P2 3 2 12  1 2 3  4 8 12", "P5\n3 2\n12\n\1\2\3\4\10\14", "2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file.substr(0, 12));
        write("image", c.file);
        const Outcome outcome = run("svd image -o x -k "s + c.rank);
        EXPECT_EQ(0, outcome.code) << outcome.err;
        EXPECT_NE(std::string::npos, outcome.out.find("0.000  identical")) << outcome.out;
        const std::string name = "x.k"s + c.rank + "." + c.extension;
        EXPECT_EQ(c.raw.empty() ? c.file : c.raw, read(folder / name));
    }
    // Of rank 1: 255 where the sum of the squares is 2 * 255^2, and a half of it at rank 1.
    write("image", "P2 2 2 255 255 0 0 255");
    const Outcome outcome = run("svd image -k 1");
    EXPECT_NE(std::string::npos, outcome.out.find("7.0711e-01  7.0711e-01")) << outcome.out;
    EXPECT_NE(std::string::npos, outcome.out.find("127.500    6.0 dB")) << outcome.out;
}

#ifdef LUMO_HAVE_PNG
TEST_F(Command, DecomposesThePhotograph) {
    const std::string photograph = LUMO_DATA "/chelsea.png";
    const Outcome outcome = run("svd " + photograph + " -k 20,300 -o x");
    EXPECT_EQ(0, outcome.code) << outcome.err;
    EXPECT_NE(std::string::npos, outcome.out.find("300 x 451, red, green and blue"));
    EXPECT_NE(std::string::npos, outcome.out.find("0.000  identical")) << outcome.out;
    ASSERT_EQ(0, run("svd x.k300.png -k 300 -o y").code);
    EXPECT_EQ(read(folder / "x.s.mtx"), read(folder / "y.s.mtx"));
    const std::string data = read(photograph);
    write("early.png", data.substr(0, data.size() / 2));
    expectRefusal("svd early.png -k 20 -o z", {"early.png: "});
    write("other.png", data.substr(0, 99999) + "x" + data.substr(100000));
    expectRefusal("svd other.png -k 20 -o z", {"other.png: "});
}
#endif

TEST_F(Command, RefusesWhatItCannotDecompose) {
    const std::string refused[][2] = {
        {"P5\n3 2\n255\nabcde", "ends early"},
        {"P5\n3 2\n300\nabcdefghijk", "ends early"},
        {"P5\n2000000000 2000000000\n255\n", "ends early"},
        {"P2 2 2 255 1 2 3", "ends early"},
        {"P5\n3 2\n255\nabcdefg", "more than"},
        {"P2 1 1 255 1 2", "more than"},
        {"P5\n0 2\n255\n", "no pixels"},
        {"P5\n-3 2\n255\nabcdef", "the width"},
        {"P2 1 1 65536 1", "65536"},
        {"P2 1 1 12 13", "a sample of 13"},
        {"P2 1 1 12 x", "a sample"},
        {"P6", "neither"},
        {"P6\n", "ends early"},
        {mtx("array real general", "2 2\n1\n0\nnan\n1\n"), "(1, 2) is not finite"},
        {mtx("array real general", "2 0\n"), "no elements"},
        {mtx("array real general", "2 2\n3e38\n3e38\n3e38\n3e38\n"), "scaling"},
    };
    for (const auto& [file, words] : refused) {
        SCOPED_TRACE(file);
        write("A", file);
        expectRefusal("svd A -k 1 -o x", {"A: ", words});
    }
    const std::string good = mtx("array real general", "2 1\n1\n1\n");
    write("A", good);
    write("x.k1.mtx", good);
    fs::create_directory(folder / "y.vt.mtx");
    expectRefusal("svd A -k 2 -o x", {"A: 2 x 1 has no rank 2"});
    expectRefusal("svd A -o y", {"y.vt.mtx: ", "not a file"});
    expectRefusal("svd A -o absent/x", {"absent/x.s.mtx: "});
    // Found out when the approximation is written already.
    expectRefusal("svd A -k 1 -o " + std::string(235, 'x'), {".spectrum.png: ", "too long"});
    expectRefusal("svd x.k1.mtx -k 1 -o x", {"x.k1.mtx: ", "overwrite"});
    EXPECT_NE(0, run("svd A -k 0").code);
    EXPECT_EQ(std::string::npos, run("svd A").out.find("scale"));
    write("A", mtx("array real general", "1 1\n1e13\n"));
    EXPECT_NE(std::string::npos, run("svd A").out.find("does not scale"));
}

// The answers that examples/data/README.md derives.
TEST_F(Command, SolvesTheExampleCircuits) {
    const std::string data = LUMO_DATA "/";
    ASSERT_EQ(0, run("solve " + data + "cube.mtx " + data + "cube_current.mtx -o x.mtx").code);
    const auto voltage = numbers("x.mtx", "array real general, 7 1");
    EXPECT_NEAR(5. / 6, voltage.at(0), 1e-6);
    EXPECT_NEAR(1. / 3, voltage.at(6), 1e-6);
    ASSERT_EQ(0, run("solve " + data + "filter.mtx " + data + "filter_current.mtx -o x.mtx").code);
    const auto parts = numbers("x.mtx", "array complex general, 3 1");
    EXPECT_NEAR(std::sqrt(1. / 8), std::abs(Number(parts.at(4), parts.at(5))), 1e-6);
}

TEST_F(Command, TellsWhatItRunsOn) {
    const Outcome outcome = run("info");
    EXPECT_EQ(0, outcome.code);
    for (const char* word : {"software (LUMO_PLATFORM=software)", "device 0", "capability", "MiB",
                             "MHz", "CPU LAPACK:", "CUDA runtime:", "CUDA driver:"})
        EXPECT_NE(std::string::npos, outcome.out.find(word)) << word << "\n" << outcome.out;
    setenv("LUMO_PLATFORM", "abacus", 1);
    const Outcome refused = run("info");
    setenv("LUMO_PLATFORM", "software", 1);
    EXPECT_EQ(1, refused.code);
    EXPECT_NE(std::string::npos, refused.out.find("LUMO_PLATFORM=abacus names no platform"));
}

TEST_F(Command, MeasuresItsSpeed) {
    const Outcome outcome = run("bench zgemm sgels -n 100 --json speeds.json --plot speeds.svg");
    EXPECT_EQ(0, outcome.code) << outcome.err;
    EXPECT_EQ((std::set<std::string>{"err", "out", "speeds.json", "speeds.svg"}), files());
    const std::string json = read(folder / "speeds.json"), svg = read(folder / "speeds.svg");
    for (const char* word : {"\"zgemm\"", "\"sgels\"", "\"crossover\": ", "{\"n\": 100, \"lumo_"})
        EXPECT_NE(std::string::npos, json.find(word)) << word << "\n" << json;
    for (const char* word : {">zgemm<", ">sgels<", "</svg>"})
        EXPECT_NE(std::string::npos, svg.find(word)) << word;
    expectRefusal("bench sgemm dgels --plot speeds.png", {"dgels", "zgemm"});
    expectRefusal("bench sgemm -n 16 --json j --plot absent/speeds.svg", {"absent/speeds.svg: "});
}

TEST(SpeedCurve, CrossesWhereLumoStaysFaster) {
    const std::vector<int> n{64, 128, 256};
    const auto crossover = [&](const std::vector<double>& lumo) {
        return lumo::SpeedCurve{"", n, lumo, {1, 1, 1}}.crossover();
    };
    EXPECT_EQ(0, crossover({2, 2, 1}));
    EXPECT_EQ(64, crossover({2, 1.1, 3}));
    EXPECT_DOUBLE_EQ(128 * std::sqrt(2.), crossover({2, 0.5, 2}));
    EXPECT_DOUBLE_EQ(64 * std::cbrt(2.), crossover({0.5, 4, 9}));
}

TEST_F(Command, TunesWhatItIsAskedTo) {
    write("crossover", "# mine\ncuda sgemm 512\nsoftware sgemm 7\nsoftware dgemm 9\n");
#ifdef LUMO_DROPIN_FOLDER  // a sanitizer's dlopen does not look where the program says
    setenv("LD_LIBRARY_PATH", LUMO_DROPIN_FOLDER, 1);
#endif
    const Outcome outcome = run("tune sgemm cgetrf -n 64 -o crossover");
    EXPECT_EQ(0, outcome.code) << outcome.err;
    std::istringstream lines(read(folder / "crossover"));
    std::vector<std::string> kept;
    std::set<std::string> sizes;
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("software sgemm ", 0) == 0 || line.rfind("software cgetrf ", 0) == 0)
            sizes.insert(line.substr(line.rfind(' ') + 1));
        else
            kept.push_back(line);
    EXPECT_EQ((std::vector<std::string>{"# mine", "cuda sgemm 512", "software dgemm 9"}), kept);
    for (const std::string& size : sizes) EXPECT_TRUE(size == "64" || size == "never") << size;
    EXPECT_FALSE(sizes.empty());
    EXPECT_EQ(1, run("tune sgemm -n 64 -o crossover/file").code);
}

}  // namespace
