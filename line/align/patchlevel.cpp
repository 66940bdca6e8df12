#include "align/patchlevel.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace scribo::line {

PatchLevel::PatchLevel(const cv::Mat& pixels)
    : grey(pixels)
    , unit(2 / std::hypot(pixels.cols, pixels.rows))
{
    cv::Scalar mean;
    cv::Scalar spread;
    cv::meanStdDev(grey, mean, spread);
    deviation = spread[0];
    grey.convertTo(zeroMean, CV_32F, 1, -mean[0]);
    fillModel();
    measureHold();
}

void PatchLevel::fillModel()
{
    // Central differences; at the edge the patch ends, and one-sided differences are half of what they should be.
    cv::Mat alongX;
    cv::Mat alongY;
    cv::Sobel(zeroMean, alongX, CV_32F, 1, 0, 1, 0.5, 0, cv::BORDER_REPLICATE);
    cv::Sobel(zeroMean, alongY, CV_32F, 0, 1, 1, 0.5, 0, cv::BORDER_REPLICATE);
    for (const int edge : {0, grey.cols - 1}) {
        alongX.col(edge) *= 2;
    }
    for (const int edge : {0, grey.rows - 1}) {
        alongY.row(edge) *= 2;
    }
    model.reserve(grey.total());
    for (int y = 0; y < grey.rows; ++y) {
        const double v = (y + 0.5 - 0.5 * grey.rows) * unit;
        for (int x = 0; x < grey.cols; ++x) {
            const double u = (x + 0.5 - 0.5 * grey.cols) * unit;
            const float dx = alongX.at<float>(y, x);
            const float dy = alongY.at<float>(y, x);
            model.push_back({zeroMean.at<float>(y, x), 1, dx, dy, static_cast<float>(u * dy - v * dx)});
        }
    }
}

void PatchLevel::measureHold()
{
    // The normal equations of gain, offset, shifts and turn; what gain and offset explain is taken out of the others.
    cv::Matx<double, 5, 5> sums = cv::Matx<double, 5, 5>::zeros();
    for (const Row& row : model) {
        for (int i = 0; i < 5; ++i) {
            for (int j = 0; j < 5; ++j) {
                sums(i, j) += row[i] * row[j];
            }
        }
    }
    const cv::Matx22d light = sums.get_minor<2, 2>(0, 0);
    if (deviation == 0) {
        return;
    }
    const cv::Matx33d motion = sums.get_minor<3, 3>(2, 2)
        - sums.get_minor<3, 2>(2, 0) * light.inv(cv::DECOMP_CHOLESKY) * sums.get_minor<2, 3>(0, 2);
    const cv::Matx22d shifts = motion.get_minor<2, 2>(0, 0);
    const double mean = 0.5 * (shifts(0, 0) + shifts(1, 1));
    const double spread = std::hypot(0.5 * (shifts(0, 0) - shifts(1, 1)), shifts(0, 1));
    if (mean <= 0) {
        return;
    }
    shiftRatio = std::max(0.0, (mean - spread) / (mean + spread));
    const double determinant = shifts(0, 0) * shifts(1, 1) - shifts(0, 1) * shifts(0, 1);
    if (determinant > 0) {
        // What is left of the turn when the shifts have explained what they can.
        turnRatio = std::max(0.0, cv::determinant(motion) / determinant / mean);
    }
}

} // namespace scribo::line
