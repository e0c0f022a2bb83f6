// Device and page-locked memory: allocators, handles, host-bound matrices, the workspace pool.
#include <numeric>
#include <optional>
#include <thread>

#include "cudalib/Algorithm/Memset.h"
#include "cudalib/managed_memory.h"
#include "lumo_memory.h"
#include "routine/host_bound_matrix.h"
#include "runtime/frame.h"
#include "support/arguments.h"
#include "support/machine.h"
#include "support/matrix.h"

namespace {

using namespace cudalib;
using namespace lumo;
using test::Matrix, test::Outcome, test::outcome, test::whatOf;
using Cf = lumo::Complex<float>;
using Cd = lumo::Complex<double>;

template <class T>
std::size_t pitch(std::size_t rows, int capability) {
    return lumo::blasPitch<T>(rows, capability, capability > 12);
}

class MemoryTest : public test::OnSoftwareDevice {
  protected:
    static int traced(const std::string& name) { return test::count(software::stopTrace(), name); }
};

TEST_F(MemoryTest, PitchRule) {
    const std::size_t cases[][2] = {
        {192, pitch<float>(100, 20)},   {480, pitch<float>(480, 20)}, {576, pitch<float>(512, 20)},
        {1632, pitch<float>(1500, 20)}, {96, pitch<float>(0, 20)},    {96, pitch<float>(1, 35)},
        {128, pitch<float>(100, 13)},   {544, pitch<float>(512, 13)}, {512, pitch<float>(512, 12)},
        {416, pitch<float>(384, 10)},   {96, pitch<float>(33, 14)},   {192, pitch<float>(100, -1)},
        {192, pitch<int>(100, 20)},     {416, pitch<int>(384, 12)},   {64, pitch<double>(1, 20)},
        {320, pitch<double>(256, 20)},  {144, pitch<double>(97, 13)}, {240, pitch<double>(192, 12)},
        {64, pitch<Cf>(0, 20)},         {320, pitch<Cf>(200, 20)},    {288, pitch<Cf>(256, 13)},
        {224, pitch<Cf>(192, 11)},      {96, pitch<Cd>(65, 20)},      {160, pitch<Cd>(128, 20)},
        {144, pitch<Cd>(128, 13)},      {432, pitch<Cd>(384, 13)},
    };
    for (const auto& [expected, actual] : cases) EXPECT_EQ(expected, actual);
}

// The call by which two 3 x 5 matrices are allocated, and their pitch.
template <template <class> class Alloc>
std::string allocation() {
    software::startTrace();
    const ManagedMemory<double, Alloc> memory({3, 5}, 2);
    return test::written(software::stopTrace().at(0)) + ", pitch " +
           std::to_string(memory.allocator().pitch());
}
TEST_F(MemoryTest, Allocators) {
    EXPECT_EQ("cudaMalloc 240, pitch 3", allocation<CudaAllocator>());
    EXPECT_EQ("cudaMallocPitch 24 10, pitch 64", allocation<CudaPitchAllocator>());
    EXPECT_EQ("cudaMalloc 5120, pitch 64", allocation<lumo::BlasAllocator>());
    EXPECT_EQ("cudaMallocHost 240, pitch 3", allocation<PageLockedAllocator>());
}

TEST_F(MemoryTest, AllocationFailures) {
    software::inject({1, "cudaMallocPitch", 4});
    EXPECT_THROW((ManagedMemory<float, CudaPitchAllocator>({3, 3})), CudaRuntimeException);
    EXPECT_EQ(4, cudaGetLastError());
    const Extent all{~0u, ~0u};
    software::startTrace();
    EXPECT_THROW((ManagedMemory<float, CudaAllocator>(all, 4)), CudaMemoryException);
    EXPECT_THROW((ManagedMemory<float, lumo::BlasAllocator>(all, 4)), CudaMemoryException);
    EXPECT_THROW((ManagedMemory<Cd, PageLockedAllocator>(all)), CudaMemoryException);
    EXPECT_EQ(0, traced("cudaMalloc")) << "a size beyond size_t is not cut to a small one";
}

TEST_F(MemoryTest, HandlesShareAndTheLastOneFrees) {
    using Memory = ManagedMemory<float, CudaAllocator>;
    Memory outer;
    {
        Memory first({4, 5});
        Memory second = first;  // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ(first.data(), second.data());
        EXPECT_EQ(2, first.useCount());
        outer = second;
        EXPECT_EQ(80u, outer.bytes());
    }
    EXPECT_EQ(1, outer.useCount());
    EXPECT_EQ(80u, software::usage().deviceBytes);
    {
        auto part = Memory::borrow(outer.data(), {3, 2}, 4);
        EXPECT_EQ(4, part.leadingDimension());
        EXPECT_EQ(outer.data(), part.data());
    }
    EXPECT_EQ(80u, software::usage().deviceBytes) << "borrowed memory is not freed";
    software::inject({1, "cudaFree", cudaErrorUnknown});
    outer = Memory();
    EXPECT_EQ(0u, software::usage().deviceBytes);
    EXPECT_EQ(cudaSuccess, cudaGetLastError()) << "a failing release is nobody's error";
}

TEST_F(MemoryTest, EmptyHandles) {
    software::startTrace();
    for (auto [rows, columns, depth, ld] :
         {std::array<unsigned, 4>{0, 0, 1, 1}, {0, 5, 1, 1}, {5, 0, 1, 5}, {5, 5, 0, 5}}) {
        ManagedMemory<float, lumo::BlasAllocator> memory({rows, columns}, depth);
        EXPECT_TRUE(memory.empty());
        EXPECT_EQ(nullptr, memory.data());
        EXPECT_EQ(int(ld), memory.leadingDimension());
        float untouched = 3;
        memory.copyFromHost(&untouched, ld);
        memory.copyToHost(&untouched, ld);
        EXPECT_EQ(3, untouched);
        HostBoundMatrix<float> bound({rows, columns}, nullptr, int(ld), uploadAndDownload, depth);
        EXPECT_EQ(nullptr, bound.data());
        EXPECT_EQ(int(ld), bound.leadingDimension());
    }
    EXPECT_TRUE(software::stopTrace().empty());
}

// Two 3 x 4 matrices on the host, to a device block and back, by each of the six copies.
template <template <class> class Alloc>
void roundTrips() {
    constexpr Extent extent{3, 4};
    ManagedMemory<int, Alloc> memory(extent, 2);
    ManagedMemoryAllocatorInterface<int>& copies = memory.allocator();
    std::vector<int> packed(24), back(24, -1);
    std::iota(packed.begin(), packed.end(), 100);
    copies.copyFromPackedHost(memory.data(), packed.data(), extent, 2);
    copies.copyToPackedHost(back.data(), memory.data(), extent, 2);
    EXPECT_EQ(packed, back);

    constexpr std::size_t ld = 5, slice = 23;
    std::vector<int> padded(2 * slice, -7);
    const std::size_t p = copies.pitch();
    copies.copyToHost2D(padded.data(), ld, slice, memory.data(), p, p * 4, extent, 2);
    for (std::size_t k = 0; k < padded.size(); ++k) {
        const std::size_t i = k % slice % ld, j = k % slice / ld;
        EXPECT_EQ(i < 3 && j < 4 ? packed[k / slice * 12 + j * 3 + i] : -7, padded[k]) << k;
    }
    for (int& x : padded) x += 1000;
    copies.copyFromHost2D(memory.data(), p, p * 4, padded.data(), ld, slice, extent, 2);

    std::vector<int> strided(20, -7);  // elements 2 to 9 of the first matrix
    copies.copyToHostStrided(strided.data(), ld, memory.data(), extent, 2, 8);
    for (std::size_t k = 0; k < 20; ++k) {
        const std::size_t element = k / ld * 3 + k % ld;
        const bool copied = k % ld < 3 && element >= 2 && element < 10;
        EXPECT_EQ(copied ? 1100 + int(element) : -7, strided[k]) << k;
    }
    for (int& x : strided) x += 1000;
    copies.copyFromHostStrided(memory.data(), strided.data(), ld, extent, 4, 5);
    copies.copyToPackedHost(back.data(), memory.data(), extent, 2);
    for (int k = 0; k < 24; ++k)
        EXPECT_EQ(packed[k] + (k >= 4 && k < 9 ? 2000 : 1000), back[k]) << k;

    copies.setPitch(9);
    EXPECT_EQ(9u, copies.pitch());
}

TEST_F(MemoryTest, Copies) {
    roundTrips<CudaAllocator>();
    roundTrips<CudaPitchAllocator>();
    roundTrips<lumo::BlasAllocator>();
    ManagedMemory<int, CudaAllocator> memory({3, 4});
    int host[12] = {};
    software::inject({1, "cudaMemcpy", cudaErrorInvalidValue});
    EXPECT_THROW(memory.copyFromHost(host, 3), CudaRuntimeException);
    software::inject({1, "cudaMemcpy2D", cudaErrorMemoryAllocation});
    EXPECT_THROW(memory.copyToHost(host, 4), CudaMemoryException);
    cudaGetLastError();
}

// --- Host-bound matrices -------------------------------------------------------------------

class HostBoundTest : public MemoryTest {
  protected:
    const Matrix<float> original = Matrix<float>::random(5, 4, 7);
    Matrix<float> a = original;

    HostBoundMatrix<float> bind(TransferMode mode) {
        return HostBoundMatrix<float>({5, 4}, a.data.data(), a.ld, mode);
    }
    // What the device makes of the matrix.
    void compute(const HostBoundMatrix<float>& bound) {
        memset(bound.data(), std::size_t(bound.leadingDimension()) * 4, 9.0f);
    }
    const Matrix<float> computed = test::filled(5, 4, 9.0f, 7);
};

TEST_F(HostBoundTest, Modes) {
    for (auto [mode, uploads, copies] : {std::tuple{upload, 1, 1},
                                         {download, 0, 1},
                                         {uploadAndDownload, 1, 2},
                                         {noTransfer, 0, 0}}) {
        a = original;
        software::startTrace();
        {
            auto bound = bind(mode);
            EXPECT_EQ(mode == noTransfer, bound.data() == nullptr);
            EXPECT_EQ(mode == noTransfer ? 5 : 96, bound.leadingDimension());
            if (uploads) {
                Matrix<float> there(96, 4);
                cudaMemcpy(there.data.data(), bound.data(), 96 * 4 * 4, cudaMemcpyDeviceToHost);
                for (int j = 0; j < 4; ++j)
                    for (int i = 0; i < 96; ++i)
                        EXPECT_TRUE(i < 5 ? there(i, j) == original(i, j) : std::isnan(there(i, j)))
                            << i << ", " << j << ": padding is not written";
            }
            if (bound.data()) compute(bound);
        }
        EXPECT_EQ(copies, traced("cudaMemcpy2D"));
        EXPECT_EQ(mode & download ? computed : original, a);
        EXPECT_EQ(0u, software::usage().deviceBytes);
    }
}

TEST_F(HostBoundTest, DownloadsOnlyWhatSomebodyReads) {
    {
        auto bound = bind(uploadAndDownload);
        compute(bound);
        bound.cancelDownload();
    }
    EXPECT_EQ(original, a);
    try {
        auto bound = bind(uploadAndDownload);
        compute(bound);
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(original, a) << "the operation failed";

    // A whole life within the unwinding for something older is a life like any other.
    struct Cleanup {
        std::function<void()> call;
        ~Cleanup() { call(); }
    };
    try {
        Cleanup cleanup{[&] { compute(bind(download)); }};
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(computed, a);
}

// --- The workspace pool --------------------------------------------------------------------

class PoolTest : public MemoryTest {
  protected:
    static int allocations() { return traced("cudaMalloc"); }
    static void use(std::size_t bytes) { Workspace<char> w(bytes); }
    static constexpr std::size_t page = 4096;
};

TEST_F(PoolTest, Reuse) {
    use(10 * page);
    software::startTrace();
    for (std::size_t size : {10 * page, 10 * page - 1, 5 * page}) use(size);
    EXPECT_EQ(0, allocations());
    software::startTrace();
    for (std::size_t size : {5 * page - 1, 10 * page + 1}) use(size);  // too wasteful, too large
    EXPECT_EQ(2, allocations());
    software::startTrace();
    Workspace<char> best(5 * page), next(5 * page), last(4 * page);
    EXPECT_EQ(1, allocations()) << "the best fit, then the larger ones, then none";
    EXPECT_NE(best.data(), next.data());
    Workspace<double> none(0);
    EXPECT_EQ(nullptr, none.data());
}

TEST_F(PoolTest, HoldsALimitedNumber) {
    static_assert(WorkspacePool::heldAtMost == 8);
    std::vector<std::optional<Workspace<char>>> out(11);
    for (std::size_t i = 0; i < 11; ++i) out[i].emplace((i + 1) * page);
    EXPECT_EQ(66 * page, software::usage().deviceBytes);
    for (auto& w : out) w.reset();
    EXPECT_EQ(60 * page, software::usage().deviceBytes) << "the smallest go first";
    lumoFreeBuffers();
    EXPECT_EQ(0u, software::usage().deviceBytes);
}

TEST_F(PoolTest, EachThreadItsOwn) {
    use(page);
    std::thread([] {
        software::startTrace();
        use(page);
        EXPECT_EQ(1, allocations());
        lumoFreeBuffers();
    }).join();
    EXPECT_EQ(page, software::usage().deviceBytes);
    Workspace<char> busy(page);
    lumoFreeBuffers();
    EXPECT_EQ(page, software::usage().deviceBytes) << "a buffer in use stays";
}

TEST_F(PoolTest, FailureTexts) {
    EXPECT_EQ("Memory Pool: bad request", whatOf([] { WorkspacePool::acquire(~std::size_t(0)); }));
    EXPECT_EQ("MemoryPool: empty", whatOf([] { WorkspacePool::release(const_cast<char*>("")); }));
    void* mine = WorkspacePool::acquire(page);
    std::thread([&] {
        EXPECT_EQ("MemoryPool: empty", whatOf([&] { WorkspacePool::release(mine); }));
    }).join();
    WorkspacePool::release(mine);
    EXPECT_EQ("MemoryPool: empty", whatOf([&] { WorkspacePool::release(mine); })) << "twice";
    WorkspacePool::release(nullptr);
    EXPECT_THROW(Workspace<double>(~std::size_t(0) / 4), std::exception);
}

TEST_F(PoolTest, ShortMemoryTakesWhatIsIdle) {
    start(test::machine(20, 256 * page));
    use(100 * page);
    std::thread([] { use(100 * page); }).join();
    {
        ManagedMemory<char, CudaAllocator> big({page, 150});
        EXPECT_EQ(150 * page, software::usage().deviceBytes) << "both threads' buffers are gone";
        EXPECT_EQ(cudaSuccess, cudaGetLastError());
        software::startTrace();
        EXPECT_THROW(use(107 * page), CudaMemoryException);
        EXPECT_EQ(1, allocations()) << "nothing idle, no second attempt";
        cudaGetLastError();
        use(106 * page);
    }
    use(200 * page);
    EXPECT_EQ(lumoNoError, lumo::guarded(synchronizeAndCheck));
}

// --- Device memory for applications --------------------------------------------------------

TEST_F(MemoryTest, Exports) {
    const auto a = Matrix<float>::random(3, 4, 5);
    Matrix<float> back(3, 4, 6);
    void* p = nullptr;
    ASSERT_EQ(lumoNoError, lumoDeviceMalloc(&p, 7 * 4 * sizeof(float)));
    EXPECT_EQ(lumoNoError, lumoDeviceSetMatrix(3, 4, 4, a.data.data(), 5, p, 7));
    EXPECT_EQ(lumoNoError, lumoDeviceGetMatrix(3, 4, 4, p, 7, back.data.data(), 6));
    EXPECT_EQ(Matrix<float>::random(3, 4, 6), back);
    auto checks = test::checksInOrder<int, int, std::size_t, const void*, int, void*, int>(
        {1, 2, 3, 5, 7, 4, 6}, {-1, -1, 0, nullptr, 1, nullptr, 1}, {2, 1, 4, &a, 2, &back, 2});
    checks.push_back({0, {0, 1, 4, nullptr, 1, nullptr, 1}});
    checks.push_back({-3, {1, 2, ~std::size_t(0) / 4 + 1, &a, 4, &back, 1}});
    for (const auto& [info, arguments] : checks)
        for (auto copy : {lumoDeviceSetMatrix, lumoDeviceGetMatrix})
            EXPECT_EQ(Outcome(info ? lumoArgumentError : lumoNoError, info),
                      outcome(std::apply(copy, arguments)));
    EXPECT_EQ(lumoNoError, lumoDeviceFree(p));
    EXPECT_EQ(Outcome(lumoRuntimeError, cudaErrorInvalidDevicePointer), outcome(lumoDeviceFree(p)));
    EXPECT_EQ(lumoInsufficientMemory, lumoDeviceMalloc(&p, ~std::size_t(0)));
    EXPECT_EQ(nullptr, p);
    software::inject({1, "cudaThreadSynchronize", cudaErrorLaunchFailure});
    EXPECT_EQ(lumoRuntimeError, lumoDeviceMalloc(&p, 8));
    EXPECT_EQ(nullptr, p);
    EXPECT_EQ(lumoNoError, lumoDeviceFree(nullptr));
    p = &back;
    lumoShutdown();
    EXPECT_EQ(lumoNotInitialized, lumoDeviceMalloc(&p, 8));
    EXPECT_EQ(nullptr, p);
}

}  // namespace
