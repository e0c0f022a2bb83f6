// Several threads in the library at once.
#include <atomic>
#include <thread>

#include "lumo_thread.h"
#include "residuals.h"
#include "runtime/frame.h"
#include "support/machine.h"
#include "support/matrix.h"

namespace {

using test::Matrix;

// work(0) ... work(3), each on a thread of its own.
template <class Work>
void onFour(Work work) {
    std::thread threads[4];
    for (int t = 0; t < 4; ++t) threads[t] = std::thread([=] { work(t); });
    for (auto& thread : threads) thread.join();
}

void solveSome(unsigned seed, int n, int systems) {
    ASSERT_EQ(lumoNoError, lumoInitialize());
    for (int k = 0; k < systems; ++k) {
        const auto a = Matrix<float>::random(n, n, 0, seed + unsigned(k));
        const auto b = Matrix<float>::random(n, 2, 0, seed + 100);
        Matrix<float> factors = a, x = b;
        std::vector<int> pivots(std::size_t(n), 0);
        EXPECT_EQ(lumoNoError,
                  lumoSgesv(n, 2, factors.data.data(), n, pivots.data(), x.data.data(), n));
        EXPECT_LT(test::solveResidual(a, x, b), test::solveBound);
        std::tie(factors, x) = std::tie(a, b);
        EXPECT_EQ(lumoNoError, lumoSgels('N', n, n, 2, factors.data.data(), n, x.data.data(), n));
        EXPECT_LT(test::solveResidual(a, x, b), test::solveBound);
        if (k == 1) lumoFreeBuffers();
    }
    lumoShutdown();
}

class ThreadsTest : public test::OnSoftwareDevice,
                    public ::testing::WithParamInterface<software::Schedule> {
  protected:
    void SetUp() override {
        // In production as users have it: on this machine, whose threads work beside the caller.
        const bool production = GetParam() == software::Schedule::production;
        test::startAfresh(production ? software::defaultMachine() : test::machine(), GetParam());
    }
};

TEST_P(ThreadsTest, EachSolvesItsOwnSystems) {
    // Large enough in production for kernels to run on several threads themselves.
    const bool production = GetParam() == software::Schedule::production;
    const int n = production ? 600 : 300, systems = production ? 2 : 4;
    onFour([=](int t) { solveSome(1000 * unsigned(t), n, systems); });
    EXPECT_FALSE(lumo::initialized()) << "the last one has shut it down";
    EXPECT_EQ(0u, software::usage().deviceBytes);
}

// Threads come and go while others look around: state, hooks and tables are shared.
TEST_P(ThreadsTest, SharedState) {
    std::atomic<int> hookRuns{0};
    onFour([&](int) {
        for (int k = 0; k < 20; ++k) {
            lumoInitialize();
            lumo::setHook(lumo::HookPoint::hostCallBegin, [&] { ++hookRuns; });
            int count = 0, pivot = 0;
            char text[40];
            EXPECT_EQ(lumoNoError, lumoGetDeviceCount(&count));
            lumoGetDeviceInfo(0, text, sizeof text);
            lumoGetLastStatus();
            lumoGetErrorInfo();
            float a = 2, b = 1;
            EXPECT_EQ(lumoNoError, lumoSgesv(1, 1, &a, 1, &pivot, &b, 1));
            EXPECT_EQ(0.5f, b);
            lumoShutdown();
        }
    });
    EXPECT_FALSE(lumo::initialized());
}

// The shared words are the last writer's; a thread's own are those of its last call, and so is the
// info that a call brings out of its body.
TEST_P(ThreadsTest, EachItsOwnInfo) {
    ASSERT_EQ(lumoNoError, lumoInitialize());
    onFour([](int t) {
        EXPECT_EQ(lumoNoError, lumoGetThreadStatus());
        // Two with a bad size, the others with a matrix that is singular from column t on.
        const lumoStatus status = t < 2 ? lumoArgumentError : lumoDataError;
        for (int k = 0; k < 2000; ++k) {
            float x[16] = {};
            int pivots[4];
            for (int i = 0; i < t - 1; ++i) x[5 * i] = 1;
            EXPECT_EQ(status, lumoSgetrf(t == 0 ? -1 : 4, t == 1 ? -1 : 4, x, 4, pivots));
            EXPECT_EQ(t < 2 ? -t - 1 : t, lumoGetThreadErrorInfo());
            EXPECT_EQ(status, lumoGetThreadStatus());
        }
    });
    lumoShutdown();
    EXPECT_EQ(lumoNoError, lumoGetThreadStatus()) << "shutdown returns none";
    EXPECT_EQ(lumoNotInitialized, lumoSgetrf(1, 1, nullptr, 1, nullptr));
    EXPECT_EQ(lumoNotInitialized, lumoGetThreadStatus());
    EXPECT_EQ(0, lumoGetThreadErrorInfo());
}

INSTANTIATE_TEST_SUITE_P(, ThreadsTest,
                         ::testing::Values(software::Schedule::production,
                                           software::Schedule::latest),
                         [](const auto& info) {
                             return info.param == software::Schedule::latest ? "latest"
                                                                             : "production";
                         });

}  // namespace
