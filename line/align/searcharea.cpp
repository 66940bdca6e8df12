#include "align/searcharea.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace scribo::line {

cv::Mat greyPicture(const cv::Mat& picture)
{
    if (picture.channels() == 1) {
        return picture;
    }
    cv::Mat grey;
    cv::cvtColor(picture, grey, cv::COLOR_RGB2GRAY);
    return grey;
}

std::vector<cv::Mat> pyramid(const cv::Mat& grey, int levels)
{
    std::vector<cv::Mat> pictures = {grey};
    for (int i = 0; i < levels; ++i) {
        const cv::Mat& last = pictures.back();
        const cv::Size half(last.cols / 2, last.rows / 2);
        cv::Mat next;
        cv::resize(last(cv::Rect(0, 0, 2 * half.width, 2 * half.height)), next, half, 0, 0, cv::INTER_AREA);
        pictures.push_back(next);
    }
    return pictures;
}

SearchArea::SearchArea(
    const cv::Mat& picture, const QRect& patch, const AlignmentSettings& settings, double reach, int levels)
{
    // The patch's centre lies in the picture, or less than half of the patch would.
    const cv::Rect2d whole(0, 0, picture.cols, picture.rows);
    const double rangeX = settings.shiftX + reach;
    const double rangeY = settings.shiftY + reach;
    const cv::Point2d taught(patch.x() + 0.5 * patch.width(), patch.y() + 0.5 * patch.height());
    centres = cv::Rect2d(taught.x - rangeX, taught.y - rangeY, 2 * rangeX, 2 * rangeY) & whole;
    if (centres.empty()) {
        return;
    }

    const double arm = 0.5 * std::hypot(patch.width(), patch.height()) + reach;
    const int left = static_cast<int>(std::max(0.0, std::floor(centres.x - arm)));
    const int top = static_cast<int>(std::max(0.0, std::floor(centres.y - arm)));
    const int right = static_cast<int>(std::min<double>(picture.cols, std::ceil(centres.br().x + arm)));
    const int bottom = static_cast<int>(std::min<double>(picture.rows, std::ceil(centres.br().y + arm)));
    corner = cv::Point2d(left, top);
    centres -= corner;
    pictures = pyramid(greyPicture(picture(cv::Rect(left, top, right - left, bottom - top))), levels);
}

} // namespace scribo::line
