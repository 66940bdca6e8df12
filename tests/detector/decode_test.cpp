#include "ocrdetector.h"

#include "logcapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A detector whose last inference is the test's.
class Decoder : public OCRDetector
{
public:
    explicit Decoder(std::vector<std::string> alphabet = {"A", "B", "D"})
        : OCRDetector(DetectorConfig())
    {
        config.alphabet = std::move(alphabet);
        // Afterwards the worker has written its first line.
        std::vector<std::string> characters;
        submitRequest(cv::Mat(), cv::Size(), characters);
    }

    void addLayer() { config.output_layers.push_back("layer" + std::to_string(config.output_layers.size())); }

    /// Adds a layer whose tensor is `rows`, one per time step.
    void addTensor(const std::vector<std::vector<float>>& rows)
    {
        addLayer();
        OutputTensor tensor;
        tensor.timeSteps = static_cast<std::int32_t>(rows.size());
        tensor.numClasses = rows.empty() ? 0 : static_cast<std::int32_t>(rows.front().size());
        std::vector<float>& values = buffers.emplace_back();
        for (const std::vector<float>& row : rows) {
            values.insert(values.end(), row.begin(), row.end());
        }
        tensor.hostBuffer = values.data();
        outputs.push_back(tensor);
    }

    std::vector<std::string> decode(std::vector<std::string> characters = {})
    {
        decodeOCR(characters);
        return characters;
    }

    using OCRDetector::leftOutCharacter;
    using OCRDetector::outputs;

private:
    std::vector<std::vector<float>> buffers;
};

/// Rows of `numClasses` scores whose best class is given.
std::vector<std::vector<float>> stepsOf(const std::vector<std::size_t>& classes, std::size_t numClasses = 4)
{
    std::vector<std::vector<float>> rows(classes.size(), std::vector<float>(numClasses, 0.02F));
    for (std::size_t t = 0; t < classes.size(); ++t) {
        rows[t][classes[t]] = 0.7F;
    }
    return rows;
}

std::vector<std::string> decoded(const std::vector<std::vector<float>>& rows)
{
    Decoder decoder;
    decoder.addTensor(rows);
    return decoder.decode();
}

TEST(DecodeOCR, CollapsesRepeatsUnlessABlankIsBetween)
{
    Decoder decoder;
    decoder.addTensor(stepsOf({0, 1, 1, 0, 1}));
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), ElementsAre("A", "A"));
    const std::vector<LogCapture::Line> expected = {{google::GLOG_INFO, "ocrdetector.cpp", 0, "decodeOCR num:5--4"},
        {google::GLOG_INFO, "ocrdetector.cpp", 0, "decodeOCR delete char:A"}};
    EXPECT_EQ(log.lines(), expected);
}

TEST(DecodeOCR, KeepsTheOrderAndEveryChange)
{
    EXPECT_THAT(decoded(stepsOf({1, 2, 1, 3, 3, 3, 2})), ElementsAre("A", "B", "A", "D", "B"));
    EXPECT_THAT(decoded(stepsOf({3})), ElementsAre("D"));
    EXPECT_THAT(decoded(stepsOf({0, 0, 0})), IsEmpty());
}

TEST(DecodeOCR, LogsEveryDroppedRepeat)
{
    Decoder decoder;
    decoder.addTensor(stepsOf({2, 2, 2}));
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), ElementsAre("B"));
    EXPECT_EQ(log.count("decodeOCR delete char:B"), 2);
}

TEST(DecodeOCR, LogsTheNumbersOfStepsAndClasses)
{
    Decoder decoder;
    decoder.addTensor(std::vector<std::vector<float>>(40, std::vector<float>(37, 0.0F)));
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), IsEmpty());
    EXPECT_THAT(log.texts(google::GLOG_INFO), ElementsAre("decodeOCR num:40--37"));
}

TEST(DecodeOCR, TheFloorIsTheFloatNearestToATenth)
{
    EXPECT_THAT(decoded({{0, 0.1F, 0, 0}}), ElementsAre("A"));
    EXPECT_THAT(decoded({{0, std::nextafter(0.1F, 0.0F), 0, 0}}), IsEmpty());
    EXPECT_THAT(decoded({{0, 0.0999999F, 0, 0}}), IsEmpty());
}

TEST(DecodeOCR, BelowTheFloorEveryStepIsBlank)
{
    EXPECT_THAT(decoded({{-5.0F, 0.09F, 0.05F, 0.0F}}), IsEmpty());
    // And separates equal characters as a blank does.
    EXPECT_THAT(decoded({{0, 0.9F, 0, 0}, {0, 0.05F, 0, 0}, {0, 0.9F, 0, 0}}), ElementsAre("A", "A"));
}

TEST(DecodeOCR, TheFirstOfEqualMaximaWins)
{
    EXPECT_THAT(decoded({{0.1F, 0.4F, 0.4F, 0.4F}}), ElementsAre("A"));
    EXPECT_THAT(decoded({{0.4F, 0.4F, 0.1F, 0.1F}}), IsEmpty());
    EXPECT_THAT(decoded({{0, 0, 0.5F, 0.5F}}), ElementsAre("B"));
}

TEST(DecodeOCR, ScoresAreUsedAsTheyStand)
{
    EXPECT_THAT(decoded({{10.0F, 12.5F, 3.0F, 700.0F}}), ElementsAre("D"));
    EXPECT_THAT(decoded({{-1, -2, -3, -4}, {-1, -0.5F, -3, -4}}), IsEmpty());
}

TEST(DecodeOCR, NotANumberIsNeverChosen)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_THAT(decoded({{nan, nan, nan, nan}}), IsEmpty());
    EXPECT_THAT(decoded({{nan, nan, 0.6F, nan}}), ElementsAre("B"));
    EXPECT_THAT(decoded({{0, infinity, 0.6F, -infinity}}), ElementsAre("A"));
}

TEST(DecodeOCR, NegativeScoresLeaveOnlyTheHeadLine)
{
    Decoder decoder;
    decoder.addTensor({{-1, -1, -1, -1}, {-2, -2, -2, -2}});
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), IsEmpty());
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(DecodeOCR, NoStepsGiveNothing)
{
    for (const std::int32_t steps : {0, -3}) {
        Decoder decoder;
        decoder.addTensor({});
        decoder.outputs.back().timeSteps = steps;
        decoder.outputs.back().numClasses = 4;
        const LogCapture log;
        EXPECT_THAT(decoder.decode(), IsEmpty());
        EXPECT_THAT(log.texts(google::GLOG_INFO), ElementsAre("decodeOCR num:" + std::to_string(steps) + "--4"));
    }
}

TEST(DecodeOCR, NoClassesAreAllBlank)
{
    for (const std::int32_t classes : {0, -1}) {
        Decoder decoder;
        decoder.addTensor({{0.9F}, {0.9F}});
        decoder.outputs.back().numClasses = classes;
        EXPECT_THAT(decoder.decode(), IsEmpty());
    }
}

TEST(DecodeOCR, NoLayersLogNothing)
{
    Decoder decoder;
    const LogCapture log;
    EXPECT_THAT(decoder.decode({"kept"}), ElementsAre("kept"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(DecodeOCR, AppendsToWhatIsThere)
{
    Decoder decoder;
    decoder.addTensor(stepsOf({1}));
    // The last character of the list takes no part in collapsing.
    EXPECT_THAT(decoder.decode({"B", "A"}), ElementsAre("B", "A", "A"));
}

TEST(DecodeOCR, TensorsFollowOneAnotherAndStartAfresh)
{
    Decoder decoder;
    decoder.addTensor(stepsOf({1, 2}));
    decoder.addTensor(stepsOf({2, 3}));
    EXPECT_THAT(decoder.decode(), ElementsAre("A", "B", "B", "D"));
}

TEST(DecodeOCR, ReadsRowsOfTheirOwnLength)
{
    Decoder decoder({"a", "b", "c", "d", "e", "f"});
    decoder.addTensor(stepsOf({6, 0, 5}, 7));
    decoder.addTensor(stepsOf({1, 1}, 2));
    EXPECT_THAT(decoder.decode(), ElementsAre("f", "e", "a"));
}

TEST(DecodeOCR, TensorsBeyondTheLayersAreNotDecoded)
{
    Decoder decoder;
    decoder.addTensor(stepsOf({1}));
    decoder.outputs.push_back(decoder.outputs.front());
    EXPECT_THAT(decoder.decode(), ElementsAre("A"));
}

TEST(DecodeOCR, ALayerWithoutTensorIsReportedAndNotRead)
{
    Decoder decoder;
    decoder.addTensor(stepsOf({1}));
    decoder.addLayer();
    decoder.addLayer();
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), ElementsAre("A"));
    EXPECT_THAT(log.texts(google::GLOG_ERROR), ElementsAre("decodeOCR has no output tensor for layer: layer1"));
}

TEST(DecodeOCR, ACharacterOfSeveralBytesIsOneElement)
{
    Decoder decoder({"\xE6\x95\xB0", "B"});
    decoder.addTensor(stepsOf({1, 1, 2}));
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), ElementsAre("\xE6\x95\xB0", "B"));
    EXPECT_EQ(log.count("decodeOCR delete char:\xE6\x95\xB0"), 1);
    EXPECT_FALSE(decoder.leftOutCharacter());
}

TEST(DecodeOCR, AClassWithoutCharacterIsSkippedWithOneLineAReading)
{
    Decoder decoder({"A"});
    decoder.addTensor(stepsOf({1, 3, 3, 1, 2, 0}));
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), ElementsAre("A", "A"));
    EXPECT_THAT(log.texts(google::GLOG_ERROR), ElementsAre("decodeOCR has no alphabet entry for class: 3"));
    EXPECT_TRUE(decoder.leftOutCharacter());
}

TEST(DecodeOCR, AClassWithoutCharacterIsForgottenWithTheNextReading)
{
    Decoder decoder({"A"});
    decoder.addTensor(stepsOf({2}));
    decoder.addTensor(stepsOf({3, 1}));
    const LogCapture log;
    EXPECT_THAT(decoder.decode(), ElementsAre("A"));
    EXPECT_TRUE(decoder.leftOutCharacter());
    EXPECT_THAT(log.texts(google::GLOG_ERROR), ElementsAre("decodeOCR has no alphabet entry for class: 2"));

    decoder.outputs.front().timeSteps = 0;
    decoder.outputs.back().timeSteps = 0;
    EXPECT_THAT(decoder.decode(), IsEmpty());
    EXPECT_FALSE(decoder.leftOutCharacter());
    EXPECT_EQ(log.texts(google::GLOG_ERROR).size(), 1U);
}

TEST(DecodeOCR, TheConfidenceThresholdTakesNoPart)
{
    Decoder decoder;
    decoder.addTensor({{0, 0.2F, 0, 0}});
    decoder.setConfidenceThreshold(0.99F);
    EXPECT_THAT(decoder.decode(), ElementsAre("A"));
}

} // namespace
