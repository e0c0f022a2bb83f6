// What the library makes a modern GPU do: launches, CUBLAS calls, copies and allocations of its
// calls, counted. It is these that cost, not the arithmetic.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "lumo.h"
#include "lumo_memory.h"

namespace {

class Costs : public ::testing::Test {
  protected:
    using Count = long long (*)(const char*);

    void SetUp() override {
        void* driver = dlopen("libcuda.so.1", RTLD_LAZY);
        if (driver) count_ = reinterpret_cast<Count>(dlsym(driver, "emulatedGpuCount"));
        if (!count_) GTEST_SKIP() << "the GPU is not an emulated one";
        ASSERT_EQ(lumoNoError, lumoInitialize());
    }
    void TearDown() override { lumoShutdown(); }

    // How often any of these is done in f().
    template <class F>
    long long of(const std::vector<const char*>& names, F f) const {
        auto sum = [&] {
            long long all = 0;
            for (const char* name : names) all += count_(name);
            return all;
        };
        const long long before = sum();
        f();
        return sum() - before;
    }

    static std::vector<float> random(int rows, int columns) {
        std::mt19937 engine(1);
        std::vector<float> all(std::size_t(rows) * std::size_t(columns));
        for (float& x : all) x = std::uniform_real_distribution<float>(-1, 1)(engine);
        return all;
    }

    Count count_ = nullptr;
};

// Device memory with a copy of a host matrix.
class Device {
  public:
    explicit Device(const std::vector<float>& host) {
        EXPECT_EQ(lumoNoError, lumoDeviceMalloc(&data_, host.size() * sizeof(float)));
        EXPECT_EQ(lumoNoError, lumoDeviceSetMatrix(int(host.size()), 1, sizeof(float), host.data(),
                                                   int(host.size()), data_, int(host.size())));
    }
    ~Device() { lumoDeviceFree(data_); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    float* get() const { return static_cast<float*>(data_); }

  private:
    void* data_ = nullptr;
};

const std::vector<const char*> work{"launch", "cublas"};

TEST_F(Costs, LuPanelsAndSolve) {
    const int n = 640, panel = 64;
    const Device a(random(n, n)), again(random(n, n)), b(random(n, 1));
    std::vector<int> pivots(n);
    const long long factors = of(
        work, [&] { EXPECT_EQ(lumoNoError, lumoDeviceSgetrf(n, n, a.get(), n, pivots.data())); });
    EXPECT_LE(factors, 8 * n / panel);
    const long long solved = of(work, [&] {
        EXPECT_EQ(lumoNoError, lumoDeviceSgesv(n, 1, again.get(), n, pivots.data(), b.get(), n));
    });
    EXPECT_LE(solved - factors, 12);
}

// The device's own panels, of 32 columns.
TEST_F(Costs, LuPanelsOnTheDevice) {
    const int n = 1408;
    const Device a(random(n, n));
    std::vector<int> pivots(n);
    const auto run = [&] {
        EXPECT_EQ(lumoNoError, lumoDeviceSgetrf(n, n, a.get(), n, pivots.data()));
    };
    EXPECT_LE(of(work, run), 7 * n / 32);
    EXPECT_LE(of({"copy"}, run), 2);
}

// However many panels there are, the same few copies wait: scalar factors and the tail. None if
// the panels are the device's.
TEST_F(Costs, QrWaitsForNoCopyInItsLoop) {
    auto waits = [&](int n) {
        const Device a(random(700, n)), tau(random(n, 1));
        return of({"copy synchronous"}, [&] {
            EXPECT_EQ(lumoNoError, lumoDeviceSgeqrf(700, n, a.get(), 700, tau.get()));
        });
    };
    EXPECT_EQ(waits(192), waits(320));
    EXPECT_LE(waits(320), 4);
    EXPECT_EQ(0, waits(640));
}

TEST_F(Costs, SingularValuesColumnByColumn) {
    auto calls = [&](int n) {
        return of(work, [&] {
            auto a = random(n, n), s = random(n, 1);
            EXPECT_EQ(lumoNoError,
                      lumoSgesvd('N', 'N', n, n, a.data(), n, s.data(), nullptr, 1, nullptr, 1));
        });
    };
    EXPECT_LE(calls(320) - calls(256), 9 * 64);
}

// There and back again, packed and not, with the padding untouched.
TEST_F(Costs, LargeCopiesPassThroughPageLockedMemory) {
    for (auto [rows, columns, ld] : {std::array{2501, 1001, 2501}, {2400, 1000, 2403}}) {
        const auto source = random(ld, columns);
        auto result = std::vector<float>(source.size(), 7);
        const Device device(std::vector<float>(std::size_t(rows) * std::size_t(columns)));
        EXPECT_EQ(
            0, of({"copy pageable"}, [&, rows = rows, columns = columns, ld = ld] {
                EXPECT_EQ(lumoNoError, lumoDeviceSetMatrix(rows, columns, sizeof(float),
                                                           source.data(), ld, device.get(), rows));
                EXPECT_EQ(lumoNoError, lumoDeviceGetMatrix(rows, columns, sizeof(float),
                                                           device.get(), rows, result.data(), ld));
            }));
        for (std::size_t i = 0; i < result.size(); ++i)
            ASSERT_EQ(int(i) % ld < rows ? source[i] : 7, result[i]) << i;
    }
}

#ifdef LUMO_COMMAND
// What `lumo predict` counts of a call is what the GPU is given.
TEST_F(Costs, AreThoseOfThePrediction) {
    const int n = 320;
    auto a = random(n, n), b = random(n, 1);
    std::vector<int> pivots(n);
    const std::pair<const char*, std::function<lumoStatus()>> routines[] = {
        {"sgetrf", [&] { return lumoSgetrf(n, n, a.data(), n, pivots.data()); }},
        {"sgesv", [&] { return lumoSgesv(n, 1, a.data(), n, pivots.data(), b.data(), n); }},
        {"sgeqrf", [&] { return lumoSgeqrf(n, n, a.data(), n, b.data()); }},
        {"sgels", [&] { return lumoSgels('N', n, n, 1, a.data(), n, b.data(), n); }},
        {"sgesvd --values", [&] {
             return lumoSgesvd('N', 'N', n, n, a.data(), n, b.data(), nullptr, 1, nullptr, 1);
         }}};
    for (const auto& [routine, call] : routines) {
        const std::string command = std::string("'" LUMO_COMMAND "' predict ") + routine +
                                    " -n 320 --machine h100 --json prediction.json >/dev/null";
        ASSERT_EQ(0, std::system(command.c_str()));
        std::ifstream file("prediction.json");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        auto predicted = [&](const std::string& count) {
            const std::size_t at = text.find("\"" + count + "\": ");
            return at == text.npos ? -1 : std::atoll(text.c_str() + at + count.size() + 4);
        };
        a = random(n, n);
        std::array<long long, 3> counts{};
        counts[2] = of({"copy"}, [&, call = call] {
            counts[1] = of({"cublas"}, [&] {
                counts[0] = of({"launch"}, [&] { EXPECT_EQ(lumoNoError, call()); });
            });
        });
        EXPECT_EQ(predicted("launches"), counts[0]) << routine;
        EXPECT_EQ(predicted("cublas_calls"), counts[1]) << routine;
        EXPECT_EQ(predicted("copies"), counts[2]) << routine;
    }
}
#endif

TEST_F(Costs, ASecondCallAllocatesNothing) {
    const int n = 300;
    auto second = [&](auto call) {
        call();
        return of({"allocate", "allocate host", "stream", "event", "handle"}, call);
    };
    std::vector<int> pivots(n);
    EXPECT_EQ(0, second([&] {
                  auto a = random(n, n), b = random(n, 1);
                  EXPECT_EQ(lumoNoError, lumoSgesv(n, 1, a.data(), n, pivots.data(), b.data(), n));
              }));
    EXPECT_EQ(0, second([&] {
                  auto a = random(n, n), b = random(n, 2);
                  EXPECT_EQ(lumoNoError, lumoSgels('N', n, n, 2, a.data(), n, b.data(), n));
              }));
    EXPECT_EQ(0, second([&] {
                  auto a = random(n, n), s = random(n, 1), u = random(n, n), vt = random(n, n);
                  EXPECT_EQ(lumoNoError, lumoSgesvd('S', 'S', n, n, a.data(), n, s.data(), u.data(),
                                                    n, vt.data(), n));
              }));
    // What is kept is not the caller's to give once more.
    void* block = nullptr;
    ASSERT_EQ(lumoNoError, lumoDeviceMalloc(&block, 1000));
    EXPECT_EQ(lumoNoError, lumoDeviceFree(block));
    EXPECT_EQ(lumoRuntimeError, lumoDeviceFree(block));
    // What was kept goes back.
    EXPECT_GT(of({"free"}, [] { lumoFreeBuffers(); }), 0);
}

}  // namespace
