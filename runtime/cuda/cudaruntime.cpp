#include "cuda_runtime_api.h"

#include "devicememory.h"
#include "streams.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <set>

/// Everything queued on a stream is carried out at once by the thread that queues it, so a stream
/// has nothing to hold: it is only an identity.
struct CUstream_st
{
};

namespace {

using scribo::cpu::DeviceMemory;

struct Streams
{
    std::mutex mutex;
    std::set<cudaStream_t> made;

    static Streams& instance()
    {
        // Never destroyed, as streams are not.
        static auto* streams = new Streams;
        return *streams;
    }
};

/// What cudaMemcpyKind says of the two sides of a copy.
struct Direction
{
    bool fromDevice;
    bool toDevice;
};

bool isKind(cudaMemcpyKind kind)
{
    return kind >= cudaMemcpyHostToHost && kind <= cudaMemcpyDefault;
}

Direction direction(cudaMemcpyKind kind, const void* destination, const void* source, std::size_t size)
{
    switch (kind) {
    case cudaMemcpyHostToHost:
        return {false, false};
    case cudaMemcpyHostToDevice:
        return {false, true};
    case cudaMemcpyDeviceToHost:
        return {true, false};
    case cudaMemcpyDeviceToDevice:
        return {true, true};
    case cudaMemcpyDefault:
        break;
    }
    const DeviceMemory& memory = DeviceMemory::instance();
    return {memory.touches(source, size), memory.touches(destination, size)};
}

/// Whether both sides of a copy are what `sides` says.
cudaError_t checkSides(const Direction& sides, const void* destination, const void* source, std::size_t size)
{
    const DeviceMemory& memory = DeviceMemory::instance();
    if ((sides.toDevice && !memory.contains(destination, size))
        || (sides.fromDevice && !memory.contains(source, size))) {
        return cudaErrorInvalidValue;
    }
    if ((!sides.toDevice && memory.touches(destination, size)) || (!sides.fromDevice && memory.touches(source, size))) {
        return cudaErrorInvalidMemcpyDirection;
    }
    return cudaSuccess;
}

} // namespace

bool scribo::cpu::isStream(cudaStream_t stream)
{
    Streams& streams = Streams::instance();
    const std::lock_guard lock(streams.mutex);
    return !stream || streams.made.count(stream) > 0;
}

cudaError_t cudaMalloc(void** pointer, std::size_t size)
{
    if (!pointer) {
        return cudaErrorInvalidValue;
    }
    *pointer = nullptr;
    if (size == 0) {
        return cudaSuccess;
    }
    *pointer = DeviceMemory::instance().allocate(size);
    return *pointer ? cudaSuccess : cudaErrorMemoryAllocation;
}

cudaError_t cudaMemcpyAsync(
    void* destination, const void* source, std::size_t size, cudaMemcpyKind kind, cudaStream_t stream)
{
    if (!isKind(kind)) {
        return cudaErrorInvalidMemcpyDirection;
    }
    if (!scribo::cpu::isStream(stream)) {
        return cudaErrorInvalidResourceHandle;
    }
    if (size == 0) {
        return cudaSuccess;
    }
    if (!destination || !source) {
        return cudaErrorInvalidValue;
    }
    const Direction sides = direction(kind, destination, source, size);
    const cudaError_t error = checkSides(sides, destination, source, size);
    if (error != cudaSuccess) {
        return error;
    }
    std::memmove(destination, source, size);
    return cudaSuccess;
}

cudaError_t cudaStreamCreate(cudaStream_t* stream)
{
    if (!stream) {
        return cudaErrorInvalidValue;
    }
    Streams& streams = Streams::instance();
    try {
        auto made = std::make_unique<CUstream_st>();
        const std::lock_guard lock(streams.mutex);
        streams.made.insert(made.get());
        *stream = made.release();
    } catch (const std::bad_alloc&) {
        return cudaErrorMemoryAllocation;
    }
    return cudaSuccess;
}

cudaError_t cudaStreamSynchronize(cudaStream_t stream)
{
    return scribo::cpu::isStream(stream) ? cudaSuccess : cudaErrorInvalidResourceHandle;
}

const char* cudaGetErrorString(cudaError_t error)
{
    switch (error) {
    case cudaSuccess:
        return "no error";
    case cudaErrorInvalidValue:
        return "invalid argument";
    case cudaErrorMemoryAllocation:
        return "out of memory";
    case cudaErrorInvalidMemcpyDirection:
        return "invalid copy direction for memcpy";
    case cudaErrorInvalidResourceHandle:
        return "invalid resource handle";
    case cudaErrorUnknown:
        return "unknown error";
    }
    return "unrecognized error code";
}
