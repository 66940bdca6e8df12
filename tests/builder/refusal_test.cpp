// Operations that are refused, each with the reason.

#include "faultsof.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Integers = std::vector<std::int64_t>;

/// One node, what is set on it, and what is said about it.
struct Refusal
{
    const char* what;
    const char* operation;
    std::vector<std::string> inputs;
    void (*prepare)(onnx::NodeProto& node);
    const char* reason;
    int opset = 13;
};

void nothing(onnx::NodeProto&)
{
}

template <std::int64_t size>
void hidden(onnx::NodeProto& node)
{
    setAttribute(node, "hidden_size", size);
}

const Refusal refusals[] = {
    {"ConvComputedWeights", "Conv", {"x"}, nothing, "its weights must be constant floats"},
    {"ConvFlatWeights", "Conv", {"vector"}, nothing, "its weights have 1 dimensions"},
    {"ConvComputedBias", "Conv", {"filters", "x"}, nothing, "its bias must be constant floats"},
    {"ConvGroups", "Conv", {"filters"}, [](auto& node) { setAttribute(node, "group", std::int64_t(3)); },
        "attribute 'group' does not divide its 4 filters"},
    {"ConvKernel", "Conv", {"filters"},
        [](auto& node) {
            setAttribute(node, "kernel_shape", Integers{5, 5});
        },
        "attribute 'kernel_shape' contradicts its weights"},
    {"ConvStrides", "Conv", {"filters"},
        [](auto& node) {
            setAttribute(node, "strides", Integers{0, 1});
        },
        "attribute 'strides' makes no sense"},
    {"ConvPads", "Conv", {"filters"},
        [](auto& node) {
            setAttribute(node, "pads", Integers{1, 1});
        },
        "attribute 'pads' makes no sense"},
    {"ConvNegativePads", "Conv", {"filters"},
        [](auto& node) {
            setAttribute(node, "pads", Integers{-1, 0, 0, 0});
        },
        "attribute 'pads' makes no sense"},
    {"ConvSameStrided", "Conv", {"filters"},
        [](auto& node) {
            setAttribute(node, "strides", Integers{2, 2});
            setAttribute(node, "auto_pad", "SAME_UPPER");
        },
        "auto_pad 'SAME_UPPER' is not supported with these strides; export explicit pads"},
    {"ConvUnknownPadding", "Conv", {"filters"}, [](auto& node) { setAttribute(node, "auto_pad", "MOST"); },
        "auto_pad 'MOST' is not supported with these strides; export explicit pads"},
    {"PoolWithoutKernel", "MaxPool", {}, nothing, "a window over 0 axes is not supported"},
    {"PoolKernel", "MaxPool", {},
        [](auto& node) {
            setAttribute(node, "kernel_shape", Integers{0, 2});
        },
        "its kernel makes no sense"},
    {"PoolDilations", "MaxPool", {},
        [](auto& node) {
            setAttribute(node, "kernel_shape", Integers{2, 2});
            setAttribute(node, "dilations", Integers{2, 2});
        },
        "dilations are not supported"},
    {"ReduceAxis", "ReduceMean", {}, [](auto& node) { setAttribute(node, "axes", Integers{4}); },
        "axis 4 does not exist"},
    {"LstmDirection", "LSTM", {"weights", "recurrent"}, [](auto& node) { setAttribute(node, "direction", "sideways"); },
        "direction 'sideways' is not known"},
    {"LstmHidden", "LSTM", {"weights", "recurrent"}, nothing, "attribute 'hidden_size' is missing or makes no sense"},
    {"LstmWeights", "LSTM", {"weights", "recurrent"}, hidden<5>, "its weights do not fit a hidden size of 5"},
    {"LstmComputedWeights", "LSTM", {"x", "recurrent"}, hidden<2>, "its weights must be constant floats"},
    {"LstmActivations", "LSTM", {"weights", "recurrent"},
        [](auto& node) {
            hidden<2>(node);
            onnx::AttributeProto& attribute = *node.add_attribute();
            attribute.set_name("activations");
            attribute.set_type(onnx::AttributeProto::STRINGS);
            attribute.add_strings("Relu");
        },
        "other activations than the default ones are not supported"},
    {"LstmLayout", "LSTM", {"weights", "recurrent"},
        [](auto& node) {
            hidden<2>(node);
            setAttribute(node, "layout", std::int64_t(1));
        },
        "layout 1 is not supported"},
    {"LstmClip", "LSTM", {"weights", "recurrent"},
        [](auto& node) {
            hidden<2>(node);
            setAttribute(node, "clip", 1.0f);
        },
        "attribute 'clip' is not supported"},
    {"LstmInputForget", "LSTM", {"weights", "recurrent"},
        [](auto& node) {
            hidden<2>(node);
            setAttribute(node, "input_forget", std::int64_t(1));
        },
        "attribute 'input_forget' is not supported"},
    {"LstmLengths", "LSTM", {"weights", "recurrent", "", "integers"}, hidden<2>, "sequence lengths are not supported"},
    {"LstmPeepholes", "LSTM", {"weights", "recurrent", "", "", "", "", "vector"}, hidden<2>,
        "peepholes are not supported"},
    {"GemmIntegers", "Gemm", {"integers"}, nothing, "it is supported on floats only"},
    {"PReluComputed", "PRelu", {"x"}, nothing, "its slope must be constant floats"},
    {"GeluTanh", "Gelu", {}, [](auto& node) { setAttribute(node, "approximate", "tanh"); },
        "approximation 'tanh' is not supported", 20},
    {"ClipComputed", "Clip", {"x"}, nothing, "its limits must be constant floats"},
    {"AddTypes", "Add", {"integers"}, nothing, "its inputs are of different types"},
    {"BatchNormTraining", "BatchNormalization", {"vector", "vector", "vector", "vector"},
        [](auto& node) { setAttribute(node, "training_mode", std::int64_t(1)); },
        "it was exported in training mode; call eval() before the export", 14},
    {"BatchNormPlaces", "BatchNormalization", {"vector", "vector", "vector", "vector"},
        [](auto& node) { setAttribute(node, "spatial", std::int64_t(0)); }, "attribute 'spatial' is not supported", 8},
    {"BatchNormComputed", "BatchNormalization", {"x", "vector", "vector", "vector"}, nothing,
        "its scale must be constant floats"},
    {"BatchNormLengths", "BatchNormalization", {"vector", "number", "vector", "vector"}, nothing,
        "its constants are of different lengths"},
    {"SoftmaxAxis", "Softmax", {}, [](auto& node) { setAttribute(node, "axis", std::int64_t(99)); },
        "attribute 'axis' makes no sense"},
    {"SoftmaxFlatAxis", "Softmax", {}, [](auto& node) { setAttribute(node, "axis", std::int64_t(5)); },
        "axis 5 does not exist", 11},
    {"TransposePermutation", "Transpose", {},
        [](auto& node) {
            setAttribute(node, "perm", Integers{0, 1, 2, 7});
        },
        "attribute 'perm' makes no sense"},
    {"ReshapeZero", "Reshape", {"integers"}, [](auto& node) { setAttribute(node, "allowzero", std::int64_t(1)); },
        "attribute 'allowzero' is not supported", 14},
    {"ReshapeFloats", "Reshape", {"vector"}, nothing, "its shape must be integers"},
    {"FlattenAxis", "Flatten", {}, [](auto& node) { setAttribute(node, "axis", std::int64_t(5)); },
        "attribute 'axis' makes no sense"},
    {"SqueezeComputed", "Squeeze", {"x"}, nothing, "its axes must be constant integers"},
    {"UnsqueezeNothing", "Unsqueeze", {}, nothing, "it names no axes"},
    {"UnsqueezeAxis", "Unsqueeze", {}, [](auto& node) { setAttribute(node, "axes", Integers{77}); },
        "axis 77 does not exist", 11},
    {"ConcatAxis", "Concat", {"x"}, nothing, "attribute 'axis' is missing"},
    {"ConcatGap", "Concat", {""}, [](auto& node) { setAttribute(node, "axis", std::int64_t(0)); },
        "an input is missing"},
    {"GatherFloats", "Gather", {"vector"}, nothing, "its indices must be integers"},
    {"SliceFloats", "Slice", {"vector", "vector"}, nothing, "its limits must be integers"},
    {"SliceWithoutLists", "Slice", {}, nothing, "its starts or ends are missing"},
    {"SliceWithoutAttributes", "Slice", {}, nothing, "its starts or ends are missing", 9},
    {"SliceScalar", "Slice", {"number", "number"}, nothing, "its starts make no sense"},
    {"SplitUneven", "Split", {}, [](auto& node) { setAttribute(node, "axis", std::int64_t(3)); },
        "it cannot be split into 1 equal parts"},
    {"SplitOutputs", "Split", {"integers"}, nothing, "it has 1 outputs for 2 parts"},
    {"TileZero", "Tile", {"x"}, nothing, "its repeats must be constant integers"},
    {"PadReflect", "Pad", {"integers"}, [](auto& node) { setAttribute(node, "mode", "reflect"); },
        "mode 'reflect' is not supported"},
    {"PadNothing", "Pad", {}, nothing, "its pads are missing"},
    {"PadLength", "Pad", {"integers"}, nothing, "its pads do not fit its input"},
    {"GridSampleNearest", "GridSample", {"x"}, [](auto& node) { setAttribute(node, "mode", "nearest"); },
        "mode 'nearest' is not supported", 16},
    {"GridSampleReflection", "GridSample", {"x"}, [](auto& node) { setAttribute(node, "padding_mode", "reflection"); },
        "padding by 'reflection' is not supported", 16},
    {"ResizeByItself", "Resize", {"", "", "integers"}, nothing, "mode 'nearest' is not supported"},
    {"ResizeOld", "Resize", {"vector"}, [](auto& node) { setAttribute(node, "mode", "linear"); },
        "it is supported from opset 11 on", 10},
    {"ResizeCorners", "Resize", {"", "", "integers"},
        [](auto& node) {
            setAttribute(node, "mode", "linear");
            setAttribute(node, "coordinate_transformation_mode", "align_corners");
        },
        "coordinates by 'align_corners' are not supported"},
    {"ResizeSmooth", "Resize", {"", "", "integers"},
        [](auto& node) {
            setAttribute(node, "mode", "linear");
            setAttribute(node, "antialias", std::int64_t(1));
        },
        "keeping the aspect ratio and smoothing are not supported", 18},
    {"ResizeAspect", "Resize", {"", "", "integers"},
        [](auto& node) {
            setAttribute(node, "mode", "linear");
            setAttribute(node, "keep_aspect_ratio_policy", "not_larger");
        },
        "keeping the aspect ratio and smoothing are not supported", 18},
    {"ResizeToNothing", "Resize", {}, [](auto& node) { setAttribute(node, "mode", "linear"); },
        "its scales and sizes are missing"},
    {"ResizeComputed", "Resize", {"", "x"}, [](auto& node) { setAttribute(node, "mode", "linear"); },
        "its scales must be constant floats"},
    {"ResizeByFraction", "Resize", {"", "filters"}, [](auto& node) { setAttribute(node, "mode", "linear"); },
        "scales other than whole numbers are not supported"},
    {"ResizeFloats", "Resize", {"", "", "vector"}, [](auto& node) { setAttribute(node, "mode", "linear"); },
        "its sizes must be integers"},
    {"FillFloats", "ConstantOfShape", {}, nothing, "its shape must be integers"},
    {"ExpandFloats", "Expand", {"vector"}, nothing, "its shape must be integers"},
    {"CastToText", "Cast", {}, [](auto& node) { setAttribute(node, "to", std::int64_t(8)); },
        "a cast to element type 8 is not supported"},
    {"CastToNonsense", "Cast", {}, [](auto& node) { setAttribute(node, "to", std::int64_t(-5)); },
        "a cast to element type -5 is not supported"},
    {"CastToTruth", "Cast", {}, [](auto& node) { setAttribute(node, "to", std::int64_t(9)); },
        "a cast from floats to truth values is not supported"},
    {"EqualFloats", "Equal", {"x"}, nothing, "it is supported on integers only"},
    {"IfWithoutBranches", "If", {}, nothing, "a branch that is not always the same is not supported"},
    {"DropoutTraining", "Dropout", {"", "integers"}, nothing,
        "it was exported in training mode; call eval() before the export"},
};

class Refused : public testing::TestWithParam<Refusal>
{
};

TEST_P(Refused, WithItsNodeAndReason)
{
    const Refusal& refusal = GetParam();
    const Faults faults = faultsOfNode(refusal.operation, refusal.inputs, refusal.prepare, refusal.opset);
    EXPECT_THAT(
        faults, ElementsAre("operation '" + std::string(refusal.operation) + "' of node 'node': " + refusal.reason));
}

INSTANTIATE_TEST_SUITE_P(Nodes, Refused, testing::ValuesIn(refusals), [](const auto& one) { return one.param.what; });

} // namespace
