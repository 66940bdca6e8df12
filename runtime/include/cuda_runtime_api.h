#pragma once

// The names of the CUDA runtime API that Scribo uses, for the CPU runtime: "device" memory is
// host memory of which every allocation is known, so that a wrong copy is refused as on a GPU.

#include <cstddef>

/// Values as in the CUDA runtime.
enum cudaError {
    cudaSuccess = 0,
    cudaErrorInvalidValue = 1,
    cudaErrorMemoryAllocation = 2,
    cudaErrorInvalidMemcpyDirection = 21,
    cudaErrorInvalidResourceHandle = 400,
    cudaErrorUnknown = 999,
};
using cudaError_t = cudaError;

enum cudaMemcpyKind {
    cudaMemcpyHostToHost = 0,
    cudaMemcpyHostToDevice = 1,
    cudaMemcpyDeviceToHost = 2,
    cudaMemcpyDeviceToDevice = 3,
    cudaMemcpyDefault = 4,
};

using cudaStream_t = struct CUstream_st*;
using cudaEvent_t = struct CUevent_st*;

// Any thread may call any of these. What is queued on a stream is carried out before the call
// returns, but only code that waits for cudaStreamSynchronize() also works on a GPU.

extern "C" {
/// `size` bytes of device memory in `*pointer`, for the life of the process; none and null for a
/// size of 0. cudaErrorMemoryAllocation, and null, when there is no room.
cudaError_t cudaMalloc(void** pointer, std::size_t size);
/// Copies `size` bytes. cudaErrorInvalidValue when a device side is not inside one allocation,
/// cudaErrorInvalidMemcpyDirection when a host side is device memory or `kind` does not exist,
/// cudaErrorInvalidResourceHandle when `stream` does not exist (null is the default stream).
cudaError_t cudaMemcpyAsync(
    void* destination, const void* source, std::size_t size, cudaMemcpyKind kind, cudaStream_t stream);
/// A new stream, for the life of the process.
cudaError_t cudaStreamCreate(cudaStream_t* stream);
/// Waits until everything queued on `stream` is done and returns the first error of that work;
/// cudaErrorInvalidResourceHandle when there is no such stream.
cudaError_t cudaStreamSynchronize(cudaStream_t stream);
/// A text for `error`; never null, never freed.
const char* cudaGetErrorString(cudaError_t error);
}

template <class T>
inline cudaError_t cudaMalloc(T** pointer, std::size_t size)
{
    return cudaMalloc(reinterpret_cast<void**>(pointer), size);
}
