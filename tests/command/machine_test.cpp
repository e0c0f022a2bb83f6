// What the command tells of the machine, and of others: lumo info, bench, tune, predict, calibrate.
#include <cmath>
#include <csignal>
#include <regex>

#include "command/command.h"
#include "tools/lumo/speed_curve.h"

namespace test {
namespace {

TEST_F(Command, TellsWhatItRunsOn) {
    const Outcome outcome = run("info");
    EXPECT_EQ(0, outcome.code);
    expectWords(outcome.out, {"software (LUMO_PLATFORM=software)", "device 0", "capability", "MiB",
                              "MHz", "CPU LAPACK:", "CUDA runtime:", "CUDA driver:"});
    for (const std::string platform : {"abacus", "timeline"}) {
        const Outcome refused = shell("LUMO_PLATFORM=" + platform + " '" LUMO_COMMAND "' info");
        EXPECT_EQ(1, refused.code);
        expectWords(refused.out, {"LUMO_PLATFORM=" + platform + " names no platform"});
    }
}

TEST_F(Command, SaysWhatIsWrongWithItsArguments) {
    const std::vector<std::string> cases[] = {{"frob", "frob is no command", "lstsq"},
                                              {"", "info solve"},
                                              {"solve A", "B is required"},
                                              {"lstsq A B --precision mixed", "not in {s,d}"},
                                              {"svd A --precision mixed", "not in {s,d}"},
                                              {"svd A -k 0", "0 not in range 1 to 2147483647"},
                                              {"tune -n 0", "0 not in range 64 to 32768"},
                                              {"predict sgetrf", "--size is required"},
                                              {"predict sgetrf -n 5,0", "0 not in range 1 to"},
                                              {"predict sgetrf -n 4k", "4k"}};
    for (const auto& c : cases) {
        const Outcome outcome = run(c[0]);
        EXPECT_LT(100, outcome.code);
        expectWords(outcome.err, {c.begin() + 1, c.end()});
    }
}

TEST_F(Command, MeasuresItsSpeed) {
    const Outcome outcome = run("bench zgemm sgels -n 100 --json speeds.json");
    EXPECT_EQ(0, outcome.code) << outcome.err;
    expectWords(read(folder / "speeds.json"),
                {"\"zgemm\"", "\"sgels\"", "\"crossover\": ", "{\"n\": 100, \"lumo_"});
    expectRefusal("bench sgemm dgeev", {"dgeev", "zgemm"});
    expectRefusal("bench sgemm -n 16 --json j --plot absent/speeds.svg", {"absent/speeds.svg: "});
    expectRefusal("bench sgemm -n 16 --json j --plot speeds.txt", {"speeds.txt: ", ".svg"});
    const std::string interrupted = " 0.5 '" LUMO_COMMAND "' bench -n 32768 --json j";
    EXPECT_EQ(128 + SIGINT, shell("timeout --preserve-status -s INT" + interrupted).code);
    EXPECT_EQ(128 + SIGTERM, shell("timeout --preserve-status -s TERM" + interrupted).code);
    EXPECT_EQ((std::set<std::string>{"err", "out", "speeds.json"}), files());
}

TEST_F(Command, DrawsItsSpeed) {
    if (shell("command -v gnuplot").code) GTEST_SKIP() << "gnuplot is not installed";
    const std::string formats[][2] = {{"svg", ">sgels<"}, {"png", "\x89PNG"}, {"pdf", "%PDF"}};
    for (const auto& [ending, content] : formats) {
        const std::string file = "x." + ending;
        EXPECT_EQ(0, run("bench sgels zgemm cgelsd -n 16 --plot " + file).code)
            << read(folder / "err");
        expectWords(read(folder / file), {content});
    }
    const auto without = shell("PATH=/absent '" LUMO_COMMAND "' bench sgemm -n 16 --plot y.svg");
    EXPECT_EQ("", without.out);
    expectWords(without.err, {"lumo: y.svg: ", "gnuplot-nox"});
}

TEST_F(Command, PredictsAndSaysThatItDoes) {
    const Outcome outcome = run("predict sgetrf cgesv -n 100000,500,200000 --json p.json");
    EXPECT_EQ(0, outcome.code) << outcome.err;
    expectWords(outcome.out,
                {"PREDICTION, nothing was computed: NVIDIA H100", "host memory", "sgetrf       500",
                 "the GPU waited for", "the critical path", "200000 fails: Insufficient memory"});
    expectWords(read(folder / "p.json"),
                {"\"kind\": \"prediction\", \"computed\": false", "\"predicted_seconds\": ",
                 "\"failure\": \"Insufficient memory", "\"critical_path\": {\"kernels\": "});
    expectRefusal("predict sgetrf -n 8 --machine abacus", {"abacus is neither", " h100 "});
    expectRefusal("predict sgemn -n 8", {"sgemn", " sgemm "});
    expectRefusal("predict sgetrf --values -n 8",
                  {"--values is for gesvd, gesdd, syevd and heevd alone"});
    write("my.ini", "[device]\nname = mine\n");
    expectRefusal("predict sgetrf -n 8 --machine my.ini", {"my.ini, line 2: name has no source"});
}

TEST_F(Command, PredictsEveryRoutine) {
    const std::string refusal = shell("'" LUMO_COMMAND "' predict none -n 8 2>&1").out;
    const std::string names = refusal.substr(refusal.find(": ", refusal.find("these are")) + 1);
    expectWords(names, {" sgemm ", " zgemv ", " csymm ", " cgesvd ", " sgglse "});
    for (const char* interface : {"", " --device"}) {
        const Outcome outcome = shell("'" LUMO_COMMAND "' predict -n 90,700 --machine a100" +
                                      std::string(interface) + " " + names);
        EXPECT_EQ(0, outcome.code) << outcome.err;
        EXPECT_EQ(outcome.out.npos, outcome.out.find("fails")) << outcome.out;
        std::istringstream words(names);
        for (std::string name; words >> name;) expectWords(outcome.out, {"\n" + name + " "});
    }
}

// The clock's own machine, whose prediction of itself is beside what it measures.
TEST_F(Command, CalibratesThisMachine) {
    EXPECT_EQ(0, run("calibrate -o here.ini --name 'This one'").code) << read(folder / "err");
    expectWords(read(folder / "here.ini"), {"name = This one  ; ", "; measured by lumo calibrate"});
    const std::string picture = shell("command -v gnuplot").code ? "" : " --plot p.svg";
    const Outcome outcome =
        run("predict sgesvd cgesdd --values -n 64,256 --machine here.ini --against cpu" + picture);
    EXPECT_EQ(0, outcome.code) << outcome.err;
    expectWords(outcome.out, {"PREDICTION, nothing was computed: This one (here.ini)", "CPU ms"});
    if (!picture.empty()) expectWords(read(folder / "p.svg"), {"Prediction: This one"});
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
    EXPECT_TRUE(
        std::regex_match(read(folder / "crossover"),
                         std::regex("# mine\ncuda sgemm 512\nsoftware dgemm 9\n"
                                    "software sgemm (64|never)\nsoftware cgetrf (64|never)\n")));
    expectRefusal("tune sgem -o x", {"sgem is not measured", " sgemm "});
    expectRefusal("tune sgemm -n 64 -o .", {".: exists and is not a file"});
}

}  // namespace
}  // namespace test
