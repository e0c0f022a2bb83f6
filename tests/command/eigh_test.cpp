// lumo eigh.
#include <cmath>
#include <cstdio>
#include <cstring>

#include "command/command.h"

namespace test {
namespace {

// Values worked out by hand, and vectors that are A's, whatever the file stores of it.
TEST_F(Command, FindsEigenvalues) {
    const struct {
        const char *name, *file;
        Numbers A, w;
        std::vector<std::string> words;
    } cases[] = {
        {"symmetric",
         "array real symmetric\n2 2\n2\n1\n2\n",
         {2, 1, 1, 2},
         {1, 3},
         {"2 x 2, symmetric", "values:     1 3\n", "norm:       3.16228"}},
        {"general, symmetric",
         "array real general\n3 3\n0\n0\n4\n0\n-1\n0\n4\n0\n0\n",
         {0, 0, 4, 0, -1, 0, 4, 0, 0},
         {-4, -1, 4},
         {"values:     -4 -1 4\n"}},
        {"Hermitian",
         "array complex hermitian\n2 2\n1 0\n0 2\n1 0\n",
         {1, {0, 2}, {0, -2}, 1},
         {-1, 3},
         {"2 x 2, Hermitian", "values:     -1 3\n"}},
        {"zero", "coordinate real symmetric\n2 2 0\n", {0, 0, 0, 0}, {0, 0}, {"residual:   0.0"}},
    };
    for (const auto& c : cases)
        for (const std::string precision : {"", " --precision s"}) {
            SCOPED_TRACE(c.name + precision);
            const bool isComplex = std::strstr(c.file, "complex");
            const std::string size = std::to_string(c.w.size());
            std::string kind = isComplex ? "array complex general, " : "array real general, ";
            const double error = precision.empty() ? 1e-14 : 5e-6;
            write("A", mtx(c.file, ""));
            const Outcome outcome = run("eigh A -o x --compare" + precision);
            EXPECT_EQ(0, outcome.code);
            EXPECT_EQ("", outcome.err);
            expectWords(outcome.out, c.words);
            expectWords(outcome.out,
                        {"lumo"s + (precision.empty() ? "DZ" : "SC")[isComplex] +
                             (isComplex ? "heevd" : "syevd") + ", with vectors",
                         "residual:", "orthogonal:", "compared:", "wrote:      x.v.mtx"});
            const auto w = numbers("x.w.mtx", "array real general, " + size + " 1");
            expectNear(c.w, w, error);
            const auto v = numbers("x.v.mtx", kind.append(size).append(" ").append(size));
            const std::size_t n = w.size();
            Numbers product, scaled;
            for (std::size_t j = 0; j < n; ++j)
                for (std::size_t i = 0; i < n; ++i) {
                    Number sum = 0;
                    for (std::size_t l = 0; l < n; ++l) sum += c.A[l * n + i] * v.at(j * n + l);
                    product.push_back(sum);
                    scaled.push_back(v.at(j * n + i) * w[j]);
                }
            expectNear(scaled, product, error);
        }
    // Values alone; both ends of many; a NumPy file's are of its format.
    std::string entries;
    for (char i = '1'; i < '9'; ++i) entries += i + " "s + i + " -" + i + "\n";
    write("A", mtx("coordinate integer symmetric", "8 8 8\n" + entries));
    expectWords(run("eigh A --values -o y").out,
                {"values only", "values:     -8 -7 -6 ... -3 -2 -1\n", "||w|| is that but for"});
    EXPECT_EQ(1u, files().count("y.w.mtx"));
    EXPECT_EQ(0u, files().count("y.v.mtx"));
    write("A.npy", npy("<f4", false, "1, 1", "aaaa"));
    EXPECT_EQ(0, run("eigh A.npy -o z").code);
    expectWords(read(folder / "z.v.npy"), {"'<f4'"});
}

TEST_F(Command, RefusesWhatIsNotHermitian) {
    const std::string refused[][2] = {
        {"array real general\n2 2\n1\n3\n2.5\n1\n",
         "not symmetric: element (2, 1) is 3, but (1, 2) is 2.5"},
        {"array real skew-symmetric\n2 2\n3\n", "element (2, 1) is 3, but (1, 2) is -3"},
        {"array complex symmetric\n2 2\n1 0\n2 1\n1 0\n",
         "not Hermitian: element (2, 1) is 2 + 1i, but (1, 2) is 2 + 1i"},
        {"array complex general\n1 1\n1 -2\n", "element (1, 1) is 1 - 2i, not real"},
        {"array real general\n2 1\n1\n1\n", "not square: 2 x 1"},
        {"array real symmetric\n2 2\n1\nnan\n1\n", "(2, 1) is not finite"},
    };
    for (const auto& [file, words] : refused) {
        write("A", mtx(file, ""));
        expectRefusal("eigh A -o x", {"A: ", words});
    }
    write("x.w.mtx", mtx("array real symmetric", "1 1\n1\n"));
    expectRefusal("eigh x.w.mtx -o x", {"x.w.mtx: would overwrite A"});
}

}  // namespace
}  // namespace test
