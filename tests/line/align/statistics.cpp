// How precisely parts are found, and how well pictures with the part differ from pictures without it. Not a test: run
// it by hand when the search changes. docs/alignment.md has its figures.
//
//   alignment_statistics [PICTURES [FIRST]]
//
// PICTURES: how many with the part and how many without it (1,000). FIRST: the number of the first of the labels (0);
// other numbers give other labels and other pictures.

#include "align/partfinder.h"
#include "scenes.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <opencv2/core/utility.hpp>
#include <vector>

using scribo::line::AlignmentSettings;
using scribo::line::NotFoundReason;
using scribo::line::PartFinder;
using scribo::line::PartPose;

namespace {

constexpr int designs = 20;

struct Taught
{
    scenes::Label label;
    PartFinder finder;
};

/// Of this thread, so that whatever else the machine does does not count.
double processorMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// `share` from 0 to 1; sorts the values.
double quantile(std::vector<double>& values, double share)
{
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}

double mean(const std::vector<double>& values)
{
    double sum = 0;
    for (const double value : values) {
        sum += value;
    }
    return values.empty() ? 0 : sum / static_cast<double>(values.size());
}

void print(const char* what, std::vector<double> values)
{
    std::printf("%-34s n %5zu  min %7.3f  1%% %7.3f  median %7.3f  mean %7.3f  99%% %7.3f  max %7.3f\n", what,
        values.size(), quantile(values, 0), quantile(values, 0.01), quantile(values, 0.5), mean(values),
        quantile(values, 0.99), quantile(values, 1));
}

const char* name(NotFoundReason reason)
{
    switch (reason) {
    case NotFoundReason::unusablePicture:
        return "unusable picture";
    case NotFoundReason::lowScore:
        return "low score";
    case NotFoundReason::ambiguous:
        return "ambiguous";
    case NotFoundReason::outsideRange:
        return "outside range";
    case NotFoundReason::cut:
        return "cut";
    }
    return "";
}

void withPart(const std::vector<Taught>& taught, int count, std::uint64_t first)
{
    std::vector<double> errors;
    std::vector<double> worst;
    std::vector<double> turns;
    std::vector<double> times;
    std::map<bool, std::vector<double>> scores;
    std::map<NotFoundReason, int> misses;
    for (int i = 0; i < count; ++i) {
        const Taught& one = taught[static_cast<std::size_t>(i % designs)];
        const std::uint64_t seed = static_cast<std::uint64_t>(i) + first * 100'000;
        cv::RNG random(seed + 4711);
        const PartPose truth = scenes::randomPose(random, one.label.pivot(), 60, 12);
        const scenes::Disturbance disturbance = scenes::randomDisturbance(random);
        const cv::Mat picture = one.label.picture(truth, seed + 1000, disturbance);
        const double start = processorMilliseconds();
        const auto found = one.finder.find(picture);
        const cv::Mat aligned = found ? alignedPicture(picture, *found) : cv::Mat();
        times.push_back(processorMilliseconds() - start);
        scores[disturbance.glare].push_back(found ? found->score : found.error().bestScore);
        if (!found) {
            ++misses[found.error().reason];
            std::printf("not found: picture %d, %s (gain %.2f, offset %.0f, noise %.1f, blur %.1f%s)\n", i,
                qPrintable(found.error().message), disturbance.gain, disturbance.offset, disturbance.noise,
                disturbance.blur, disturbance.glare ? ", glare" : "");
            continue;
        }
        turns.push_back(std::abs(found->turn - truth.turn));
        double most = 0;
        for (const QRectF& region : one.label.regions()) {
            for (const double error : scenes::cornerErrors(*found, truth, region)) {
                errors.push_back(error);
                most = std::max(most, error);
            }
        }
        worst.push_back(most);
    }
    std::printf("with the part: %d pictures, found %zu\n", count, worst.size());
    for (const auto& [reason, number] : misses) {
        std::printf("  not found, %s: %d\n", name(reason), number);
    }
    print("  error at all corners, px", errors);
    print("  the worst corner of a part, px", worst);
    print("  turn, degrees", turns);
    print("  score, no glare", scores[false]);
    print("  score, glare", scores[true]);
    print("  find and align, ms", times);
}

void withoutPart(const std::vector<Taught>& taught, int count, std::uint64_t first)
{
    const char* const kinds[] = {"other label", "empty belt", "other kind of part", "patch covered"};
    std::map<int, std::vector<double>> scores;
    std::vector<double> times;
    int falseFinds = 0;
    std::map<NotFoundReason, int> reasons;
    for (int i = 0; i < count; ++i) {
        const Taught& one = taught[static_cast<std::size_t>(i % designs)];
        const std::uint64_t seed = static_cast<std::uint64_t>(i) + first * 100'000 + 5000;
        cv::RNG random(seed + 815 - 5000);
        const int kind = (i / designs) % 4;
        const PartPose pose = scenes::randomPose(random, one.label.pivot(), 60, 12);
        const scenes::Disturbance disturbance = scenes::randomDisturbance(random);
        cv::Mat picture;
        if (kind == 0) {
            picture = scenes::Label(3 * seed + (first + static_cast<std::uint64_t>(i % designs)) % 3)
                          .picture(pose, seed, disturbance);
        } else if (kind == 1) {
            picture = scenes::belt(seed);
        } else if (kind == 2) {
            picture = scenes::otherParts(seed, disturbance);
        } else {
            picture = one.label.coveredPicture(pose, seed, disturbance);
        }
        const double start = processorMilliseconds();
        const auto found = one.finder.find(picture);
        times.push_back(processorMilliseconds() - start);
        scores[kind].push_back(found ? found->score : found.error().bestScore);
        if (found) {
            ++falseFinds;
            std::printf("false find: picture %d, %s, score %.3f\n", i, kinds[kind], found->score);
        } else {
            ++reasons[found.error().reason];
        }
    }
    std::printf("without the part: %d pictures, false finds %d\n", count, falseFinds);
    for (const auto& [reason, number] : reasons) {
        std::printf("  %s: %d\n", name(reason), number);
    }
    for (const auto& [kind, values] : scores) {
        print(kinds[kind], values);
    }
    print("  find, ms", times);
}

} // namespace

int main(int argc, char** argv)
{
    const int count = argc > 1 ? std::atoi(argv[1]) : 1000;
    const std::uint64_t first = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 0;
    cv::setNumThreads(1);
    std::vector<Taught> taught;
    for (std::uint64_t seed = first; seed < first + designs; ++seed) {
        const scenes::Label label(seed);
        AlignmentSettings settings;
        settings.patch = label.patch();
        const auto finder = PartFinder::teach(label.taughtPicture(seed), settings);
        if (!finder) {
            std::printf("label %d: %s\n", static_cast<int>(seed), finder.error().message.c_str());
            return 1;
        }
        taught.push_back({label, *finder});
    }
    withPart(taught, count, first);
    withoutPart(taught, count, first);
    return 0;
}
