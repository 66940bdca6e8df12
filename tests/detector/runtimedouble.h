#pragma once

#include <NvInfer.h>
#include <cuda_runtime_api.h>

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

/// What one run of the scripted network sees and fills in.
struct NetworkRun
{
    nvinfer1::Dims inputDims;
    std::vector<float> input; ///< as it lay in device memory
    std::vector<std::vector<float>> outputs; ///< to be filled, sized as the output bindings
};

/// The script of the nvinfer1 and CUDA doubles, and what they were asked to do.
///
/// The doubles stand for an engine with one input and any number of outputs of extents (width / 4, 1,
/// 4). Everything put on a stream happens when that stream is synchronised, never earlier, so that tests find code that
/// reads or reuses a buffer too soon or waits for another stream. A stream that was never created is refused.
struct RuntimeDouble
{
    // The engine
    bool makesRuntime = true;
    bool makesEngine = true;
    bool makesContext = true;
    std::vector<std::string> bindingNames = {"input", "output"};
    nvinfer1::Dims inputDims; ///< as the engine declares them; (1, 3, 32, -1) unless changed
    bool acceptsDimensions = true;
    bool acceptsRuns = true;
    /// Extents of an output binding at an input width.
    std::function<nvinfer1::Dims(std::int32_t binding, std::int32_t width)> outputDims;
    std::function<void(NetworkRun&)> network;

    // CUDA: the n-th call of an operation, from 1, that shall fail
    std::set<int> failingMallocs;
    std::set<int> failingCopies;
    std::set<int> failingSynchronizations;
    bool createsStreams = true;

    // What happened
    std::string engineBytes; ///< what was handed to deserialisation
    nvinfer1::ILogger* logger = nullptr; ///< what the runtime was made with
    std::int32_t version = 0;
    std::vector<std::string> calls; ///< "createRuntime", "malloc 1280", "copy 1280 to device", "~engine", ...
    int mallocs = 0;
    int copies = 0;
    int synchronizations = 0;
    std::vector<NetworkRun> runs;

    /// The one script of the process.
    static RuntimeDouble& instance();
    /// Back to an engine that works, with device memory released. No detector may be in use.
    static void reset();

    /// How many entries of `calls` begin with `prefix`.
    int callCount(const std::string& prefix) const;

    // Used by the doubles
    std::map<char*, std::size_t> deviceMemory; ///< start and size of every allocation
    std::map<cudaStream_t, std::vector<std::function<void()>>> streamWork; ///< by stream, in order
};

nvinfer1::Dims makeDims(std::initializer_list<std::int32_t> extents);

/// Scores of a network with 4 classes that sees `classes`, one per time step.
std::vector<float> scoresOf(const std::vector<int>& classes);
