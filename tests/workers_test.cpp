// The threads that kernels run on: results do not depend on their number, and a forked child
// gets threads of its own. Each case is a child process, since a process decides once.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
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

// The bits of some numbers as one.
std::uint64_t bits(const std::vector<float>& values) {
    std::uint64_t sum = 14695981039346656037u;
    for (float value : values) {
        std::uint32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        sum = (sum ^ bits) * 1099511628211u;
    }
    return sum;
}

std::uint64_t bitsOfATranspose() {
    const test::OnDevice<float> source(Matrix<float>::random(n, n)), target(Matrix<float>(n, n));
    lumo::transpose(target.data(), n, source.data(), n, n, n, false);
    return bits(target.download().data);
}

// Every number of threads has products of its own, and so may have bits; not errors.
std::uint64_t solves() {
    const auto a = Matrix<float>::random(n, n), b = Matrix<float>::random(n, 3);
    auto factors = a, x = b;
    std::vector<int> pivots(n);
    if (lumoSgesv(n, 3, factors.data.data(), n, pivots.data(), x.data.data(), n)) return 0;
    return test::solveResidual(a, x, b) < test::solveBound;
}

// What a child process with so many threads computes; 0 if it did not end well.
std::uint64_t inChild(int threads, std::uint64_t (*work)()) {
    int ends[2];
    if (pipe(ends) != 0) return 0;
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        setenv("LUMO_SOFTWARE_THREADS", std::to_string(threads).c_str(), 1);
        test::startAfresh(test::machine(), software::Schedule::production);
        std::uint64_t result = 0;
        try {
            if (lumoInitialize() == lumoNoError && software::threads() == threads) result = work();
        } catch (...) {
        }
        _exit(write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    close(ends[1]);
    std::uint64_t result = 0;
    if (read(ends[0], &result, sizeof result) != sizeof result) result = 0;
    close(ends[0]);
    int status = 1;
    return waitpid(child, &status, 0) == child && status == 0 ? result : 0;
}

TEST(WorkersTest, SameBitsWhateverTheirNumber) {
    const std::uint64_t alone = inChild(1, bitsOfATranspose);
    EXPECT_NE(0u, alone);
    for (int threads : {4, 7}) {
        EXPECT_EQ(alone, inChild(threads, bitsOfATranspose));
        EXPECT_EQ(1u, inChild(threads, solves));
    }
}

// The CPU library computes alone as long as anybody asks it to, and then as before.
TEST(WorkersTest, CpuLibraryOnOneThread) {
    auto counts = []() -> std::uint64_t {
        auto set = reinterpret_cast<void (*)(int)>(dlsym(RTLD_DEFAULT, "openblas_set_num_threads"));
        auto get = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "openblas_get_num_threads"));
        if (!set || !get) return 1;  // another library's own test
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
    EXPECT_EQ(1u, inChild(4, counts));
}

TEST(WorkersTest, ControlGroupsLimitThem) {
    const std::string root = ::testing::TempDir() + "lumo-groups-" + std::to_string(getpid());
    auto write = [&](const std::string& file, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(root + file).parent_path());
        std::ofstream(root + file) << text << '\n';
    };
    auto limit = [&] { return software::controlGroupLimit(root + "/self", root); };
    EXPECT_EQ(0, limit()) << "nothing is known";
    write("/self", "0::/a/b");
    write("/a/b/cpu.max", "max 100000");
    EXPECT_EQ(0, limit());
    write("/a/cpu.max", "200000 100000");
    EXPECT_EQ(2, limit()) << "of the group above";
    write("/a/b/cpu.max", "30000 100000");
    EXPECT_EQ(1, limit());
    write("/self", "5:memory:/c\n4:cpu,cpuacct:/c\n");
    write("/cpu,cpuacct/c/cpu.cfs_period_us", "100000");
    write("/cpu,cpuacct/c/cpu.cfs_quota_us", "-1");
    EXPECT_EQ(0, limit());
    write("/cpu,cpuacct/c/cpu.cfs_quota_us", "350000");
    EXPECT_EQ(4, limit());
    std::filesystem::remove_all(root);
}

TEST(WorkersTest, DoWithoutThreadsThatTheSystemRefuses) {
    auto refused = [] {
        pthread_attr_t attributes;  // a stack that no address space has
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t(1) << 47);
        return pthread_setattr_default_np(&attributes) == 0 ? bitsOfATranspose() : 0;
    };
    EXPECT_EQ(inChild(1, bitsOfATranspose), inChild(4, refused));
}

TEST(WorkersTest, ForkedChildHasItsOwn) {
    auto parentAndChild = []() -> std::uint64_t {
        const std::uint64_t mine = bitsOfATranspose();  // the workers exist now
        const pid_t child = fork();
        if (child == 0) {
            alarm(60);
            _exit(bitsOfATranspose() == mine ? 0 : 1);
        }
        int status = 1;
        waitpid(child, &status, 0);
        return status == 0 && bitsOfATranspose() == mine;
    };
    EXPECT_EQ(1u, inChild(4, parentAndChild));
}

}  // namespace
