// What an inspection costs beside the network: `process` on one region and the analyser's `execute`, against enqueueV2
// alone on a picture of the same size. They take turns in random order; at the end come the ratios of the medians of
// `process` and enqueueV2.

#include "benchhost.h"
#include "filebytes.h"
#include "ocranalyser.h"
#include "scriptedtool.h"

#include <NvInfer.h>

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int height = 32;
constexpr int widths[] = {64, 100, 160, 320};

class SilentLogger : public nvinfer1::ILogger
{
public:
    void log(Severity, const char*) noexcept override { }
};

/// The shipped engine with device memory for its widest picture; the runtime itself, without plug-in and detector.
class BareEngine
{
public:
    bool load(const QString& path)
    {
        const auto file = scribo::tool::FileBytes::read(path);
        runtime.reset(nvinfer1::createInferRuntime(logger));
        if (!runtime || !file) {
            return false;
        }
        engine.reset(runtime->deserializeCudaEngine(file->data(), file->size()));
        context.reset(engine ? engine->createExecutionContext() : nullptr);
        if (!context || cudaStreamCreate(&stream) != cudaSuccess) {
            return false;
        }
        buffers.resize(2);
        return setWidth(widths[3]) && allocate(0) && allocate(1);
    }

    bool setWidth(int width)
    {
        nvinfer1::Dims dims = context->getBindingDimensions(0);
        dims.d[3] = width;
        return context->setBindingDimensions(0, dims);
    }

    bool run()
    {
        return context->enqueueV2(buffers.data(), stream, nullptr) && cudaStreamSynchronize(stream) == cudaSuccess;
    }

private:
    bool allocate(int binding)
    {
        const nvinfer1::Dims dims = context->getBindingDimensions(binding);
        std::size_t bytes = sizeof(float);
        for (int axis = 0; axis < dims.nbDims; ++axis) {
            bytes *= static_cast<std::size_t>(dims.d[axis]);
        }
        return cudaMalloc(&buffers[static_cast<std::size_t>(binding)], bytes) == cudaSuccess;
    }

    SilentLogger logger;
    std::unique_ptr<nvinfer1::IRuntime> runtime;
    std::unique_ptr<nvinfer1::ICudaEngine> engine;
    std::unique_ptr<nvinfer1::IExecutionContext> context;
    cudaStream_t stream = nullptr;
    std::vector<void*> buffers;
};

/// Prints as usual and keeps the time of every repetition.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                times[run.run_name.function_name + "/" + run.run_name.args].push_back(run.GetAdjustedRealTime());
            }
        }
    }

    void printRatios()
    {
        for (const int width : widths) {
            const double process = median("process/" + std::to_string(width));
            const double network = median("enqueueV2/" + std::to_string(width));
            if (process == 0 || network == 0) {
                continue; // filtered out
            }
            std::printf("region of %3d x %d: process %7.1f us, enqueueV2 %7.1f us, ratio %.3f\n", width, height,
                process, network, process / network);
        }
    }

private:
    double median(const std::string& name)
    {
        std::vector<double>& values = times[name];
        if (values.empty()) {
            return 0;
        }
        std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
        return values[values.size() / 2];
    }

    std::map<std::string, std::vector<double>> times;
};

cv::Mat printedPicture(int width)
{
    cv::Mat picture(height, width, CV_8UC3, cv::Scalar::all(210));
    cv::putText(picture, "LOT 4827 A", {4, 24}, cv::FONT_HERSHEY_SIMPLEX, 0.7, cv::Scalar::all(30), 2);
    return picture;
}

void add(const char* name, int width, const std::function<void(benchmark::State&)>& body)
{
    benchmark::RegisterBenchmark(name, body)->Arg(width)->UseRealTime()->Unit(benchmark::kMicrosecond);
}

void addWidth(const LoadedPlugin& plugin, OCRAnalyser* analyser, BareEngine* bare, int width)
{
    add("process", width, [&plugin, width](benchmark::State& state) {
        ScriptedTool tool;
        tool.picture = printedPicture(width);
        tool.taughtRegions = {QRectF(0, 0, width, height)};
        const auto station = plugin.makeInstance(&tool);
        for (auto _ : state) {
            station->process(&tool, 0);
        }
    });
    add("execute", width, [analyser, width](benchmark::State& state) {
        std::vector<SOrgAI_ResInfo> lines;
        const cv::Mat picture = printedPicture(width);
        for (auto _ : state) {
            if (analyser->execute(picture, lines) != 1) {
                state.SkipWithError("the reading failed");
            }
        }
    });
    add("enqueueV2", width, [bare, width](benchmark::State& state) {
        if (!bare->setWidth(width)) {
            state.SkipWithError("the engine refuses the width");
        }
        for (auto _ : state) {
            if (!bare->run()) {
                state.SkipWithError("the run failed");
            }
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    const BenchHost host(argc, argv);
    const LoadedPlugin& plugin = host.plugin();
    BareEngine bare;
    if (plugin.root() == nullptr || !bare.load(QStringLiteral("model/ocr_printed_p1_1_v1.trt"))) {
        std::fprintf(stderr, "the plug-in or the engine cannot be loaded: %s\n", qPrintable(plugin.errorString()));
        return 1;
    }
    OCRAnalyser analyser(QStringLiteral("./model/ocr_printed_p1_1_v1.trt"));
    for (const int width : widths) {
        addWidth(plugin, &analyser, &bare, width);
    }

    std::vector<std::string> arguments = {argv[0], "--benchmark_enable_random_interleaving=true",
        "--benchmark_repetitions=15", "--benchmark_min_time=0.05"};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    auto count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) {
        return 2;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    return 0;
}
