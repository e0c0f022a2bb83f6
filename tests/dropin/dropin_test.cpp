// Programs under the drop-in library: that their results are right, and what the report says that
// Lumo and the CPU library did for them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

namespace fs = std::filesystem;

// How many calls of each symbol were served, and how many passed on.
using Report = std::map<std::string, std::pair<long, long>>;

// How a program comes to the library: preloaded, with a CPU library of one piece or with BLAS and
// LAPACK apart, or linked in front of it. A sanitizer's run-time library wants to be first, and
// takes no preloading.
struct Way {
    const char* name;
    const char* program;
    const char* preload;
    const char* path;
};
const Way ways[] = {
    {"linked", LUMO_PROBE_LINKED, "", ""},
#ifdef LUMO_PRELOAD
    {"preloaded", LUMO_PROBE, LUMO_PRELOAD, ""},
#ifdef LUMO_REFERENCE
    {"reference", LUMO_PROBE_APART, LUMO_PRELOAD, LUMO_REFERENCE},
#endif
#endif
};

class DropIn : public ::testing::TestWithParam<Way> {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "lumo-dropin-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(name.data()));
        folder = name;
    }
    void TearDown() override { fs::remove_all(folder); }

    // Runs a scenario, which must succeed, with more of the environment, and reads the report.
    Report run(const std::string& scenario, const std::string& environment = "LUMO_CROSSOVER=0",
               const std::string& lumo = "") {
        const Way& way = GetParam();
        const std::string report = folder / "report", output = folder / "output";
        fs::remove(report);
        const std::string command = "env LUMO_PLATFORM=software LUMO_REPORT=" + report +
                                    " XDG_CONFIG_HOME=" + folder.string() +
                                    " LD_PRELOAD=" + way.preload + " LD_LIBRARY_PATH=" + lumo +
                                    ":" + way.path + ":$LD_LIBRARY_PATH " + environment + " " +
                                    way.program + " " + scenario + " >" + output + " 2>&1";
        const int status = std::system(command.c_str());
        std::stringstream said;
        said << std::ifstream(output).rdbuf();
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command << "\n" << said.str();
        Report calls;
        std::ifstream in(report);
        std::string line, symbol;
        heading.clear();
        std::getline(in, heading);
        std::getline(in, line);
        for (double seconds; in >> symbol;)
            in >> calls[symbol].first >> seconds >> calls[symbol].second >> seconds;
        return calls;
    }

    fs::path folder;
    std::string heading;  // of the last report
};

TEST_P(DropIn, ServesWhatItCan) {
    const struct {
        const char* scenario;
        Report report;
        const char* environment = "LUMO_CROSSOVER=0";
    } cases[] = {
        // Lumo and the CPU library call sgemm_, strsm_ and sgetrf_; none of it comes back round.
        {"solve", {{"cgesv_", {1, 0}}, {"sgesv_", {1, 0}}}},
        {"solve", {{"cgesv_", {0, 1}}, {"sgesv_", {0, 1}}}, "LUMO_CROSSOVER=never"},
        {"solve",  // without a device
         {{"cgesv_", {0, 1}}, {"sgesv_", {0, 1}}},
         "LUMO_PLATFORM=cuda LUMO_CUDA_PLUGIN=/none LUMO_CROSSOVER=0"},
        {"threads",
         {{"cgetrf_", {0, 4}}, {"sgesv_", {20, 0}}},
         "LUMO_CROSSOVER=0 OPENBLAS_NUM_THREADS=2"},
        {"repeated", {{"ssyrk_", {2, 0}}}},
        // By columns and by rows; the sgesv_ of LAPACKE's own is no call of the program's.
        {"lapacke",
         {{"LAPACKE_sgels", {2, 0}},
          {"LAPACKE_sgesv", {2, 2}},
          {"LAPACKE_sgesdd", {2, 0}},
          {"LAPACKE_sgesvd", {2, 0}},
          {"LAPACKE_ssyevr", {2, 0}}}},
        {"wheels",
         {{"scipy_LAPACKE_sgesv64_", {2, 2}},
          {"scipy_cblas_sgemm64_", {4, 0}},
          {"scipy_sgesv_", {2, 3}},
          {"scipy_sgesv_64_", {2, 4}}}},
        {"leastSquares", {{"sgels_", {1, 0}}}},
        {"singularValues", {{"cgesdd_", {2, 3}}}},
        {"eigenproblems", {{"ssyev_", {1, 1}}, {"ssyevd_", {1, 1}}, {"ssyevr_", {1, 1}}}},
        // Errors, queries, and data that LAPACK tells more of or scales, are the CPU library's.
        {"arguments", {{"sgels_", {0, 1}}, {"sgeqrf_", {0, 2}}, {"sgesv_", {0, 2}}}},
        {"singular", {{"sgels_", {0, 1}}, {"sgesv_", {0, 1}}}},
        {"data", {{"sgels_", {0, 3}}, {"sgesv_", {0, 1}}}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.report, run(c.scenario, c.environment)) << c.scenario << " " << c.environment;
}

TEST_P(DropIn, ReportsThatNothingReachedItAndFollowsNoLink) {
    EXPECT_EQ(Report{}, run("notTaken"));
    EXPECT_NE(heading.npos, heading.find("called none of the symbols")) << heading;
    run("", "true");  // which wants no BLAS, and ignores the rest of the line
    EXPECT_EQ("", heading);
    fs::create_symlink(folder / "target", folder / "link");
    run("solve", "LUMO_REPORT=" + (folder / "link").string());
    EXPECT_FALSE(fs::exists(folder / "target"));
}

TEST_P(DropIn, ServesFromTheCrossoverOn) {
    const Report none{{"cgesv_", {0, 1}}, {"sgesv_", {0, 1}}};
    const Report larger{{"cgesv_", {0, 1}}, {"sgesv_", {1, 0}}};  // 300 against 150
    EXPECT_EQ(none, run("solve", ""));  // the software device gains nothing
    EXPECT_EQ(larger, run("solve", "LUMO_CROSSOVER=151"));
    fs::create_directory(folder / "lumo");
    std::ofstream(folder / "lumo/crossover")
        << "# measured\n\nsoftware cgesv never\nsoftware sgesv 300 # just\nnonsense\n"
        << "cuda cgesv 0\nsoftware ssyevd 70\n";
    EXPECT_EQ(larger, run("solve", ""));
    EXPECT_EQ(1, run("eigenproblems", "")["ssyevr_"].first);  // by the size of ssyevd
    EXPECT_EQ(none, run("solve", "LUMO_CROSSOVER=never"));    // comes before the file
    EXPECT_EQ(none, run("solve", "LUMO_CROSSOVER_FILE=/dev/null"));
}

// Whichever call of the device fails: the CPU library gets the data as they were.
TEST_P(DropIn, LosesNoDataWhenTheDeviceFails) {
    int failed = 0, nth = 1;
    for (; nth < 200; ++nth) {
        const Report report = run(
            "leastSquares", "LUMO_CROSSOVER=0 LUMO_TEST_FAULT=" + std::to_string(nth), LUMO_FAULTY);
        ASSERT_EQ(1u, report.size());
        const auto [served, passedOn] = report.at("sgels_");
        failed += int(passedOn);
        if (HasFailure() || (served && nth - failed > 20)) break;  // no call is as late
    }
    EXPECT_GT(failed, 15);
}

INSTANTIATE_TEST_SUITE_P(Ways, DropIn, ::testing::ValuesIn(ways),
                         [](const auto& way) { return std::string(way.param.name); });

}  // namespace
