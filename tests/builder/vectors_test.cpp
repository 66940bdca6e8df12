// Every model of vectors/, built and run through the public interface, against PyTorch's results.

#include "build.h"
#include "enginerunner.h"
#include "format/enginefile.h"
#include "onnxtensor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;
using scribo::builder::TensorT;

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> folderNames(const fs::path& folder, const std::string& prefix)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().filename().string().rfind(prefix, 0) == 0) {
            names.push_back(entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TensorT readTensorFile(const fs::path& path)
{
    onnx::TensorProto proto;
    EXPECT_TRUE(proto.ParseFromString(readFile(path))) << path;
    const auto tensor = scribo::builder::readTensor(proto);
    EXPECT_TRUE(tensor) << path << tensor.error().message;
    return tensor.value_or(TensorT());
}

/// The folder of the models: the ones of the source tree, or the ones that property_test.py has drawn.
fs::path vectorsFolder()
{
    const char* drawn = std::getenv("SCRIBO_VECTORS");
    return drawn ? drawn : VECTORS;
}

/// The largest difference of a list from another of the same length, in parts of what it should be
/// where that is above 1; NaN when there is one anywhere.
double largestDifference(const std::vector<float>& values, const std::vector<float>& wanted)
{
    double largest = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double size = std::max(1.0, std::fabs(static_cast<double>(wanted[i])));
        const double difference = std::fabs(static_cast<double>(values[i]) - static_cast<double>(wanted[i])) / size;
        if (std::isnan(difference)) {
            return difference;
        }
        largest = std::max(largest, difference);
    }
    return largest;
}

class Vectors : public testing::TestWithParam<std::string>
{
};

struct DataSet
{
    TensorT input;
    std::vector<TensorT> outputs;

    int width() const { return static_cast<int>(input.dims.back()); }
};

std::vector<DataSet> readDataSets(const fs::path& folder)
{
    std::vector<DataSet> dataSets;
    for (const std::string& name : folderNames(folder, "test_data_set_")) {
        DataSet set = {readTensorFile(folder / name / "input_0.pb"), {}};
        for (const std::string& output : folderNames(folder / name, "output_")) {
            set.outputs.push_back(readTensorFile(folder / name / output));
        }
        dataSets.push_back(std::move(set));
    }
    return dataSets;
}

scribo::builder::WidthRange widthsOf(const std::vector<DataSet>& dataSets)
{
    const auto narrower = [](const DataSet& a, const DataSet& b) { return a.width() < b.width(); };
    const auto [least, most] = std::minmax_element(dataSets.begin(), dataSets.end(), narrower);
    return {least->width(), most->width()};
}

TEST_P(Vectors, EqualPyTorch)
{
    const fs::path folder = vectorsFolder() / GetParam();
    const std::vector<DataSet> dataSets = readDataSets(folder);
    ASSERT_FALSE(dataSets.empty());
    const std::string model = readFile(folder / "model.onnx");
    const auto network = scribo::builder::buildNetwork(model.data(), model.size(), {widthsOf(dataSets), "model.onnx"});
    ASSERT_TRUE(network) << testing::PrintToString(network.error());
    const std::vector<std::uint8_t> engine = scribo::format::writeEngine(**network);
    scribo::tool::EngineRunner runner;
    const auto loaded = runner.load(engine.data(), engine.size());
    ASSERT_TRUE(loaded) << loaded.error().message;
    for (const DataSet& set : dataSets) {
        SCOPED_TRACE("width " + std::to_string(set.width()));
        const auto outputs = runner.run(set.width(), scribo::builder::floatValues(set.input));
        ASSERT_TRUE(outputs) << outputs.error().message;
        ASSERT_EQ(outputs->size(), set.outputs.size());
        for (std::size_t i = 0; i < outputs->size(); ++i) {
            ASSERT_EQ((*outputs)[i].extents, set.outputs[i].dims);
            EXPECT_LE(largestDifference((*outputs)[i].values, scribo::builder::floatValues(set.outputs[i])), 1e-4);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Models, Vectors, testing::ValuesIn(folderNames(vectorsFolder(), "")), [](const auto& one) { return one.param; });

} // namespace
