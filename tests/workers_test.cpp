// The threads that kernels run on: results do not depend on their number, and a forked child
// gets threads of its own. Each case is a child process, since a process decides once.
#include <dlfcn.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "basic/Transpose/Transpose.h"
#include "platform/blas_threads.h"
#include "platform/software/threads.h"
#include "residuals.h"
#include "support/machine.h"
#include "support/matrix.h"

namespace {

using test::Matrix;

constexpr int n = 1100;

// To the bit, whatever the number of threads.
bool transposes() {
    const test::OnDevice<float> source(Matrix<float>::random(n, n)), target(Matrix<float>(n, n));
    lumo::transpose(target.data(), n, source.data(), n, n, n, false);
    const auto result = target.download();
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            if (result(i, j) != source(j, i)) return false;
    return true;
}

// Every number of threads has products of its own, and so may have bits; not errors.
bool solves() {
    const auto a = Matrix<float>::random(n, n), b = Matrix<float>::random(n, 3);
    auto factors = a, x = b;
    std::vector<int> pivots(n);
    if (lumoSgesv(n, 3, factors.data.data(), n, pivots.data(), x.data.data(), n)) return false;
    return test::solveResidual(a, x, b) < test::solveBound;
}

// Whether work() says so in a child process.
template <class Work>
bool inFork(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        bool good = false;
        try {
            good = work();
        } catch (...) {
        }
        _exit(!good);
    }
    int status = 1;
    return waitpid(child, &status, 0) == child && status == 0;
}
// The same with so many threads.
bool inChild(int threads, bool (*work)()) {
    return inFork([=] {
        setenv("LUMO_SOFTWARE_THREADS", std::to_string(threads).c_str(), 1);
        test::startAfresh(test::machine(), software::Schedule::production);
        return lumoInitialize() == lumoNoError && software::threads() == threads && work();
    });
}

TEST(WorkersTest, SameResultsWhateverTheirNumber) {
    for (int threads : {1, 4, 7})
        EXPECT_TRUE(inChild(threads, transposes) && inChild(threads, solves)) << threads;
}

// The CPU library computes alone as long as anybody asks it to, and then as before.
TEST(WorkersTest, CpuLibraryOnOneThread) {
    auto counts = [] {
        auto set = reinterpret_cast<void (*)(int)>(dlsym(RTLD_DEFAULT, "openblas_set_num_threads"));
        auto get = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "openblas_get_num_threads"));
        if (!set || !get) return true;  // another library's own test
        set(2);
        auto outer = std::make_unique<platform::OneBlasThread>();
        {
            const platform::OneBlasThread inner;
            std::thread([] { const platform::OneBlasThread elsewhere; }).join();
        }
        const bool alone = get() == 1 && platform::blasThreads() == 2;
        outer.reset();
        const bool asBefore = get() == 2 && solves() && get() == 2;
        outer = std::make_unique<platform::OneBlasThread>();
        set(3);  // somebody's wish, meanwhile
        outer.reset();
        return alone && asBefore && get() == 3;
    };
    EXPECT_TRUE(inChild(4, counts));
}

TEST(WorkersTest, ControlGroupsLimitThem) {
    const std::string root = ::testing::TempDir() + "lumo-groups-" + std::to_string(getpid());
    auto write = [&](const std::string& file, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(root + file).parent_path());
        std::ofstream(root + file) << text << '\n';
    };
    auto limit = [&] { return software::controlGroupLimit(root + "/self", root); };
    EXPECT_EQ(0, limit()) << "nothing is known";
    const struct {
        const char *file, *text;
        int limit;
    } steps[] = {{"/self", "0::/a/b", 0},
                 {"/a/b/cpu.max", "max 100000", 0},
                 {"/a/cpu.max", "200000 100000", 2},  // of the group above
                 {"/a/b/cpu.max", "30000 100000", 1},
                 {"/self", "5:memory:/c\n4:cpu,cpuacct:/c\n", 0},
                 {"/cpu,cpuacct/c/cpu.cfs_period_us", "100000", 0},
                 {"/cpu,cpuacct/c/cpu.cfs_quota_us", "-1", 0},
                 {"/cpu,cpuacct/c/cpu.cfs_quota_us", "350000", 4}};
    for (const auto& step : steps) {
        write(step.file, step.text);
        EXPECT_EQ(step.limit, limit()) << step.file << ": " << step.text;
    }
    std::filesystem::remove_all(root);
}

TEST(WorkersTest, DoWithoutThreadsThatTheSystemRefuses) {
    auto refused = [] {
        pthread_attr_t attributes;  // a stack that no address space has
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t(1) << 47);
        return pthread_setattr_default_np(&attributes) == 0 && transposes();
    };
    EXPECT_TRUE(inChild(4, refused));
}

TEST(WorkersTest, ForkedChildHasItsOwn) {
    // The workers exist when the child is made.
    EXPECT_TRUE(inChild(4, [] { return transposes() && inFork(transposes) && transposes(); }));
}

}  // namespace
