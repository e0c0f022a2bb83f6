// The timeline platform: order, memory, what hosts read, and that the library does there what it
// does on the software device.
#include <sys/mman.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <random>

#include "lumo_memory.h"
#include "platform/registry.h"
#include "platform/software/table.h"
#include "platform/timeline/control.h"
#include "platform/timeline/machines.h"
#include "support/machine.h"

namespace test {
namespace {

// A GPU in round numbers, whose host takes no time of its own.
timeline::Machine simple() {
    timeline::Machine m = timeline::machineOf("h100");
    m.hostScale = 0;
    m.launch = m.bigLaunch = m.copy = 1;
    m.latencyOfCall = m.kernelGap = m.synchronize = 0;
    m.kernelStart = 100;
    m.locked = 1e6;
    m.lockedStart = m.pageableStart = 0;
    return m;
}

// One platform after the other: the process's table is overwritten.
void use(const platform::Table& table) {
    lumoShutdown();
    lumo::resetRuntime();
    const platform::Choice* choice = platform::lumo_private_platform(&timeline::table());
    const_cast<platform::Table&>(*choice->table) = table;
}

class Timeline : public ::testing::Test {
  protected:
    void SetUp() override { use(timeline::table()); }
    void TearDown() override { use(software::table()); }

    static void play(const timeline::Machine& machine) {
        lumoShutdown();
        lumo::resetRuntime();
        timeline::start(machine);
        ASSERT_EQ(lumoNoError, lumoInitialize());
        timeline::begin();
    }
    static void launchOn(platform::Stream stream) {
        const auto& t = timeline::table();
        for (const platform::Kernel* kernel : platform::registeredKernels())
            if (std::strstr(kernel->name, "SetSingle_kILi0Ef")) {
                const void* nothing = nullptr;
                t.configureCall(1, 1, 0, stream);
                t.setupArgument(&nothing, sizeof nothing, 0);
                EXPECT_EQ(0, t.launch(kernel, 0));
                return;
            }
        FAIL();
    }
    template <class T>
    static T* operand(std::size_t count, bool touched = false) {
        return static_cast<T*>(timeline::operand(count * sizeof(T), touched));
    }
    static double sum(const timeline::ByKind& times) {
        double all = 0;
        for (const double t : times) all += t;
        return all;
    }
};

// A launch takes the host 1, a kernel 100, a copy of 50 MB 50.
TEST_F(Timeline, StreamsKeepTheirOrderAndEventsOrderStreams) {
    const auto& t = timeline::table();
    void *device = nullptr, *host = nullptr;
    platform::Stream one = nullptr, two = nullptr;
    platform::Event event = nullptr;
    constexpr std::size_t bytes = 50000000;
    const auto timeOf = [&](const std::function<void()>& issue) {
        play(simple());
        ASSERT_FALSE(t.malloc(&device, bytes) || t.mallocHost(&host, bytes));
        t.streamCreate(&one);
        t.streamCreate(&two);
        t.eventCreate(&event);
        timeline::begin();
        issue();
        t.threadSynchronize();
    };
    const auto copy = [&](platform::Stream stream) {
        EXPECT_EQ(0, t.memcpyAsync(device, host, bytes, 1, stream));
    };
    const auto expect = [&](double seconds, const std::function<void()>& issue) {
        timeOf(issue);
        const timeline::Account account = timeline::end();
        EXPECT_NEAR(seconds, account.seconds, 1e-3);
        EXPECT_NEAR(account.seconds, sum(account.criticalPath), 1e-9);
        EXPECT_NEAR(account.seconds, sum(account.busy) + sum(account.idle), 1e-9);
    };
    expect(201, [&] { launchOn(one), launchOn(one); });
    expect(101, [&] { launchOn(one), copy(two); });  // side by side
    // Kernels that each leave most processors idle: the seventh has two thirds of what it can use
    // until the first is through.
    expect(102, [&] { launchOn(one), launchOn(two); });
    expect(101 + (100 - 94 / 1.5), [&] {
        for (int k = 0; k < 7; ++k) {
            platform::Stream stream = nullptr;
            t.streamCreate(&stream);
            launchOn(stream);
        }
    });
    expect(151, [&] { launchOn(one), copy(one); });
    expect(151, [&] { launchOn(nullptr), copy(two); });  // the default stream is waited for
    expect(151, [&] { copy(two), launchOn(nullptr); });  // and waits
    expect(151, [&] {
        copy(two);
        t.eventRecord(event, two);
        t.streamWaitEvent(one, event, 0);
        launchOn(one);
    });
    // What was recorded counts, not what came later. One copy goes after the other.
    expect(102, [&] {
        launchOn(one);
        t.eventRecord(event, two);
        copy(two);
        t.streamWaitEvent(one, event, 0);
        copy(two);
    });
    // A copy of other memory has the host wait.
    expect(152, [&] {
        EXPECT_EQ(0, t.memcpyAsync(device, operand<char>(bytes), bytes, 1, two));
        launchOn(one);
    });
}

TEST_F(Timeline, MemoryIsAccountedAndRefusedAsOnTheCard) {
    timeline::Machine machine = simple();
    machine.memory = 80e9;
    play(machine);
    const int n = 100000;
    const auto solve = [&](int order) {
        const std::size_t size = std::size_t(order) * std::size_t(order);
        timeline::begin();
        return lumoSgesv(order, 1, operand<float>(size), order, operand<int>(size_t(order), true),
                         operand<float>(std::size_t(order)), order);
    };
    EXPECT_EQ(lumoNoError, solve(n));
    const timeline::Account account = timeline::end();
    EXPECT_GT(account.deviceBytes, std::size_t(n) * n * sizeof(float));
    EXPECT_LT(account.deviceBytes, std::size_t(80e9));
    EXPECT_EQ(lumoInsufficientMemory, solve(150000));
    EXPECT_EQ(lumoNoError, solve(500));
    EXPECT_EQ(lumoNoError, solve(500));
    EXPECT_EQ(0, timeline::end().counts.allocations);
    void* block = nullptr;
    EXPECT_EQ(lumoNoError, lumoDeviceMalloc(&block, 1000));
    EXPECT_EQ(lumoNoError, lumoDeviceFree(block));
    EXPECT_EQ(lumoRuntimeError, lumoDeviceFree(block));
}

// The registration wants a description of each; here it must say something.
TEST(TimelineKernels, AreAllDescribed) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer keeps that address for itself";
#endif
    // 256, and as an address one of numbers that grow.
    alignas(16) std::array<int, 1024> arguments;
    arguments.fill(256);
    std::uintptr_t address;
    std::memcpy(&address, arguments.data(), sizeof address);
    constexpr std::size_t bytes = 1 << 16;
    void* const lists =
        mmap(reinterpret_cast<void*>(address & ~std::uintptr_t(4095)), bytes,
             PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    ASSERT_NE(MAP_FAILED, lists);
    std::iota(static_cast<int*>(lists), static_cast<int*>(lists) + bytes / sizeof(int), 0);
    for (const platform::Kernel* kernel : platform::registeredKernels()) {
        const platform::Work work =
            kernel->work(reinterpret_cast<unsigned char*>(arguments.data()));
        EXPECT_GT(work.bytes, 0) << kernel->name;
        EXPECT_TRUE(std::isfinite(work.bytes) && std::isfinite(work.flops) && work.turns >= 0)
            << kernel->name;
    }
    munmap(lists, bytes);
}

// --- The same calls as on the software device --------------------------------------------------

struct Calls {
    long launches = 0, products = 0, copies = 0;
};

template <class T>
std::vector<T> randomNormal(std::size_t count) {
    std::mt19937 engine(1);
    std::normal_distribution<T> normal;
    std::vector<T> all(count);
    for (T& x : all) x = normal(engine);
    return all;
}

using Routine = std::function<int(int n, float* a, float* b, float* c, float* d, int* ipiv)>;

Calls traced(int capability, int n, const Routine& routine) {
    use(software::table());
    software::start(machine(capability), software::Schedule::earliest);
    EXPECT_EQ(lumoNoError, lumoInitialize());
    const std::size_t size = std::size_t(n) * std::size_t(n);
    auto a = randomNormal<float>(size), b = a, c = a, d = a;
    std::vector<int> ipiv(n);
    software::startTrace();
    EXPECT_EQ(lumoNoError, routine(n, a.data(), b.data(), c.data(), d.data(), ipiv.data()));
    Calls calls;
    for (const software::Call& call : software::stopTrace()) {
        const auto begins = [&](const char* word) { return call.name.rfind(word, 0) == 0; };
        calls.launches += call.name == "cudaLaunch";
        calls.copies += begins("cudaMemcpy");
        calls.products += begins("cublas") && std::strchr("SDCZ", call.name[6]) &&
                          std::islower(call.name[7]) && !begins("cublasSet");
    }
    return calls;
}

Calls predicted(int capability, int n, const Routine& routine) {
    use(timeline::table());
    timeline::Machine m = simple();
    m.capability = capability / 10.;
    timeline::start(m);
    EXPECT_EQ(lumoNoError, lumoInitialize());
    const std::size_t bytes = std::size_t(n) * std::size_t(n) * sizeof(float);
    const auto matrix = [&] { return static_cast<float*>(timeline::operand(bytes)); };
    timeline::begin();
    EXPECT_EQ(lumoNoError, routine(n, matrix(), matrix(), matrix(), matrix(),
                                   static_cast<int*>(timeline::operand(bytes, true))));
    const timeline::Counts counts = timeline::end().counts;
    return {counts.launches, counts.products, counts.copies};
}

TEST(TimelineCalls, AreThoseOfTheTrace) {
    const std::pair<const char*, Routine> routines[] = {
        {"getrf", [](int n, float* a, float*, float*, float*,
                     int* ipiv) { return lumoSgetrf(n, n, a, n, ipiv); }},
        {"gesv", [](int n, float* a, float* b, float*, float*,
                    int* ipiv) { return lumoSgesv(n, 3, a, n, ipiv, b, n); }},
        {"geqrf", [](int n, float* a, float* b, float*, float*,
                     int*) { return lumoSgeqrf(n, n - 50, a, n, b); }},
        {"gels", [](int n, float* a, float* b, float*, float*,
                    int*) { return lumoSgels('N', n - 50, n, 2, a, n, b, n); }},
        {"gesvd", [](int n, float* a, float* b, float*, float*, int*) {
             return lumoSgesvd('N', 'N', n, n, a, n, b, nullptr, 1, nullptr, 1);
         }}};
    for (const int capability : {20, 90})
        for (const auto& [name, routine] : routines) {
            const Calls expected = traced(capability, 410, routine);
            const Calls actual = predicted(capability, 410, routine);
            EXPECT_GT(expected.launches + expected.products, 10) << name;
            EXPECT_EQ(expected.launches, actual.launches) << name << " " << capability;
            EXPECT_EQ(expected.products, actual.products) << name << " " << capability;
            EXPECT_EQ(expected.copies, actual.copies) << name << " " << capability;
        }
}

// The bidiagonal matrix that the host is given is like that of a random matrix: the iteration takes
// as many sweeps, each of which is two launches on an old device.
TEST(TimelineCalls, IterationsTakeTheirUsualCourse) {
    const Routine decomposition = [](int n, float* a, float* s, float* u, float* vt, int*) {
        return lumoSgesvd('S', 'S', n, n, a, n, s, u, n, vt, n);
    };
    const double expected = double(traced(20, 200, decomposition).launches);
    EXPECT_NEAR(1, double(predicted(20, 200, decomposition).launches) / expected, 0.1);
}

// --- Machine files ------------------------------------------------------------------------------

TEST(MachineFiles, ComeBackAsTheyWereWritten) {
    for (const std::string& name : timeline::machineNames()) {
        const timeline::Machine machine = timeline::machineOf(name);
        std::string text, section;
        for (const timeline::Figure& f : timeline::figuresOf(machine)) {
            if (f.section != section) text += "[" + f.section + "]\n";
            section = f.section;
            text += f.key + " = " + f.value + " ; " + name + "\n";
        }
        const auto again = timeline::figuresOf(timeline::readMachine(name, text));
        for (const timeline::Figure& f : timeline::figuresOf(machine))
            EXPECT_TRUE(std::any_of(again.begin(), again.end(), [&](const timeline::Figure& g) {
                return g.key == f.key && g.section == f.section && g.value == f.value;
            })) << f.key;
    }
}

TEST(MachineFiles, AreRefusedWithTheLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"[device]\ncapability = fast ; me\n", "x, line 2: capability is a number above 0"},
        {"[device]\n\nprocessors = 3\n", "x, line 3: processors has no source"},
        {"[device]\nprocessors = 3 ; me\nprocessors = 3 ; me\n",
         "x, line 3: processors stands here"},
        {"[kernels]\nwings = 2 ; me\n", "x, line 2: wings is no figure of this section"},
        {"# one\n[memory]\nbandwidth = 2:3 1:4 ; me\n", "x, line 3: bandwidth is SIZE:NUMBER"},
        {"[products]\ntiles = 2x3 ; me\n", "x, line 2: tiles is ROWSxCOLUMNS:PART"},
        {"[device\n", "x, line 1: a section is [NAME]"},
        {"[host]\nlaunch = nan ; me\n", "x, line 2: launch is a number that is not negative"},
        {"[host]\nlaunch = 1 ; me\n", "x: [device] name is missing"}};
    for (const auto& [text, words] : cases) try {
            timeline::readMachine("x", text);
            FAIL() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(0u, std::string(error.what()).rfind(words, 0)) << error.what();
        }
    EXPECT_THROW(timeline::machineOf("abacus"), std::runtime_error);
}

// Between the sizes along their logarithm, a step where one size has two figures.
TEST(MachineFiles, HaveFiguresBySize) {
    const timeline::BySize figure{{{10, 1}, {1000, 4}, {1000, 2}}};
    EXPECT_DOUBLE_EQ(1, figure.at(1));
    EXPECT_DOUBLE_EQ(2, figure.at(100));
    EXPECT_NEAR(4, figure.at(999.9999), 1e-5);
    EXPECT_DOUBLE_EQ(2, figure.at(1000));
    EXPECT_DOUBLE_EQ(2, figure.at(1e9));
}

}  // namespace
}  // namespace test
