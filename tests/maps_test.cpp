// Launch maps and the launch convention, with kernels that count how often they meet an element.
#include "cudalib/maps.h"

#include "cudalib/Algorithm/Memset.h"
#include "cudalib/kernel.h"
#include "cudalib/launch.h"
#include "support/machine.h"
#include "support/matrix.h"

template <class Map>
LUMO_KERNEL void CountKernel1D(int* counts, std::size_t n) {
    cudalib::kernel(
        [&](cudalib::Elements elements) { elements.each(n, [&](std::size_t i) { ++counts[i]; }); });
}

template <class Map>
LUMO_KERNEL void CountKernel2D(int* counts, int ld, int m, int n) {
    cudalib::kernel([&](cudalib::Tile tile) {
        tile.columns(n, [&](auto column, int j) {
            column.rows(0, m, [&](int i) { ++cudalib::at(counts, ld, i, j); });
        });
    });
}

using namespace cudalib;

LUMO_REGISTER(lumo::Types<int>, cudalib::Kernel<&CountKernel1D<Map1D>, cudalib::OnElement>,
              cudalib::Kernel<&CountKernel2D<Map2D>, cudalib::OnElement>)

namespace {

using Shape = std::array<unsigned, 3>;
Shape plain(dim3 d) {
    return {d.x, d.y, d.z};
}

class MapsTest : public test::OnSoftwareDevice {
  protected:
    void limit(std::array<int, 3> maxGrid) {
        auto limited = test::machine();
        limited.devices[0].maxGrid = maxGrid;
        start(limited);
    }
};

// As the launchers see it: through the base class.
void expectShapes(const MapBase& map, Shape block, Shape grid) {
    EXPECT_EQ(block, plain(map.blockShape()));
    EXPECT_EQ(grid, plain(map.gridShape()));
}

TEST_F(MapsTest, Shapes) {
    for (auto [hint, threads] : {std::pair{0, 256u}, {1, 256u}, {2, 64u}, {3, 16u}, {4, 256u}}) {
        Map1D map(1000);
        map.sizingHint = hint;
        expectShapes(map, {threads, 1, 1}, {(1000 + threads - 1) / threads, 1, 1});
        map.blockSize = 100;
        expectShapes(map, {100, 1, 1}, {10, 1, 1});
        Map2D plane(17, 33);
        plane.sizingHint = hint;
        expectShapes(plane, {16, 16, 1}, {2, 3, 1});
    }
    Map2D plane(17, 33);
    plane.blockX = 32;
    plane.blockY = 4;
    expectShapes(plane, {32, 4, 1}, {1, 9, 1});
    expectShapes(Map2D(17, 1), {16, 16, 1}, {2, 1, 1});
    expectShapes(TriangularMap2D(16, 17), {16, 16, 1}, {1, 2, 1});
    expectShapes(StaticMap1D<64>(65), {64, 1, 1}, {2, 1, 1});
    expectShapes(StaticMap1D<128>(128), {128, 1, 1}, {1, 1, 1});
    expectShapes(StaticMap2D<16, 16>(33, 32), {16, 16, 1}, {3, 2, 1});
    expectShapes(StaticRowWiseMap<256>(1000, 600), {256, 1, 1}, {1000, 1, 1});
    expectShapes(StaticRowWiseMap<256>(1000, 600, 1), {256, 1, 1}, {1000, 3, 1});
    expectShapes(StaticColumnWiseMap<256>(1000, 600), {256, 1, 1}, {600, 1, 1});
    expectShapes(StaticColumnWiseMap<256>(1000, 600, 1), {256, 1, 1}, {600, 4, 1});
    EXPECT_EQ((Shape{32, 1, 1}), plain(StaticOneBlockMap1D<32>().blockShape()));
    EXPECT_EQ((Shape{1, 1, 1}), plain(StaticOneBlockMap1D<256>().gridShape()));

    struct : Map1D {
        using Map1D::Map1D;
        dim3 blockShape() const override { return {10, 1, 1}; }
    } own(95);
    expectShapes(own, {10, 1, 1}, {10, 1, 1});
}

TEST_F(MapsTest, GridsAreHalvedToTheDevicesLimits) {
    const struct {
        std::array<int, 3> limits;
        int n, block;
        Shape grid;
    } cases[] = {
        {{65535, 65535, 65535}, 65535 * 256, 0, {65535, 1, 1}},
        {{65535, 65535, 65535}, 65536 * 256 + 1, 0, {32768, 3, 1}},
        {{65535, 65535, 1}, 2147483647, 0, {32768, 256, 1}},
        {{65535, 65535, 1}, 2147483647, 1, {65535, 32769, 1}},
        {{3, 1, 1}, 27, 1, {3, 2, 5}},  // y within the limit of x, z without any
        {{1, 1, 1}, 5, 1, {1, 1, 5}},
    };
    for (const auto& c : cases) {
        limit(c.limits);
        Map1D map(c.n);
        map.blockSize = c.block;
        EXPECT_EQ(c.grid, plain(map.gridShape())) << "case " << &c - cases;
    }
}

TEST_F(MapsTest, LimitsAreAskedForEachTime) {
    auto wide = test::device(20), narrow = wide;
    narrow.maxGrid[0] = 4;
    test::startAfresh({{wide, narrow}});
    const Map1D map(8 * 256);
    EXPECT_EQ((Shape{8, 1, 1}), plain(map.gridShape()));
    cudaSetDevice(1);
    const auto trace = test::traceOf([&] { EXPECT_EQ((Shape{4, 2, 1}), plain(map.gridShape())); });
    EXPECT_EQ(1, test::count(trace, "cudaGetDevice"));
    EXPECT_EQ(1, test::count(trace, "cudaGetDeviceProperties"));
    software::inject({1, "cudaGetDevice", cudaErrorUnknown});
    EXPECT_THROW(map.gridShape(), CudaRuntimeException);
}

// Each element of an m x n matrix is met once, and nothing beside them.
template <class Launch>
void expectOnce(int m, int n, Launch launch) {
    const test::OnDevice counts(test::filled(m + 3, n + 1, 0));
    ASSERT_EQ(cudaSuccess, launch(counts.data()));
    const auto result = counts.download();
    for (int j = 0; j < result.n; ++j)
        for (int i = 0; i < result.m; ++i)
            ASSERT_EQ(i < m && j < n, result(i, j)) << i << ", " << j << " of " << m << " x " << n;
}

TEST_F(MapsTest, EveryElementOnce) {
    for (auto limits :
         {std::array{65535, 65535, 65535}, {3, 3, 65535}, {1, 1, 65535}, {2, 7, 65535}}) {
        limit(limits);
        for (int n : {1, 2, 15, 16, 17, 255, 1023, 1024, 1025, 5000})
            for (int block : {0, 1, 7, 16}) {
                SCOPED_TRACE(block);
                Map1D map(n);
                map.blockSize = block;
                expectOnce(n, 1,
                           [&](int* at) { return launch(map, &CountKernel1D<Map1D>, at, n); });
            }
    }
    start(test::machine());
    for (auto [m, n] : {std::pair{1, 1}, {16, 16}, {17, 33}, {1025, 3}, {5, 100}})
        for (auto [x, y] : {std::pair{0, 0}, {32, 4}, {1, 7}}) {
            Map2D map(m, n);
            map.blockX = x;
            map.blockY = y;
            expectOnce(m, n, [&, m = m, n = n](int* at) {
                return launch(map, &CountKernel2D<Map2D>, at, m + 3, m, n);
            });
        }
}

// --- The launch convention -----------------------------------------------------------------

TEST_F(MapsTest, CallsInOrder) {
    const test::OnDevice memory(test::filled(3, 1, 1.0f));
    std::string calls;
    for (const auto& call : test::traceOf([&] { cudalib::memset(memory.data(), 3, 2.0f); }))
        calls += (call.name.find("cudaGet") == 0 ? call.name : test::written(call)) + "\n";
    EXPECT_EQ(
        "cudaGetDevice\n"
        "cudaGetDeviceProperties\n"
        "cudaConfigureCall (1,1,1) (256,1,1) 0 0\n"
        "cudaSetupArgument 8 0\n"
        "cudaSetupArgument 4 8\n"
        "cudaSetupArgument 8 16\n"
        "cudaLaunch CudaMemsetTypeKernel<cudalib::Map1D, float> (1,1,1) (256,1,1)\n",
        calls);
}

TEST_F(MapsTest, FailedStepsLeaveTheKernelUnlaunched) {
    const auto before = test::filled(3, 1, 1);
    const test::OnDevice memory(before);
    for (auto [nth, call, pushes, launches] : {std::tuple{1, "cudaConfigureCall", 0, 0},
                                               {1, "cudaSetupArgument", 1, 0},
                                               {3, "cudaSetupArgument", 3, 0},
                                               {1, "cudaLaunch", 3, 1}}) {
        software::inject({nth, call, 9});
        const auto trace = test::traceOf([&] { cudalib::memset(memory.data(), 3, 7); });
        EXPECT_EQ(pushes, test::count(trace, "cudaSetupArgument"));
        EXPECT_EQ(launches, test::count(trace, "cudaLaunch"));
        EXPECT_EQ(9, cudaGetLastError()) << "left for the caller's check";
        EXPECT_EQ(before, memory.download());
    }
    cudalib::memset(memory.data(), 3, 7);
    EXPECT_EQ(test::filled(3, 1, 7), memory.download()) << "the next one runs";
}

}  // namespace
