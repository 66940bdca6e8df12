#pragma once

// The names of the TensorRT 8.6 API that Scribo uses, for the CPU runtime. Code written against
// them compiles unchanged against NVIDIA's own headers; the two are never mixed in one binary.

#include <cstddef>
#include <cstdint>

namespace nvinfer1 {

/// The extents of a tensor: the first `nbDims` entries of `d`; -1 stands for a dynamic extent.
class Dims32
{
public:
    static constexpr int32_t MAX_DIMS = 8;
    int32_t nbDims = 0;
    int32_t d[MAX_DIMS] = {};
};
using Dims = Dims32;

/// Receives the runtime's diagnostics. Implemented by the application; called from whichever
/// thread runs an operation.
class ILogger
{
public:
    enum class Severity : int32_t {
        kINTERNAL_ERROR = 0,
        kERROR = 1,
        kWARNING = 2,
        kINFO = 3,
        kVERBOSE = 4,
    };

    virtual void log(Severity severity, const char* msg) noexcept = 0;

    ILogger() = default;
    virtual ~ILogger() = default;

protected:
    ILogger(const ILogger&) = default;
    ILogger(ILogger&&) = default;
    ILogger& operator=(const ILogger&) & = default;
    ILogger& operator=(ILogger&&) & = default;
};

} // namespace nvinfer1
