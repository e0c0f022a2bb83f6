// lumo svd, of matrices and of images.
#include <cmath>
#include <cstring>

#include "command/command.h"
#ifdef LUMO_HAVE_PNG
#include <zlib.h>
#endif

namespace test {
namespace {

// The values, norms and approximations of matrices small enough to be worked out by hand.
TEST_F(Command, DecomposesMatrices) {
    const struct {
        const char *name, *A;
        Numbers s, best;  // singular values, the approximation of rank 1
        std::vector<std::string> words;
    } cases[] = {
        {"wide",
         "real general\n2 3\n3\n2\n2\n3\n2\n-2\n",
         {5, 3},
         {2.5, 2.5, 2.5, 2.5, 0, 0},
         {"2 x 3", "values:     5 3\n", "condition:  1.67", "rank:       2 ",
          "residual:  ", "norm:       5.83095",
          "1   5.1450e-01  5.1450e-01   6.0000e-01  6.0000e-01   100.0 %", "2   0.0000e+00"}},
        {"complex and tall",
         "complex general\n3 2\n2 0\n0 1\n0 0\n0 2\n1 0\n0 0\n",
         {std::sqrt(8), std::sqrt(2)},
         {2, 0, 0, {0, 2}, 0, 0},
         {"3 x 2", "condition:  2  ",
          "1   4.4721e-01  4.4721e-01   5.0000e-01  5.0000e-01   100.0 %"}},
        {"of lower rank",
         "real general\n3 2\n1\n2\n2\n2\n4\n4\n",
         {std::sqrt(45), 0},
         {1, 2, 2, 2, 4, 4},
         {"rank:       1 "}},
        {"zero", "real general\n1 2\n0\n0\n", {0}, {0, 0}, {"rank:       0 "}},
    };
    for (const auto& c : cases)
        for (const std::string precision : {"", " --precision s"}) {
            SCOPED_TRACE(c.name + precision);
            const double error = precision.empty() ? 1e-14 : 5e-6;
            const bool wide = std::string(c.A).rfind("complex", 0) == 0;
            const std::string kind = wide ? "array complex general, " : "array real general, ";
            const int count = int(c.s.size());
            int m = 0, n = 0;
            ASSERT_EQ(2, std::sscanf(std::strchr(c.A, '\n'), "%d %d", &m, &n));
            const auto shape = [](int m, int n) {
                return std::to_string(m) + " " + std::to_string(n);
            };
            fs::remove(folder / "x.u.mtx");
            write("A", mtx("array "s + c.A, ""));
            const Outcome best =
                run("svd -k 1"s + (n > 2 ? ",2,1" : "") + " A -o x --compare" + precision);
            EXPECT_EQ(0, best.code);
            EXPECT_EQ("", best.err);
            expectWords(best.out, c.words);
            expectWords(best.out, {"lumo"s + (precision.empty() ? "DZ" : "SC")[wide] + "gesdd"});
            expectNear(c.s, numbers("x.s.mtx", "array real general, " + shape(count, 1)), error);
            expectNear(c.best, numbers("x.k1.mtx", kind + shape(m, n)), error);
            EXPECT_EQ(0u, files().count("x.u.mtx"));

            // The factors' product.
            expectWords(run("svd A").out, {"values only"});
            EXPECT_EQ(0, run("svd A -o x" + precision).code);
            const auto s = numbers("x.s.mtx", "array real general, " + shape(count, 1));
            const auto u = numbers("x.u.mtx", kind + shape(m, count));
            const auto vt = numbers("x.vt.mtx", kind + shape(count, n));
            Numbers product;
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i) {
                    Number sum = 0;
                    for (int l = 0; l < count; ++l)
                        sum += u.at(l * m + i) * s.at(l) * vt.at(j * count + l);
                    product.push_back(sum);
                }
            expectNear(numbers("A", kind + shape(m, n)), product, error);
            write("A.npy", npy("<f4", false, "1,", "aaaa"));  // the factors are of the same format
            EXPECT_EQ(0, run("svd A.npy -o y").code);
            expectWords(read(folder / "y.vt.npy"), {"'<f4'"});
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
        expectWords(outcome.out, {"lumoSgesdd", "0.000  identical"});
        const std::string name = "x.k"s + c.rank + "." + c.extension;
        EXPECT_EQ(c.raw.empty() ? c.file : c.raw, read(folder / name));
    }
    // Of rank 1: 255 where the sum of the squares is 2 * 255^2, and a half of it at rank 1.
    write("image", "P2 2 2 255 255 0 0 255");
    expectWords(run("svd image -k 1 --precision d").out,
                {"lumoDgesdd", "7.0711e-01  7.0711e-01", "127.500    6.0 dB"});
}

#ifdef LUMO_HAVE_PNG
std::string number(std::size_t n) {
    return {char(n >> 24), char(n >> 16), char(n >> 8), char(n)};
}
std::string chunk(const std::string& text) {
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(text.data()), uInt(text.size()));
    return number(text.size() - 4) + text + number(sum);
}
// A PNG file of these rows, each after a zero; type: 0 is grey, 2 color, 3 a palette, 4 and 6 the
// first two with an alpha channel.
std::string png(int width, int height, char depth, char type, const std::string& rows) {
    uLongf size = compressBound(rows.size());
    std::string data(size, 0);
    compress(reinterpret_cast<Bytef*>(data.data()), &size,
             reinterpret_cast<const Bytef*>(rows.data()), rows.size());
    return "\x89PNG\r\n\x1a\n" +
           chunk("IHDR" + number(width) + number(height) + depth + type + "\0\0\0"s) +
           chunk("PLTEabcdef") + chunk("IDAT" + data.substr(0, size)) + chunk("IEND");
}

// Images of rank 1, which are their own approximation.
TEST_F(Command, TakesEveryPngWithoutTransparency) {
    const struct {
        std::string file, shape;
        Numbers s;
    } cases[] = {
        {png(600, 600, 1, 0, std::string(76 * 600, 0).replace(1, 75, 75, -1)),
         "600 1",
         {255 * std::sqrt(600)}},
        {png(2, 1, 16, 0, "\0\x12\x34\xff\xfe"s), "1 1", {std::hypot(0x1234, 0xfffe)}},
        {png(2, 1, 8, 6, "\0\3\5\1\xff\4\xc\0\xff"s), "1 3", {5, 13, 1}},
        {png(1, 1, 16, 4, "\0\1\2\xff\xff"s), "1 1", {258}},
        {png(2, 1, 1, 3, "\0\x40"s),
         "1 3",
         {std::hypot('a', 'd'), std::hypot('b', 'e'), std::hypot('c', 'f')}},
    };
    for (const auto& c : cases) {
        write("x.k1.png", c.file);
        for (int time = 0; time < 2; ++time) {
            ASSERT_EQ(0, run("svd - -k 1 -o x <x.k1.png").code) << read(folder / "err");
            auto s = numbers("x.s.mtx", "array real general, " + c.shape);
            s.resize(c.s.size());  // the others are zero, but for rounding
            expectNear(c.s, s, 1e-6);
        }
    }
    write("A", png(1, 1, 8, 4, "\0\1\xfe"s));
    expectRefusal("svd A", {"A: has transparency"});
    write("A", png(60000, 60000, 8, 0, ""));
    expectRefusal("svd A", {"A: ends early"});
}

TEST_F(Command, DecomposesThePhotograph) {
    const std::string photograph = LUMO_DATA "/chelsea.png";
    const Outcome outcome = run("svd " + photograph + " -k 20,300 -o x");
    EXPECT_EQ(0, outcome.code) << outcome.err;
    expectWords(outcome.out, {"300 x 451, red, green and blue", "0.000  identical"});
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
        {"P5\n3 2\n255\nabcdefg", "more than"},
        {"P2 1 1 255 1 2", "more than"},
        {"P5\n0 2\n255\n", "no pixels"},
        {"P5\n-3 2\n255\nabcdef", "the width"},
        {"P2 1 1 65536 1", "65536"},
        {"P2 1 1 12 13", "a sample of 13"},
        {"P6", "neither a Matrix Market nor a NumPy file, nor an image: PGM, PPM or PNG"},
        {"P6\n", "ends early"},
        {mtx("array real general", "2 2\n1\n0\nnan\n1\n"), "(1, 2) is not finite"},
        {mtx("array real general", "2 0\n"), "no elements"},
        {mtx("array real general", "2 2\n1e308\n1e308\n1e308\n1e308\n"), "scaling"},
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
    EXPECT_EQ("", read(folder / "out"));
    expectRefusal("svd x.k1.mtx -k 1 -o x", {"x.k1.mtx: ", "overwrite"});
    write("A", mtx("array real general", "1 2\n3e155\n4e155\n"));  // whose squares overflow
    for (const std::string rank : {"", " -k 1"}) {
        const Outcome outcome = run("svd A" + rank);
        expectWords(outcome.out, {"values:     5e+155\n"});
        EXPECT_EQ("", outcome.err);
    }
}

}  // namespace
}  // namespace test
