#include "cudalib/transfer.h"

#include <cstring>
#include <numeric>

#include "support/machine.h"
#include "support/matrix.h"

namespace {

using cudalib::copy2D;
using cudalib::copy3D;
using cudalib::CopyMode;
constexpr auto up = cudaMemcpyHostToDevice, down = cudaMemcpyDeviceToHost;
constexpr std::size_t hugePitch = 2147483647;

class TransferTest : public test::OnSoftwareDevice {
  protected:
    static constexpr std::size_t size = 512;
    using Bytes = std::vector<unsigned char>;
    using Names = std::vector<std::string>;

    void SetUp() override {
        OnSoftwareDevice::SetUp();
        void* p = nullptr;
        ASSERT_EQ(cudaSuccess, cudaMalloc(&p, size));
        device = static_cast<char*>(p);
        host.resize(size);
        std::iota(host.begin(), host.end(), 0);
        clear();
    }
    void TearDown() override {
        cudaFree(device);
        OnSoftwareDevice::TearDown();
    }
    void clear() { cudaMemset(device, 0xEE, size); }
    Bytes onDevice() {
        Bytes bytes(size);
        EXPECT_EQ(cudaSuccess, cudaMemcpy(bytes.data(), device, size, down));
        return bytes;
    }
    // The calls that a copy makes, by name.
    template <class Copy>
    Names calls(Copy copy, cudaError_t expected = cudaSuccess) {
        Names names;
        for (const auto& call : test::traceOf([&] { EXPECT_EQ(expected, copy()); }))
            names.push_back(call.name);
        cudaGetLastError();
        return names;
    }
    char* device;
    Bytes host;
};

TEST_F(TransferTest, CheapestCallForTheGeometry) {
    const Names flat{"cudaMemcpy"}, pitched{"cudaMemcpy2D"};
    const struct {
        std::size_t toPitch, toSlice, fromPitch, fromSlice, height, depth;
        Names calls;
    } cases[] = {
        {8, 0, 8, 0, 4, 1, flat},
        {12, 0, 12, 0, 4, 1, pitched},  // equal pitches, but padding between
        {8, 0, 12, 0, 4, 1, pitched},
        {12, 0, 8, 0, 4, 1, pitched},
        {hugePitch - 1, 0, 8, 0, 1, 1, pitched},
        {hugePitch, 0, 8, 0, 1, 1, flat},  // by rows, of which there is one
        {8, 0, hugePitch, 0, 1, 1, flat},
        {hugePitch, 0, 8, 0, 0, 1, {}},
        {8, 32, 8, 32, 4, 3, flat},  // three slices of four rows in one piece
        {8, 40, 8, 40, 4, 3, {3, "cudaMemcpy"}},
        {8, 32, 8, 40, 4, 3, {3, "cudaMemcpy"}},
        {12, 48, 8, 32, 4, 3, {3, "cudaMemcpy2D"}},
    };
    for (const auto& c : cases) {
        clear();
        EXPECT_EQ(c.calls, calls([&] {
                      return copy3D(device, c.toPitch, c.toSlice, host.data(), c.fromPitch,
                                    c.fromSlice, 8, c.height, c.depth, up);
                  }));
        Bytes expected(size, 0xEE);
        for (std::size_t slice = 0; slice < c.depth; ++slice)
            for (std::size_t row = 0; row < c.height; ++row)
                std::copy_n(&host[slice * c.fromSlice + row * c.fromPitch], 8,
                            &expected[slice * c.toSlice + row * c.toPitch]);
        EXPECT_EQ(expected, onDevice()) << "case " << &c - cases;
    }
}

TEST_F(TransferTest, AsynchronousOnItsStream) {
    void* pinned = nullptr;
    ASSERT_EQ(cudaSuccess, cudaMallocHost(&pinned, size));
    cudaStream_t stream;
    ASSERT_EQ(cudaSuccess, cudaStreamCreate(&stream));
    for (auto [pitch, name] : {std::pair{std::size_t(8), "cudaMemcpyAsync"},
                               {12, "cudaMemcpy2DAsync"},
                               {hugePitch, "cudaMemcpyAsync"}}) {
        const auto trace = test::traceOf([&, pitch = pitch] {
            EXPECT_EQ(cudaSuccess, copy2D(pinned, pitch, device, 8, 8, pitch == hugePitch ? 1 : 4,
                                          down, CopyMode::asynchronous, stream));
        });
        ASSERT_EQ(1u, trace.size());
        EXPECT_EQ(name, trace[0].name);
        EXPECT_NE("0", trace[0].arguments.back()) << "the stream";
    }
    cudaStreamSynchronize(stream);
    cudaStreamDestroy(stream);
    cudaFreeHost(pinned);
}

TEST_F(TransferTest, RowsAndSlicesStopAtTheFirstError) {
    auto callsUntil = [&](const software::Fault& fault, auto copy) {
        software::inject(fault);
        return calls(copy, fault.cudaError);
    };
    EXPECT_EQ(Names{"cudaMemcpy"}, callsUntil({1, "cudaMemcpy", cudaErrorUnknown}, [&] {
                  return copy2D(device, hugePitch, host.data(), 8, 8, 3, up);
              }));
    EXPECT_EQ(Names(2, "cudaMemcpy2D"), callsUntil({2, "cudaMemcpy2D", cudaErrorInvalidValue}, [&] {
                  return copy3D(device, 12, 48, host.data(), 8, 32, 8, 4, 3, up);
              }));
    EXPECT_EQ(
        Names{"cudaMemcpy"},
        callsUntil(
            {1, "cudaMemcpy", cudaErrorUnknown},
            [&] {
                return cudalib::copyElementRun({device, 5, 1}, {host.data(), 4, 1}, 3, 9, 1, up);
            }))
        << "the head alone";
}

// All runs of up to three columns and a bit, between all pairs of starts in the first two.
TEST_F(TransferTest, ElementRuns) {
    using Element = std::uint16_t;
    auto place = [](std::size_t i, std::size_t rows, std::size_t pitch) {
        return (pitch * (i / rows) + i % rows) * sizeof(Element);
    };
    for (std::size_t rows : {1, 2, 3})
        for (std::size_t toPitch : {rows, rows + 2})
            for (std::size_t fromPitch : {rows, rows + 1})
                for (std::size_t to = 0; to < 2 * rows; ++to)
                    for (std::size_t from = 0; from < 2 * rows; ++from)
                        for (std::size_t count = 0; count <= 3 * rows + 1; ++count) {
                            clear();
                            const auto made = calls([&] {
                                return cudalib::copyElementRun({device, toPitch, to},
                                                               {host.data(), fromPitch, from}, rows,
                                                               count, sizeof(Element), up);
                            });
                            Bytes expected(size, 0xEE);
                            for (std::size_t i = 0; i < count; ++i)
                                std::memcpy(&expected[place(to + i, rows, toPitch)],
                                            &host[place(from + i, rows, fromPitch)],
                                            sizeof(Element));
                            ASSERT_EQ(expected, onDevice())
                                << rows << " rows, pitches " << toPitch << ", " << fromPitch
                                << ", from " << from << " to " << to << ", " << count;
                            if (to % rows == from % rows) {
                                ASSERT_LE(made.size(), 3u);
                            }
                            if (to % rows == 0 && from % rows == 0 && count % rows == 0) {
                                ASSERT_EQ(count ? 1u : 0u, made.size()) << "whole columns only";
                            }
                        }
}

}  // namespace
