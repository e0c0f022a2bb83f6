// lumo lstsq.
#include "command/command.h"

namespace test {
namespace {

// The columns of each A, or its rows if there are fewer, are orthogonal: X and the residuals are
// worked out by hand.
TEST_F(Command, SolvesForMatricesOfAnyRank) {
    write("A", mtx("array real general\n3 2\n1\n2\n2\n2\n4\n4\n", ""));
    write("B", mtx("array real general\n3 1\n6\n3\n0\n", ""));
    expectRefusal("lstsq A B", {"not full rank", "--any-rank"});
    for (const bool single : {false, true}) {
        const Outcome outcome =
            run("lstsq A B --any-rank -o x.mtx"s + (single ? " --precision s" : ""));
        EXPECT_EQ(0, outcome.code);
        expectWords(outcome.out,
                    {"gelsd\n", "rank:       1 ", "= 5.38516,", "norm of X:  0.596285"});
        expectNear({12. / 45, 24. / 45}, numbers("x.mtx", "array real general, 2 1"),
                   single ? 1e-5 : 1e-14);
    }
}

TEST_F(Command, FitsOrFindsTheSmallestSolution) {
    const struct {
        const char *name, *A, *B, *header;
        Numbers x;
        std::vector<std::string> words;
    } cases[] = {
        {"least squares, two right-hand sides",
         "real general\n4 2\n1\n1\n1\n1\n-3\n-1\n1\n3\n",
         "real general\n4 2\n-5\n-3\n1\n7\n4\n1\n-3\n2\n",
         "array real general, 2 2",
         {0, 2, 1, -0.5},
         {"4 x 2", "least squares", "= 2, 0.218 of ||b||  (column 1)",
          "= 4.58258, 0.837 of ||b||  (column 2)"}},
        {"many right-hand sides",
         "real general\n2 1\n2\n0\n",
         "real general\n2 9\n2\n1\n2\n1\n2\n-4\n2\n1\n2\n3\n2\n1\n2\n1\n2\n1\n2\n0\n",
         "array real general, 1 9",
         Numbers(9, 1),
         {"= 4, 0.894 of ||b||  (the largest, column 3)"}},
        {"complex least squares",
         "complex general\n3 1\n1 0\n0 1\n0 0\n",
         "complex general\n3 1\n1 2\n0 1\n0 3\n",
         "array complex general, 1 1",
         {{1, 1}},
         {"least squares", "= 3.31662, 0.856 of ||b||\n"}},
        {"minimum norm",
         "real general\n2 3\n1\n0\n0\n2\n2\n0\n",
         "real general\n2 1\n5\n4\n",
         "array real general, 3 1",
         {1, 2, 2},
         {"2 x 3", "minimum norm", "norm of X:  3\n"}},
        {"complex minimum norm, real right-hand side",
         "complex general\n1 2\n3 0\n0 4\n",
         "real general\n1 1\n25\n",
         "array complex general, 2 1",
         {3, {0, -4}},
         {"minimum norm", "norm of X:  5\n"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        write("A", mtx("array "s + c.A, ""));
        write("B", mtx("array "s + c.B, ""));
        for (const bool single : {false, true}) {
            const Outcome outcome = run("lstsq A B -o x.mtx"s + (single ? " --precision s" : ""));
            EXPECT_EQ(0, outcome.code);
            EXPECT_EQ("", outcome.err);
            expectWords(outcome.out, c.words);
            const bool wide = std::string(c.header).find("complex") != std::string::npos;
            expectWords(outcome.out, {"lumo"s + (single ? "SC" : "DZ")[wide] + "gels\n"});
            expectNear(c.x, numbers("x.mtx", c.header), single ? 1e-5 : 1e-14);
        }
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
    for (const char* files : {"tall b3", "steep b3", "wide b2"})
        expectWords(run("lstsq --precision s "s + files).err,
                    {"warning: "s + files[0], "hardly has full rank"});
}

TEST_F(Command, SaysThatLeastSquaresAreNotScaled) {
    write("b", mtx("array real general", "2 1\n1\n1\n"));
    const std::string cases[][2] = {{"1e-34", "s"}, {"1e34", "s"}, {"1e-300", "d"}, {"1e300", "d"}};
    for (const auto& [value, precision] : cases) {
        write("A", mtx("array real general", "2 1\n" + value + "\n0\n"));
        const Outcome outcome = run("lstsq A b --precision " + precision);
        expectWords(outcome.err, {"A: the largest element is 1e"});
        EXPECT_EQ(std::string::npos, outcome.err.find("b: the largest"));
    }
    // The squares are beyond double precision, the numbers of the report are not.
    write("A", mtx("array real general", "2 1\n3e200\n4e200\n"));
    const Outcome outcome = run("lstsq A b");
    EXPECT_EQ("", outcome.err);
    expectWords(outcome.out, {"= 0.2, 0.141 of ||b||"});
    // The sum of squares is beyond single precision, and so is the solution.
    write("A", mtx("array real general", "2 1\n3e38\n3e38\n"));
    expectRefusal("lstsq A b -o x.mtx --precision s", {"A: ", "scaling"});
}

}  // namespace
}  // namespace test
