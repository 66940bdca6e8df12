// What finding a part again costs, at 0.3, 1.3 and 5 megapixels, against OpenCV alone that tries the same patch turned
// by every whole degree at every pixel of the same range. One thread; times of the processor. At the end come the
// ratios of the medians.

#include "align/partfinder.h"
#include "scenes.h"

#include <benchmark/benchmark.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

using scribo::line::AlignmentSettings;
using scribo::line::PartFinder;
using scribo::line::PartPose;

/// A taught picture and one of the moved part, `percent` of 1280 x 1024 wide and high, with all ranges in proportion.
struct Scene
{
    explicit Scene(int percent)
    {
        const scenes::Label label(3);
        const double scale = percent / 100.0;
        PartPose pose;
        pose.pivot = label.pivot();
        pose.shift = QPointF(43.3, -28.6);
        pose.turn = 7.3;
        scenes::Disturbance disturbance;
        disturbance.noise = 4;
        const auto interpolation = percent < 100 ? cv::INTER_AREA : cv::INTER_LINEAR;
        cv::resize(label.taughtPicture(1), taught, {}, scale, scale, interpolation);
        cv::resize(label.picture(pose, 4, disturbance), moved, {}, scale, scale, interpolation);
        settings.patch = QRect(label.patch().topLeft() * scale, label.patch().size() * scale);
        settings.shiftX *= scale;
        settings.shiftY *= scale;
    }

    cv::Mat taught;
    cv::Mat moved;
    AlignmentSettings settings;
};

/// The score of the best of 31 turns at every pixel of the range.
double bestOfTurnedPatches(const Scene& scene)
{
    cv::Mat taught;
    cv::Mat moved;
    cv::cvtColor(scene.taught, taught, cv::COLOR_RGB2GRAY);
    cv::cvtColor(scene.moved, moved, cv::COLOR_RGB2GRAY);
    const QRect& rect = scene.settings.patch;
    const cv::Rect patch(rect.x(), rect.y(), rect.width(), rect.height());
    const auto rangeX = static_cast<int>(scene.settings.shiftX);
    const auto rangeY = static_cast<int>(scene.settings.shiftY);
    const cv::Rect area(patch.x - rangeX, patch.y - rangeY, patch.width + 2 * rangeX, patch.height + 2 * rangeY);
    const cv::Point2f middle(patch.width * 0.5F - 0.5F, patch.height * 0.5F - 0.5F);
    double best = 0;
    for (int turn = -15; turn <= 15; ++turn) {
        cv::Mat turned;
        cv::warpAffine(taught(patch), turned, cv::getRotationMatrix2D(middle, turn, 1), patch.size(), cv::INTER_LINEAR,
            cv::BORDER_REPLICATE);
        cv::Mat scores;
        cv::matchTemplate(moved(area), turned, scores, cv::TM_CCOEFF_NORMED);
        double score = 0;
        cv::minMaxLoc(scores, nullptr, &score);
        best = std::max(best, score);
    }
    return best;
}

/// Prints as usual and keeps the medians.
class MedianReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") {
                medians[run.run_name.function_name + "/" + run.run_name.args] = run.GetAdjustedCPUTime();
            }
        }
    }

    std::map<std::string, double> medians;
};

void addSize(int percent)
{
    const auto add = [percent](const char* name, auto body) {
        benchmark::RegisterBenchmark(name,
            [percent, body](benchmark::State& state) {
                const Scene scene(percent);
                body(scene, state);
            })
            ->Arg(percent)
            ->Unit(benchmark::kMillisecond);
    };
    add("find", [](const Scene& scene, benchmark::State& state) {
        const auto finder = PartFinder::teach(scene.taught, scene.settings);
        for (auto _ : state) {
            if (!finder || !finder->find(scene.moved)) {
                state.SkipWithError("the part is not found");
                break;
            }
        }
    });
    add("alignedPicture", [](const Scene& scene, benchmark::State& state) {
        PartPose pose;
        pose.shift = QPointF(43.3, -28.6);
        pose.turn = 7.3;
        for (auto _ : state) {
            benchmark::DoNotOptimize(alignedPicture(scene.moved, pose).data);
        }
    });
    add("turnedPatches", [](const Scene& scene, benchmark::State& state) {
        for (auto _ : state) {
            benchmark::DoNotOptimize(bestOfTurnedPatches(scene));
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    cv::setNumThreads(1);
    constexpr int sizes[] = {50, 100, 200};
    for (const int percent : sizes) {
        addSize(percent);
    }
    std::vector<std::string> arguments = {argv[0], "--benchmark_enable_random_interleaving=true",
        "--benchmark_repetitions=9", "--benchmark_min_time=0.05"};
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
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const int percent : sizes) {
        const std::string size = "/" + std::to_string(percent);
        const double find = reporter.medians["find" + size];
        const double turned = reporter.medians["turnedPatches" + size];
        if (find > 0 && turned > 0) {
            std::printf("%4d x %4d: find %7.2f ms, alignedPicture %6.2f ms, turned patches %8.1f ms, ratio %.4f\n",
                1280 * percent / 100, 1024 * percent / 100, find, reporter.medians["alignedPicture" + size], turned,
                find / turned);
        }
    }
    return 0;
}
