#pragma once

#include "result.h"

#include <NvInfer.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace scribo::tool {

/// One output of a run.
struct RunOutput
{
    std::vector<std::int64_t> extents;
    std::vector<float> values; ///< row-major
};

/// Runs an engine through the runtime's public interface, as a detector does.
class EngineRunner
{
public:
    /// Takes the engine in `size` bytes, which need not outlive the call. The error is what the runtime says of bytes
    /// that it refuses.
    Result<void> load(const void* bytes, std::size_t size);

    /// The number of values of a picture of `width` columns.
    std::size_t pictureSize(int width) const;

    /// Runs the loaded engine on `picture` (channels x height x width) and gives its outputs in binding order. The
    /// error is what the runtime says when it refuses.
    Result<std::vector<RunOutput>> run(int width, const std::vector<float>& picture);

private:
    /// Keeps the runtime's last complaint.
    class ComplaintLog : public nvinfer1::ILogger
    {
    public:
        void log(Severity severity, const char* message) noexcept override;

        std::string text;
    };

    /// Makes the buffers for this width; an empty list when that cannot be done, else an output without values for
    /// each.
    std::vector<RunOutput> prepare(int width);
    bool execute(const std::vector<float>& picture, std::vector<RunOutput>& outputs);
    bool growBuffer(std::size_t binding, std::size_t bytes);

    /// Device memory of a binding. It stays the process's: the interface cannot release any.
    struct Buffer
    {
        void* memory = nullptr;
        std::size_t bytes = 0;
    };

    ComplaintLog log;
    std::unique_ptr<nvinfer1::IRuntime> runtime;
    std::unique_ptr<nvinfer1::ICudaEngine> engine;
    std::unique_ptr<nvinfer1::IExecutionContext> context;
    cudaStream_t stream = nullptr;
    std::vector<Buffer> buffers;
};

/// A picture of `size` values spread over -1 to 1, always the same.
std::vector<float> testPicture(std::size_t size);

} // namespace scribo::tool
