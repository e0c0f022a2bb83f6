// The threads that kernels run on: results do not depend on their number, and a forked child
// gets threads of its own. Each case is a child process, since a process decides once.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "basic/Transpose/Transpose.h"
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

std::uint64_t bitsOfASolution() {
    auto a = Matrix<float>::random(n, n), b = Matrix<float>::random(n, 3);
    std::vector<int> pivots(n);
    if (lumoSgesv(n, 3, a.data.data(), n, pivots.data(), b.data.data(), n)) return 0;
    return bits(a.data) + bits(b.data);
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
    for (auto work : {bitsOfATranspose, bitsOfASolution}) {
        const std::uint64_t alone = inChild(1, work);
        EXPECT_NE(0u, alone);
        EXPECT_EQ(alone, inChild(4, work));
        EXPECT_EQ(alone, inChild(7, work));
    }
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
