// Draws docs/alignment.png: a label as it was taught, as it came on the line, and turned and shifted back.
//
//   alignment_picture FILE

#include "align/partfinder.h"
#include "scenes.h"

#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

using scribo::line::AlignmentSettings;
using scribo::line::PartFinder;
using scribo::line::PartPose;

namespace {

/// What is shown of each picture.
const cv::Rect shown(340, 262, 600, 500);

const cv::Scalar green(60, 255, 90);
const cv::Scalar blue(90, 170, 255);
const cv::Scalar red(255, 60, 60);

void outline(cv::Mat& picture, const PartPose& pose, const QRectF& region, const cv::Scalar& colour)
{
    std::vector<cv::Point> points;
    for (const QPointF& corner : foundCorners(pose, region)) {
        points.emplace_back(cvRound(corner.x()), cvRound(corner.y()));
    }
    cv::polylines(picture, points, true, colour, 3, cv::LINE_AA);
}

void write(cv::Mat& picture, const std::string& words, cv::Point at, const cv::Scalar& colour)
{
    for (const bool isShadow : {true, false}) {
        cv::putText(picture, words, at, cv::FONT_HERSHEY_DUPLEX, 0.8, isShadow ? cv::Scalar::all(0) : colour,
            isShadow ? 4 : 1, cv::LINE_AA);
    }
}

cv::Mat panel(const cv::Mat& picture, const std::string& title)
{
    cv::Mat cut = picture(shown).clone();
    write(cut, title, {14, 32}, cv::Scalar::all(255));
    return cut;
}

void outlineAll(cv::Mat& picture, const scenes::Label& label, const PartPose& pose)
{
    outline(picture, pose, QRectF(label.patch()), green);
    for (const QRectF& region : label.regions()) {
        outline(picture, pose, region, blue);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: alignment_picture FILE\n");
        return 2;
    }
    const scenes::Label label(3);
    AlignmentSettings settings;
    settings.patch = label.patch();
    cv::Mat taught = label.taughtPicture(2);
    const auto finder = PartFinder::teach(taught, settings);
    PartPose truth;
    truth.pivot = label.pivot();
    truth.shift = QPointF(38, 24);
    truth.turn = 9;
    scenes::Disturbance disturbance;
    disturbance.gain = 0.85;
    disturbance.noise = 3;
    cv::Mat moved = label.picture(truth, 4, disturbance);
    const PartPose found = finder ? finder->find(moved).value_or(PartPose()) : PartPose();
    if (found.score == 0) {
        std::fprintf(stderr, "the label is not found\n");
        return 1;
    }
    cv::Mat aligned = alignedPicture(moved, found);

    PartPose still;
    still.pivot = found.pivot;
    const QRectF bad[] = {{QPointF(720, 546), QSizeF(90, 44)}, {QPointF(385, 470), QSizeF(40, 110)},
        label.regions().first().adjusted(-2, -2, 2, 2)};
    for (int i = 0; i < 3; ++i) {
        settings.patch = bad[i].toAlignedRect();
        const auto other = PartFinder::teach(label.taughtPicture(2), settings);
        std::printf("%d: %s\n", i + 1, other ? "can be taught" : other.error().message.c_str());
    }
    outlineAll(taught, label, still);
    for (int i = 0; i < 3; ++i) {
        outline(taught, still, bad[i], red);
        const QPointF corner = bad[i].topLeft() + QPointF(6, 26);
        write(taught, std::to_string(i + 1), {cvRound(corner.x()), cvRound(corner.y())}, red);
    }
    outlineAll(moved, label, found);
    outlineAll(aligned, label, still);

    cv::Mat all;
    cv::hconcat(std::vector<cv::Mat>{panel(taught, "taught"), panel(moved, "found"), panel(aligned, "aligned")}, all);
    cv::resize(all, all, {}, 0.6, 0.6, cv::INTER_AREA);
    cv::cvtColor(all, all, cv::COLOR_RGB2BGR);
    return cv::imwrite(argv[1], all) ? 0 : 1;
}
