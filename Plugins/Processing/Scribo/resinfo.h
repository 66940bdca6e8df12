#pragma once

#include <opencv2/core/types.hpp>

#include <cstdint>
#include <string>

/// One recognition result: the reading of one text line.
struct SOrgAI_ResInfo
{
    double score = 1.0;
    /// Index into the model's classes; -1: no class.
    std::int32_t classIndex = 0;
    /// The recognised characters in reading order, UTF-8.
    std::string text;
    /// The line's box in pixels, of the region image when it comes from the analyser and of the
    /// whole picture once it has been judged.
    cv::Rect rect;
    bool isOk = false;
};
