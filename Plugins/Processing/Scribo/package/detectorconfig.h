#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// How to run one network, as its model package tells it. A value: every detector keeps its own copy.
struct DetectorConfig
{
    std::int32_t width = 0; ///< of the network's input in pixels: the largest that is ever run
    std::int32_t height = 0; ///< of the network's input in pixels
    std::int32_t channels = 3;
    std::int32_t batch = 1;
    bool letter_box = false; ///< keep the picture's aspect ratio and pad, instead of stretching it
    std::int32_t classNum = 0; ///< number of classes that the model reports
    // From here to fixedInt3, and anchors below: for other kinds of detectors. A text recogniser only carries them.
    std::int32_t fixedInt1 = 10;
    std::int32_t fixedInt2 = -1;
    float confThreshold = 0.5F; ///< class confidence threshold, 0 to 1
    float fixedReal2 = 0.2F;
    std::int32_t fixedInt3 = 100;
    std::vector<std::string> input_layers; ///< names of the engine's inputs, in binding order
    std::vector<std::string> output_layers; ///< names of the engine's outputs, in binding order
    std::vector<std::pair<std::int32_t, std::int32_t>> anchors; ///< width and height of each anchor box, in pixels
    std::vector<std::vector<std::int32_t>> mask; ///< indices into `anchors`, one list per output
    std::vector<std::string> alphabet; ///< UTF-8; entry k stands for class k + 1 of the output, class 0 is the blank
};
