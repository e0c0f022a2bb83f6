// What the harness does not see of getrf and gesv: that the algorithm ran as it is meant to, and
// the odd corners.
#include "lapack/getrs.h"
#include "lapack/lu.h"
#include "support/kernels.h"

namespace test {
namespace {

using software::Call;

class LuPaths : public OnSoftwareDevice {
  protected:
    std::vector<Call> traceOf(test::Call& call) {
        auto trace = test::traceOf([&] { EXPECT_EQ(lumoNoError, call.run()); });
        call.checkResult();
        return trace;
    }
    static std::string steps(std::string letters) {
        letters.erase(std::remove(letters.begin(), letters.end(), ' '), letters.end());
        return letters;
    }
    // The calls of these names in the order in which they came.
    static std::string order(const std::vector<Call>& trace) {
        std::string letters;
        for (const Call& call : trace) {
            if (call.name == "cudaMemcpy2DAsync" || call.name == "cudaMemcpyAsync")
                letters += call.arguments[call.arguments.size() - 2] == "2" ? 'd' : 'u';
            for (auto [name, letter] : {std::pair{"cudaStreamSynchronize", 'w'},
                                        {"KernelLASWP<", 'i'},
                                        {"KernelLASWPCOL<", 'i'},
                                        {"PermuteRows_k<", 'i'},
                                        {"PermuteRowsThere_k<", 'i'},
                                        {"LuPanel_k<", 'f'},
                                        {"LuBeside_k<", 'b'},
                                        {"GatherRows_k<", 'p'},
                                        {"cublasStrsm", 's'},
                                        {"cublasSgemm", 'g'},
                                        {"TransposeInplace_k<", 'T'},
                                        {"Transpose_k<", 't'}})
                if (count({call}, name)) letters += letter;
        }
        return letters;
    }
};

// 24 x 20 in panels of 8, 8 and 4 columns: d(ownload), w(ait) before the CPU panel, u(pload),
// i(nterchange) left, then the next block (i w s g d, the look-ahead) and the rest (i s g).
TEST_F(LuPaths, ColumnPathRunsOnePanelAhead) {
    const auto shrunk = shrinkLu<float>();
    auto call = getrfCall(Matrix<float>::random(24, 20), inDevice);
    // At the end the panel's stream is waited for before its memory goes back.
    EXPECT_EQ(steps("d wu iwsgd isg wui iwsgd wui w"), order(traceOf(*call)));
}

// 20 x 20, the same panels, transposed: the panel is gathered and scattered by transposes.
TEST_F(LuPaths, SquarePathWorksOnTheTranspose) {
    const auto shrunk = shrinkLu<float>();
    auto call = getrfCall(Matrix<float>::random(20, 20, 22), inDevice);
    EXPECT_EQ(steps("Ttd wu iwtsgtd isg wui iwtsgtd wui wt T w"), order(traceOf(*call)));
}

// 20 x 20, the same panels: right interchanges, the next panel, the rest, left interchanges. A
// solve copies its right-hand sides, permutes them once, and waits for nothing.
TEST_F(LuPaths, ModernDevicesHaveFewLaunches) {
    start(machine(90));
    const auto shrunk = shrinkLu<float>();
    const auto trace = traceOf(*gesvCall<float>(20, 1, 0, inDevice));
    // "ww": for the device's stream and the panel's, before their memory goes.
    EXPECT_EQ("dwuisgdsgwuisgdiwuiwwupss", order(trace));
    // The panels' stream waits for the device's and the device's for it, never the host's.
    EXPECT_EQ(7, count(trace, "cudaStreamWaitEvent"));
    EXPECT_EQ(count(trace, "cudaEventRecord"), count(trace, "cudaStreamWaitEvent"));
}

// 20 x 20, the same panels by the device, in strips of 4: f(actorise), then b and g for what is
// beside the strip in the panel; i s g for the next panel, i s g for the rest. Nothing is copied or
// waited for before the end.
TEST_F(LuPaths, DevicesMayFactoriseTheirPanels) {
    start(machine(90));
    const auto shrunk = shrinkLuThere<float>();
    const auto trace = traceOf(*getrfCall(Matrix<float>::random(20, 20), inDevice));
    EXPECT_EQ(steps("fbgfb iisg fbgfb iisg iisg f ii i ww"), order(trace));
    EXPECT_EQ(2, count(trace, "cudaMemcpy"));  // the pivots: to the host, and to the caller
    std::vector<int> pivots[2];
    for (int there : {0, 1}) {
        const auto tuned = there ? shrinkLuThere<float>() : shrinkLu<float>();
        auto call = getrfCall(Matrix<float>::random(290, 277), inDevice);
        EXPECT_EQ(lumoNoError, call->run());
        pivots[there] = call->result<3>().data;
    }
    EXPECT_EQ(pivots[0], pivots[1]);
}

TEST_F(LuPaths, SmallMatricesAreTheCpus) {
    auto call = getrfCall(Matrix<float>::random(50, 50), inDevice);
    EXPECT_EQ("", order(traceOf(*call)));
    call.reset();
    start(machine(13));  // panels of 64 columns here, 192 on later devices
    auto early = getrfCall(Matrix<float>::random(65, 65), inDevice);
    const auto trace = traceOf(*early);
    EXPECT_EQ(1, count(trace, "cublasStrsm"));
    EXPECT_EQ(1, count(trace, "cublasSgemm"));
}

TEST_F(LuPaths, TheSwitchToTheSquarePath) {
    auto column = getrfCall(Matrix<float>::random(512, 512), inHost);
    auto trace = traceOf(*column);
    EXPECT_EQ(0, count(trace, "TransposeInplace_k<"));
    EXPECT_EQ(3, count(trace, "cudaMemcpy2DAsync") / 2);
    auto square = getrfCall(Matrix<float>::random(513, 513), inHost);
    trace = traceOf(*square);
    EXPECT_EQ(2, count(trace, "TransposeInplace_k<"));
    EXPECT_EQ(6, count(trace, "cudaMemcpyAsync"));  // flat: three panels down and up
    // The matrix itself crosses once each way, as the host interface's operand; the pivots go to
    // the operand that stands for them, and from there to the caller.
    EXPECT_EQ(3, count(trace, "cudaMemcpy2D"));
    EXPECT_EQ(1, count(trace, "cudaMemcpy"));
}

TEST_F(LuPaths, HostSolveHoldsItsOperandsAndTwoPanels) {
    const int n = 600, nrhs = 10;
    const std::size_t pitch = 672;  // 600 rows up to a multiple of 96
    auto call = gesvCall<float>(n, nrhs, 0, inHost);
    const std::size_t most = peakOf([&] { return call->run(); });
    call->checkResult();
    const std::size_t panel = std::size_t(n) * 192 * sizeof(float);
    const std::size_t operands = pitch * (n + nrhs + 1) * sizeof(float);
    EXPECT_LE(most, operands + panel + 4096);
    EXPECT_LE(software::usage().pageLockedPeak, panel);
}

TEST_F(LuPaths, NoRightHandSides) {
    auto call = gesvCall(Matrix<float>::random(30, 30), filled(30, 1, 7.f), inHost);
    call->look([](auto, auto, auto& a, auto& ipiv, auto& b) {
        EXPECT_EQ(lumoNoError, lumoSgesv(30, 0, a.at(), 30, ipiv.at(), b.at(), 30));
        checkFactors(a, ipiv);
        EXPECT_TRUE(b.untouched());
    });
}

TEST_F(LuPaths, GetrsRefusesTransposes) {
    OnDevice<double> onDevice(3, 3, 0);
    int ipiv[] = {1, 2, 3};
    auto solve = [&](char trans, int n, int nrhs, double* b, int ldb) {
        lumo::getrs(trans, n, nrhs, onDevice.data(), 3, ipiv, b, ldb);
    };
    EXPECT_THROW(solve('t', 3, 1, onDevice.data(), 3), lumo::FeatNotImplException);
    EXPECT_THROW(solve('C', 3, 1, onDevice.data(), 3), lumo::FeatNotImplException);
    EXPECT_NO_THROW(solve('T', 3, 0, nullptr, 3));
    double *a0 = onDevice.data(), *null = nullptr;
    expectChecks(&lumo::getrs<double>, {1, 2, 3, 5, 8, 7}, {'X', -1, -1, a0, 2, ipiv, null, 2},
                 {'N', 3, 1, a0, 3, ipiv, a0, 3});
}

}  // namespace
}  // namespace test
