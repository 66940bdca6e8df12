#pragma once

#include <NvInfer.h>

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
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
    /// Takes the engine in `size` bytes, which need not outlive the call. False, with what the
    /// runtime said in `error`, when it refuses them.
    bool load(const void* bytes, std::size_t size, QString* error);

    /// The number of values of a picture of `width` columns.
    std::size_t pictureSize(int width) const;

    /// Runs the loaded engine on `picture` (channels x height x width). The outputs come in binding
    /// order. False, with what the runtime said in `error`, when it refuses.
    bool run(int width, const std::vector<float>& picture, std::vector<RunOutput>* outputs, QString* error);

private:
    /// Keeps the runtime's last complaint.
    class ComplaintLog : public nvinfer1::ILogger
    {
    public:
        void log(Severity severity, const char* message) noexcept override;

        QString text;
    };

    bool execute(int width, const std::vector<float>& picture, std::vector<RunOutput>* outputs);
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
