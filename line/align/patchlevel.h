#pragma once

#include <array>
#include <opencv2/core/mat.hpp>
#include <vector>

namespace scribo::line {

/// The taught patch in one level of its pyramid, prepared for being compared with pictures.
class PatchLevel
{
public:
    /// What a pixel of a picture is modelled by: gain times `value` plus offset, and how it changes when the patch
    /// moves a pixel to the right or down or turns by a unit. Two places are left for the one who compares.
    enum Column { value, one, right, down, turned, columns = 8 };
    using Row = std::array<float, columns>;

    /// `pixels`: 8 bits, grey.
    explicit PatchLevel(const cv::Mat& pixels);

    cv::Size size() const { return grey.size(); }
    /// Row by row; `value` has a mean of 0.
    const Row* rows() const { return model.data(); }
    /// A turn by one unit moves the patch's corners by one pixel: this many radians.
    double turnUnit() const { return unit; }
    /// Standard deviation of its pixels.
    double contrast() const { return deviation; }
    /// The patch minus its mean, as floats: what a correlation is made with.
    const cv::Mat& centred() const { return zeroMean; }

    /// How well the weakest direction of a shift is held in proportion to the strongest, 0 to 1. Stripes: 0.
    double shiftHold() const { return shiftRatio; }
    /// How well the turn is held in proportion to the shifts. Rings: 0.
    double turnHold() const { return turnRatio; }

private:
    void fillModel();
    void measureHold();

    cv::Mat grey;
    cv::Mat zeroMean;
    std::vector<Row> model;
    double unit = 0;
    double deviation = 0;
    double shiftRatio = 0;
    double turnRatio = 0;
};

} // namespace scribo::line
