#include "cuda_runtime_api.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

namespace scribo::test {
namespace {

constexpr std::size_t size = 1000;

/// Two allocations and some host memory.
class CudaMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(cudaMalloc(&first, size), cudaSuccess);
        ASSERT_EQ(cudaMalloc(&second, size), cudaSuccess);
        for (std::size_t i = 0; i < size; ++i) {
            host[i] = static_cast<std::byte>(i * 7);
        }
    }

    static cudaError_t copy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind)
    {
        return cudaMemcpyAsync(to, from, bytes, kind, nullptr);
    }

    std::byte* first = nullptr;
    std::byte* second = nullptr;
    std::vector<std::byte> host = std::vector<std::byte>(size);
    std::vector<std::byte> back = std::vector<std::byte>(size);
};

TEST_F(CudaMemory, GoesThereAndBack)
{
    EXPECT_EQ(copy(first, host.data(), size, cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(copy(second, first, size, cudaMemcpyDeviceToDevice), cudaSuccess);
    EXPECT_EQ(copy(back.data(), second, size, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(back, host);
    EXPECT_EQ(cudaStreamSynchronize(nullptr), cudaSuccess);
}

TEST_F(CudaMemory, FindsTheDirectionItself)
{
    std::vector<std::byte> other(size);
    EXPECT_EQ(copy(first, host.data(), size, cudaMemcpyDefault), cudaSuccess);
    EXPECT_EQ(copy(second, first, size, cudaMemcpyDefault), cudaSuccess);
    EXPECT_EQ(copy(back.data(), second, size, cudaMemcpyDefault), cudaSuccess);
    EXPECT_EQ(copy(other.data(), back.data(), size, cudaMemcpyDefault), cudaSuccess);
    EXPECT_EQ(copy(back.data(), host.data(), size, cudaMemcpyHostToHost), cudaSuccess);
    EXPECT_EQ(other, host);
}

TEST_F(CudaMemory, CopiesWithinOneAllocationOnly)
{
    EXPECT_EQ(copy(first + 1, host.data(), size, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(first + size - 1, host.data(), 1, cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(copy(first + size, host.data(), 1, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(first - 1, host.data(), 1, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(back.data(), first + 1, size, cudaMemcpyDeviceToHost), cudaErrorInvalidValue);
    EXPECT_EQ(copy(second, first + 1, size, cudaMemcpyDeviceToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(second + 1, first, size, cudaMemcpyDeviceToDevice), cudaErrorInvalidValue);
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const std::size_t bytes : {most, most - 8, most / 2, size + 1}) {
        EXPECT_EQ(copy(first, host.data(), bytes, cudaMemcpyHostToDevice), cudaErrorInvalidValue) << bytes;
        EXPECT_EQ(copy(first + 8, host.data(), bytes, cudaMemcpyHostToDevice), cudaErrorInvalidValue) << bytes;
    }
}

TEST_F(CudaMemory, ChecksTheKindOfEachSide)
{
    EXPECT_EQ(copy(back.data(), host.data(), size, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(back.data(), host.data(), size, cudaMemcpyDeviceToHost), cudaErrorInvalidValue);
    EXPECT_EQ(copy(back.data(), host.data(), size, cudaMemcpyDeviceToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(second, first, size, cudaMemcpyHostToDevice), cudaErrorInvalidMemcpyDirection);
    EXPECT_EQ(copy(second, first, size, cudaMemcpyDeviceToHost), cudaErrorInvalidMemcpyDirection);
    EXPECT_EQ(copy(second, host.data(), size, cudaMemcpyHostToHost), cudaErrorInvalidMemcpyDirection);
    EXPECT_EQ(copy(back.data(), first, size, cudaMemcpyHostToHost), cudaErrorInvalidMemcpyDirection);
    EXPECT_EQ(copy(first, host.data(), size, static_cast<cudaMemcpyKind>(5)), cudaErrorInvalidMemcpyDirection);
}

TEST_F(CudaMemory, NullAndNothing)
{
    EXPECT_EQ(copy(nullptr, host.data(), 1, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(first, nullptr, 1, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(copy(nullptr, nullptr, 0, cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(copy(first, host.data(), 0, cudaMemcpyHostToDevice), cudaSuccess);
}

TEST_F(CudaMemory, StreamsMustExist)
{
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    EXPECT_NE(stream, nullptr);
    EXPECT_EQ(cudaMemcpyAsync(first, host.data(), size, cudaMemcpyHostToDevice, stream), cudaSuccess);
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
    auto* const foreign = reinterpret_cast<cudaStream_t>(host.data());
    EXPECT_EQ(
        cudaMemcpyAsync(first, host.data(), size, cudaMemcpyHostToDevice, foreign), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaStreamSynchronize(foreign), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaStreamCreate(nullptr), cudaErrorInvalidValue);
}

TEST(CudaAllocation, GivesAlignedMemoryOrSaysWhyNot)
{
    void* pointer = nullptr;
    ASSERT_EQ(cudaMalloc(&pointer, 1), cudaSuccess);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pointer) % 64, 0U);
    EXPECT_EQ(cudaMalloc(static_cast<void**>(nullptr), 1), cudaErrorInvalidValue);
    ASSERT_EQ(cudaMalloc(&pointer, 0), cudaSuccess);
    EXPECT_EQ(pointer, nullptr);
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const std::size_t bytes : {most, most - 63, most - 64, most / 2}) {
        pointer = &pointer;
        EXPECT_EQ(cudaMalloc(&pointer, bytes), cudaErrorMemoryAllocation) << bytes;
        EXPECT_EQ(pointer, nullptr);
    }
}

TEST(CudaAllocation, FromSeveralThreads)
{
    const auto work = [] {
        std::vector<std::byte> host(64);
        for (int i = 0; i < 500; ++i) {
            std::byte* device = nullptr;
            cudaStream_t stream = nullptr;
            ASSERT_EQ(cudaMalloc(&device, 64), cudaSuccess);
            ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
            ASSERT_EQ(cudaMemcpyAsync(device, host.data(), 64, cudaMemcpyHostToDevice, stream), cudaSuccess);
            ASSERT_EQ(cudaMemcpyAsync(host.data(), device, 65, cudaMemcpyDeviceToHost, stream), cudaErrorInvalidValue);
        }
    };
    std::thread other(work);
    work();
    other.join();
}

TEST(CudaErrors, HaveTheirOwnTexts)
{
    EXPECT_STREQ(cudaGetErrorString(cudaSuccess), "no error");
    EXPECT_STREQ(cudaGetErrorString(cudaErrorInvalidValue), "invalid argument");
    EXPECT_STREQ(cudaGetErrorString(cudaErrorMemoryAllocation), "out of memory");
    EXPECT_STREQ(cudaGetErrorString(cudaErrorInvalidMemcpyDirection), "invalid copy direction for memcpy");
    EXPECT_STREQ(cudaGetErrorString(cudaErrorInvalidResourceHandle), "invalid resource handle");
    EXPECT_STREQ(cudaGetErrorString(cudaErrorUnknown), "unknown error");
    EXPECT_STREQ(cudaGetErrorString(static_cast<cudaError>(7)), "unrecognized error code");
}

} // namespace
} // namespace scribo::test
