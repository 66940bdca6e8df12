#pragma once

#include "NvInfer.h"
#include "array.h"
#include "recordinglogger.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace scribo::test {

/// Device memory that tests share, since it is never given back: at least `size` bytes, the same for
/// the same `slot` of the same thread.
void* deviceBuffer(std::size_t slot, std::size_t size);

/// An engine with one context, through the public interface only.
class Session
{
public:
    explicit Session(const std::vector<std::uint8_t>& bytes);

    bool isReady() const { return context != nullptr; }
    nvinfer1::IExecutionContext& executionContext() { return *context; }
    nvinfer1::ICudaEngine& engine() { return *cudaEngine; }
    RecordingLogger& logger() { return reports; }

    /// Sets the width, copies the input, runs, copies the outputs. The input's last extent is the
    /// width. Empty, with the reports in the logger, when any step fails.
    std::vector<Array> run(const Array& input);

private:
    RecordingLogger reports;
    std::unique_ptr<nvinfer1::IRuntime> runtime;
    std::unique_ptr<nvinfer1::ICudaEngine> cudaEngine;
    std::unique_ptr<nvinfer1::IExecutionContext> context;
};

} // namespace scribo::test
