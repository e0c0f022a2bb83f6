// What the command tells of the machine: lumo info, bench and tune.
#include <cmath>

#include "command/command.h"
#include "tools/lumo/speed_curve.h"

namespace test {
namespace {

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
}  // namespace test
