// lumo solve: every format, and every way to get it wrong.
#include <cmath>
#include <cstdint>

#include "command/command.h"

namespace test {
namespace {

// By rows.
const Numbers general{4, 1, 2, 0, 5, 1, 3, 0, 6};
const Numbers generalComplex{{4, 1}, 1, 2, 0, {5, -2}, 1, 3, 0, {6, 3}};

// A NumPy file of one of them.
template <class Real>
std::string npyOf(const std::string& descr, const Numbers& matrix, bool fortran = false,
                  int version = 1) {
    std::string data;
    const auto append = [&](auto value) {
        std::string text(reinterpret_cast<const char*>(&value), sizeof value);
        if (descr[0] == '>') std::reverse(text.begin(), text.end());
        data += text;
    };
    for (int k = 0; k < 9; ++k) {
        const Number z = matrix[fortran ? k % 3 * 3 + k / 3 : k];
        append(Real(z.real()));
        if (descr[1] == 'c') append(Real(z.imag()));
    }
    return npy(descr, fortran, fortran ? "3,3," : "3, 3", data, version);
}

// Each is the solution where the matrix is the identity.
TEST_F(Command, ReadsEveryFormat) {
    write("I2", mtx("coordinate real general", "2 2 2\n1 1 1\n2 2 1\n"));
    write("I3", mtx("coordinate real general", "3 3 3\n1 1 1\n2 2 1\n3 3 1\n"));
    const struct {
        const char* name;
        std::string file;
        Numbers meaning;
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
        {"Fortran's exponents",
         mtx("array real general", "3 3\n4.0D0\n0\n3\n1d+00\n5\n0\n20D-1\n1\n6\n"), general},
        {"pattern", mtx("coordinate pattern symmetric", "2 2 2\n1 1\n2 1\n"), {1, 1, 1, 0}},
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
        {"f2",
         npy("<f2", false, "2, 2", "\0\xbe\1\0\xff\x7b\x55\x35"s),
         {-1.5, std::ldexp(1, -24), 65504, 1365. / 4096}},
        {"f4", npyOf<float>("<f4", general), general},
        {"f8 by columns", npyOf<double>("<f8", general, true), general},
        {"f8 big endian, version 2", npyOf<double>(">f8", general, false, 2), general},
        {"c8", npyOf<float>("<c8", generalComplex), generalComplex},
        {"c16 big endian by columns, version 3", npyOf<double>(">c16", generalComplex, true, 3),
         generalComplex},
        {"i1", npyOf<std::int8_t>("|i1", general), general},
        {"u1 by columns", npyOf<std::uint8_t>("|u1", general, true), general},
        {"i2 big endian", npyOf<std::int16_t>(">i2", general), general},
        {"u4", npyOf<std::uint32_t>("<u4", general), general},
        {"i8 big endian", npyOf<std::int64_t>(">i8", general), general},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        write("A", c.file);
        const std::size_t n = c.meaning.size() == 9 ? 3 : 2;
        const Outcome outcome = run("solve I" + std::to_string(n) + " A -o x.mtx");
        EXPECT_EQ(0, outcome.code);
        EXPECT_EQ("", outcome.err);
        const bool wide =
            std::any_of(c.meaning.begin(), c.meaning.end(), [](Number z) { return z.imag() != 0; });
        Numbers expected;
        for (std::size_t k = 0; k < n * n; ++k) expected.push_back(c.meaning[k % n * n + k / n]);
        const std::string shape = std::to_string(n) + " " + std::to_string(n);
        EXPECT_EQ(
            expected,
            numbers("x.mtx", (wide ? "array complex general, " : "array real general, ") + shape));
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
              file.find("{'descr': '<c16', 'fortran_order': True, 'shape': (2, 2), }"));
    EXPECT_EQ(128 + 4 * sizeof(Number), file.size());
    EXPECT_EQ(0, run("solve I.mtx X.npy -o Y.mtx").code);
    EXPECT_EQ((Numbers{1, {0, 1}, {1, 1}, 2}), numbers("Y.mtx", "array complex general, 2 2"));

    const float a[] = {2, 0, 0, 4}, b[] = {6, 2};
    write("A.npy", npy("<f4", false, "2,2", {reinterpret_cast<const char*>(a), sizeof a}));
    write("b.npy", npy("<f4", false, "2,", {reinterpret_cast<const char*>(b), sizeof b}));
    EXPECT_EQ(0, run("solve A.npy b.npy -o x.npy").code);
    const float x[] = {3, 0.5};
    const std::string vector = read(folder / "x.npy");
    EXPECT_NE(std::string::npos, vector.find("'<f4', 'fortran_order': True, 'shape': (2,), }"));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(x), sizeof x),
              vector.substr(vector.size() - sizeof x));
    EXPECT_EQ(0, run("solve A.mtx b.npy -o x.npy").code);
    expectWords(read(folder / "x.npy"), {"'<f8', "});
}

TEST_F(Command, SaysWhenPrecisionIsLost) {
    write("b", mtx("array real general", "1 1\n1\n"));
    write("exact", npy("<f8", false, "1,1", std::string(6, '\0') + "\xf8\x3f"));  // 1.5
    write("more", mtx("array real general", "1 1\n1.1\n"));
    EXPECT_EQ(std::string::npos, run("solve more b").out.find("rounded"));
    EXPECT_EQ(std::string::npos, run("solve exact b --precision s").out.find("rounded"));
    expectWords(run("solve more b --precision s").out, {"more: rounded to single precision"});
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
        {mtx("array pattern general", "1 1\n1\n"), {"pattern"}},
        {mtx("array real hermitian", "1 1\n1\n"), {"Hermitian"}},
        {mtx(real, mtx(real, "2 2\n1\n0\n0\n1\n")), {"line 2", "second header"}},
        {mtx(real, "% nothing more\n"), {"ends"}},
        {mtx(real, "2 two\n1\n"), {"line 2", "number of columns"}},
        {mtx(real, "2 2 2\n1\n0\n0\n1\n"), {"line 2"}},
        {mtx(real, "2 3\n1\n0\n0\n1\n0\n0\n"), {"not square", "2 x 3"}},
        {mtx(real, "2 2\n1\n0\n0\n"), {"ends in column 2"}},
        {mtx(real, "2 2\n1\n0\n0\n1\n1\n"), {"line 7", "more than"}},
        {mtx(real, "2 2\n1\n0x\n0\n1\n"), {"line 4", "number"}},
        {mtx(real, "2 2\n1\n0\nnan\n1\n"), {"(1, 2)", "not finite"}},
        {mtx(real, "2 2\n1\n1e999\n0\n1\n"), {"(2, 1)", "not finite"}},
        {mtx(real, "2 2\n1\n-1e39\n0\n1\n"), {"(2, 1)", "too large for single"}},
        {mtx(real, "2000000000 2000000000\n1\n"), {"2000000000 x 2000000000"}},
        {mtx("array integer general", "1 1\n1.5\n"), {"line 3", "integer"}},
        {mtx(sparse, "2000000000 2000000000 1\n1 1 1\n"), {"too large"}},
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
        {npy("<f16", false, "1, 1", ".."), {"'<f16'"}},
        {npy(">f2", false, "2, 2", "|\0\0\0\0\0\0\0"s), {"(1, 1)", "not finite"}},
        {npy("<f4", false, "1, 1, 1", "...."), {"3 dimensions"}},
        {npy("<f4", false, "", "...."), {"0 dimensions"}},
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
        expectRefusal("solve A b -o x.mtx --precision s", words);
    }
}

TEST_F(Command, RefusesWhatDoesNotFit) {
    write("A", mtx("array real general", "2 2\n1\n0\n0\n1\n"));
    write("b", mtx("array real general", "2 1\n1\n1\n"));
    write("long", mtx("array real general", "3 1\n1\n1\n1\n"));
    write("none", mtx("array real general", "2 0\n"));
    fs::create_directory(folder / "folder.mtx");
    expectRefusal("solve A long -o x.mtx", {"long: ", "3 rows"});
    expectRefusal("solve A none -o x.mtx", {"none: ", "no elements"});
    expectRefusal("solve A absent -o x.mtx", {"absent: ", "No such file"});
    expectRefusal("solve folder.mtx b -o x.mtx", {"folder.mtx: ", "directory"});
    expectRefusal("solve - - -o x.mtx <A", {"both"});
    // Before any work: without A.
    expectRefusal("solve absent b -o x.txt", {"x.txt: "});
    expectRefusal("lstsq absent b -o folder.mtx", {"folder.mtx: "});
    expectRefusal("solve absent b -o absent/x.mtx", {"absent/x.mtx: "});
}

TEST_F(Command, ReadsAndWritesStreams) {
    write("A", mtx("coordinate real general", "2 2 2\n1 1 2\n2 2 4\n"));
    write("b", mtx("array real general", "2 1\n6\n2\n"));
    const std::string x = mtx("array real general", "2 1\n3\n0.5\n");
    EXPECT_EQ(x, run("solve A - -o - <b").out);
    EXPECT_EQ(x, run("lstsq - b -o - <A").out);
    expectWords(read(folder / "err"), {"solved: status 0"});
    // A stream that is closed or full, a file that is planted in the way.
    for (const char* failing :
         {"solve A b >/dev/full", "--help >/dev/full", "solve A b -o x.mtx >&-"}) {
        const Outcome outcome = run(failing);
        EXPECT_EQ(1, outcome.code) << failing;
        expectWords(outcome.err, {"standard output: "});
    }
    EXPECT_EQ(x, read(folder / "x.mtx"));
    shell("sh -c 'ln -s victim y.mtx.$$.1.part; ln -s victim y.mtx.$$.part; exec \"" LUMO_COMMAND
          "\" solve A b -o y.mtx'");
    EXPECT_EQ(x, read(folder / "y.mtx"));
    EXPECT_FALSE(fs::exists(folder / "victim"));
#ifdef LUMO_HAVE_ZLIB
    shell("gzip A b; head -c 40 A.gz >early; printf '\\377' | cat early - A.gz >other");
    EXPECT_EQ(x, run("solve A.gz - -o - <b.gz").out);
    expectRefusal("solve early b.gz", {"early: ends early"});
    expectRefusal("solve other b.gz", {"other: cannot be unpacked"});
#endif
}

TEST_F(Command, WarnsOfIllConditionedMatrices) {
    write("b", mtx("array real general", "2 1\n1\n1\n"));
    const std::string cases[][3] = {
        {"real general\n2 2 2\n1 1 3\n2 2 1e-6\n", "s", ""},
        {"real general\n2 2 2\n1 1 3\n2 2 1e-8\n", "s",
         "A: ill-conditioned, its reciprocal condition number is 3.3e-09"},
        {"complex general\n2 2 2\n1 1 0 3\n2 2 1e-8 0\n", "s", "A: ill-conditioned"},
        {"real general\n2 2 2\n1 1 3\n2 2 1e-15\n", "d", ""},
        {"complex general\n2 2 2\n1 1 0 3\n2 2 1e-17 0\n", "d", "A: ill-conditioned"}};
    for (const auto& [matrix, precision, words] : cases) {
        write("A", mtx("coordinate " + matrix, ""));
        const Outcome outcome = run("solve A b --precision " + precision);
        EXPECT_EQ(0, outcome.code);
        EXPECT_EQ(words.empty(), outcome.err.empty());
        expectWords(outcome.err, {words});
    }
}

TEST_F(Command, NamesTheColumnOfASingularMatrix) {
    // The third column is the sum of the first two, exactly.
    write("A", mtx("array real general", "3 3\n1\n0\n0\n0\n2\n0\n1\n2\n0\n"));
    write("b", mtx("array real general", "3 1\n1\n1\n1\n"));
    write("x.mtx", "an older solution");
    expectRefusal("solve A b -o x.mtx", {"A: ", "singular in double", "column 3"});
    EXPECT_EQ("an older solution", read(folder / "x.mtx"));

    write("A", mtx("array real general", "1 1\n1e-300\n"));
    write("b", mtx("array real general", "1 1\n1e300\n"));
    expectRefusal("solve A b -o x.mtx", {"A: ", "not finite"});
    write("b", mtx("array real general", "1 2\n1e300\n1\n"));  // the second solution is finite
    expectRefusal("solve A b -o x.mtx", {"A: ", "not finite"});
    expectRefusal("lstsq A b -o x.mtx", {"A: ", "not finite"});
}

TEST_F(Command, RefinesSinglePrecision) {
    const struct {
        std::string A;
        Numbers x;  // empty where A is too ill-conditioned for its digits
        std::vector<std::string> words;
    } cases[] = {
        {"real general\n2 2\n3\n1\n1\n2\n", {0.2, 0.4}, {"Dsgesv", "refined:    2 steps from"}},
        {"complex general\n2 2\n3 0\n0 1\n0 1\n3 0\n",
         {{0.3, -0.1}, {0.3, -0.1}},
         {"Zcgesv", "refined:    2 steps from"}},
        {"real general\n2 2\n1e39\n0\n0\n1\n", {1e-39, 1}, {"too large for", "rcond:      1e-39"}},
        {"real general\n2 2\n1\n1\n1\n1.00000001\n", {1, 0}, {"singular in single"}},
        {"real general\n2 2\n1\n2\n1.00000005\n2.00000014\n", {}, {"30 steps"}},
    };
    write("b", mtx("array real general", "2 1\n1\n1\n"));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.A);
        write("A", mtx("array " + c.A, ""));
        const Outcome outcome = run("solve A b --precision mixed -o x.mtx");
        EXPECT_EQ(0, outcome.code) << outcome.err;
        expectWords(outcome.out, c.words);
        const bool refined = outcome.out.find("to double") != std::string::npos;
        EXPECT_EQ(refined, outcome.out.find("rcond") == std::string::npos);  // without factors
        const std::string kind = c.A.substr(0, c.A.find('\n'));
        const Numbers x = numbers("x.mtx", "array " + kind + ", 2 1");
        if (!c.x.empty()) expectNear(c.x, x, 1e-15);
    }
}

// The answers that examples/data/README.md derives.
TEST_F(Command, SolvesTheExampleCircuits) {
    const std::string data = LUMO_DATA "/";
    ASSERT_EQ(0, run("solve " + data + "cube.mtx " + data + "cube_current.mtx -o x.mtx").code);
    const auto voltage = numbers("x.mtx", "array real general, 7 1");
    expectNear({5. / 6, 1. / 3}, {voltage.at(0), voltage.at(6)}, 1e-14);
    ASSERT_EQ(0, run("solve " + data + "filter.mtx " + data + "filter_current.mtx -o x.mtx").code);
    const auto filtered = numbers("x.mtx", "array complex general, 3 1");
    EXPECT_NEAR(std::sqrt(1. / 8), std::abs(filtered.at(2)), 1e-14);
}

}  // namespace
}  // namespace test
