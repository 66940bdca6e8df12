#include "modelconfig.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;

const char* const path = "folder/model.json";
const char* const noClassOrSize = "Invalid config: there should be at least 1 class, or input size greater than 0.";

struct Outcome
{
    bool valid = false;
    ModelConfig config;
    std::string error;
};

Outcome parse(const QByteArray& bytes)
{
    Outcome outcome;
    const auto parsed = parseModelConfig(bytes, path, &outcome.config);
    outcome.valid = parsed.has_value();
    outcome.error = parsed ? "" : parsed.error().message;
    return outcome;
}

/// A valid configuration with `inferInfo` added to "model_infer_info" and `more` to the top level.
QByteArray configuration(const QByteArray& inferInfo = {}, const QByteArray& more = {})
{
    return R"({"classes": [{"name": "0O"}], "model_infer_info": {"input_dims": {"width": 320, "height": 32})"
        + inferInfo + "}" + more + "}";
}

QByteArray withDims(const QByteArray& dims)
{
    return R"({"classes": [{}], "model_infer_info": {"input_dims": )" + dims + "}}";
}

TEST(ModelConfig, ReadsEverything)
{
    const Outcome outcome = parse(R"({
        "classes": [{"name": "0O", "as_ok": true, "ok_num": -7}, {"name": "数", "as_ok": false, "ok_num": 2147483647}],
        "ignore_char": "- 。",
        "alphabet": "0A数",
        "model_infer_info": {
            "input_dims": {"width": 160, "height": 48, "channels": 1, "batch": 2},
            "letter_box": true,
            "input_layers": ["in"],
            "output_layers": ["out", "aux"],
            "anchors": {
                "boxes": [{"height": 13, "width": 10}, {"height": 30, "width": 16}],
                "mask": [[1, 0], []]
            }
        }
    })");
    ASSERT_TRUE(outcome.valid) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    const ModelConfig& config = outcome.config;
    ASSERT_EQ(config.classes.size(), 2U);
    EXPECT_EQ(config.classes[0].name, "0O");
    EXPECT_TRUE(config.classes[0].as_ok);
    EXPECT_EQ(config.classes[0].ok_num, -7);
    EXPECT_EQ(config.classes[1].name, "\xE6\x95\xB0");
    EXPECT_FALSE(config.classes[1].as_ok);
    EXPECT_EQ(config.classes[1].ok_num, 2147483647);
    EXPECT_EQ(config.ignoreChar, QStringLiteral("- 。"));

    const DetectorConfig& detector = config.detector;
    EXPECT_EQ(detector.width, 160);
    EXPECT_EQ(detector.height, 48);
    EXPECT_EQ(detector.channels, 1);
    EXPECT_EQ(detector.batch, 2);
    EXPECT_TRUE(detector.letter_box);
    EXPECT_EQ(detector.classNum, 2);
    EXPECT_THAT(detector.input_layers, ElementsAre("in"));
    EXPECT_THAT(detector.output_layers, ElementsAre("out", "aux"));
    EXPECT_THAT(detector.anchors, ElementsAre(Pair(10, 13), Pair(16, 30)));
    EXPECT_THAT(detector.mask, ElementsAre(ElementsAre(1, 0), IsEmpty()));
    EXPECT_THAT(detector.alphabet, ElementsAre("0", "A", "\xE6\x95\xB0"));
}

TEST(ModelConfig, DefaultsOfEverythingThatMayBeMissing)
{
    const Outcome outcome = parse(withDims(R"({"width": 1, "height": 1})"));
    ASSERT_TRUE(outcome.valid) << outcome.error;
    const ModelConfig& config = outcome.config;
    ASSERT_EQ(config.classes.size(), 1U);
    EXPECT_EQ(config.classes[0].name, "");
    EXPECT_FALSE(config.classes[0].as_ok);
    EXPECT_EQ(config.classes[0].ok_num, 0);
    EXPECT_TRUE(config.ignoreChar.isEmpty());

    const DetectorConfig& detector = config.detector;
    EXPECT_EQ(detector.width, 1);
    EXPECT_EQ(detector.height, 1);
    EXPECT_EQ(detector.channels, 3);
    EXPECT_EQ(detector.batch, 1);
    EXPECT_FALSE(detector.letter_box);
    EXPECT_EQ(detector.classNum, 1);
    EXPECT_EQ(detector.fixedInt1, 10);
    EXPECT_EQ(detector.fixedInt2, -1);
    EXPECT_EQ(detector.confThreshold, 0.5F);
    EXPECT_EQ(detector.fixedReal2, 0.2F);
    EXPECT_EQ(detector.fixedInt3, 100);
    EXPECT_THAT(detector.input_layers, IsEmpty());
    EXPECT_THAT(detector.output_layers, IsEmpty());
    EXPECT_THAT(detector.anchors, IsEmpty());
    EXPECT_THAT(detector.mask, IsEmpty());
    EXPECT_THAT(detector.alphabet, IsEmpty());
}

TEST(ModelConfig, ValuesOfAnotherTypeReadAsDefaults)
{
    const Outcome outcome = parse(R"({
        "classes": [7, "x", null, [1], {"name": 3, "as_ok": 1, "ok_num": "4"}, {"name": null, "as_ok": "true", "ok_num": true}],
        "ignore_char": 5,
        "alphabet": ["A", "B"],
        "model_infer_info": {
            "input_dims": {"width": 320, "height": 32, "channels": "1", "batch": null},
            "letter_box": "yes",
            "input_layers": ["in", 2, null, {}],
            "output_layers": "out",
            "anchors": {"boxes": [3, {"height": "1", "width": 2}], "mask": 1}
        }
    })");
    ASSERT_TRUE(outcome.valid) << outcome.error;
    ASSERT_EQ(outcome.config.classes.size(), 6U);
    for (const ClassInfo& info : outcome.config.classes) {
        EXPECT_EQ(info.name, "");
        EXPECT_FALSE(info.as_ok);
        EXPECT_EQ(info.ok_num, 0);
    }
    EXPECT_TRUE(outcome.config.ignoreChar.isEmpty());
    const DetectorConfig& detector = outcome.config.detector;
    EXPECT_EQ(detector.classNum, 6);
    EXPECT_EQ(detector.channels, 3);
    EXPECT_EQ(detector.batch, 1);
    EXPECT_FALSE(detector.letter_box);
    EXPECT_THAT(detector.input_layers, ElementsAre("in", "", "", ""));
    EXPECT_THAT(detector.output_layers, IsEmpty());
    EXPECT_THAT(detector.anchors, ElementsAre(Pair(0, 0), Pair(2, 0)));
    EXPECT_THAT(detector.mask, IsEmpty());
    EXPECT_THAT(detector.alphabet, IsEmpty());
}

TEST(ModelConfig, ContainersOfAnotherTypeReadAsEmpty)
{
    EXPECT_EQ(
        parse(R"({"classes": {"name": "a"}, "model_infer_info": {"input_dims": {"width": 9, "height": 9}}})").error,
        noClassOrSize);
    EXPECT_EQ(parse(R"({"classes": [{}], "model_infer_info": [1]})").error, noClassOrSize);
    EXPECT_EQ(parse(withDims("[320, 32]")).error, noClassOrSize);
    EXPECT_THAT(parse(configuration(R"(, "anchors": [1], "output_layers": ["a"])")).config.detector.mask, IsEmpty());
}

TEST(ModelConfig, KeysAreCaseSensitive)
{
    const Outcome outcome
        = parse(configuration(R"(, "Letter_Box": true)", R"(, "Alphabet": "AB", "IGNORE_CHAR": "x")"));
    ASSERT_TRUE(outcome.valid);
    EXPECT_FALSE(outcome.config.detector.letter_box);
    EXPECT_THAT(outcome.config.detector.alphabet, IsEmpty());
    EXPECT_TRUE(outcome.config.ignoreChar.isEmpty());
}

TEST(ModelConfig, IntegersWithAFractionOrBeyond32BitsReadAsDefaults)
{
    EXPECT_EQ(parse(withDims(R"({"width": 320.5, "height": 32})")).error, noClassOrSize);
    EXPECT_EQ(parse(withDims(R"({"width": 4294967616, "height": 32})")).error, noClassOrSize);
    EXPECT_EQ(parse(withDims(R"({"width": 320, "height": 1e300})")).error, noClassOrSize);

    const Outcome outcome
        = parse(withDims(R"({"width": 3.2e2, "height": 32.0, "channels": 2.5, "batch": -2147483649})"));
    ASSERT_TRUE(outcome.valid) << outcome.error;
    EXPECT_EQ(outcome.config.detector.width, 320);
    EXPECT_EQ(outcome.config.detector.height, 32);
    EXPECT_EQ(outcome.config.detector.channels, 3);
    EXPECT_EQ(outcome.config.detector.batch, 1);

    const Outcome anchors = parse(configuration(
        R"(, "output_layers": ["a"], "anchors": {"boxes": [{"width": 1.5, "height": 7}], "mask": [[0.5, 3, "x"]]})"));
    ASSERT_TRUE(anchors.valid) << anchors.error;
    EXPECT_THAT(anchors.config.detector.anchors, ElementsAre(Pair(0, 7)));
    EXPECT_THAT(anchors.config.detector.mask, ElementsAre(ElementsAre(0, 3, 0)));
}

TEST(ModelConfig, NoClassIsInvalidWhateverTheSize)
{
    const Outcome outcome
        = parse(R"({"classes": [], "model_infer_info": {"input_dims": {"width": 320, "height": 32}}})");
    EXPECT_FALSE(outcome.valid);
    EXPECT_EQ(outcome.error, noClassOrSize);
}

TEST(ModelConfig, SizesBelowOneAreInvalid)
{
    for (const char* dims : {R"({"width": 0, "height": 32})", R"({"width": 320, "height": 0})",
             R"({"width": -1, "height": 32})", R"({"height": 32})", R"({"width": 320})", "{}"}) {
        const Outcome outcome = parse(withDims(dims));
        EXPECT_FALSE(outcome.valid) << dims;
        EXPECT_EQ(outcome.error, noClassOrSize) << dims;
    }
    EXPECT_EQ(parse(R"({"classes": [{}], "model_infer_info": {}})").error, noClassOrSize);
    EXPECT_EQ(parse(R"({"classes": [{}]})").error, noClassOrSize);
}

TEST(ModelConfig, ChannelsAndBatchAreNotValidated)
{
    const Outcome outcome = parse(withDims(R"({"width": 320, "height": 32, "channels": -3, "batch": 0})"));
    ASSERT_TRUE(outcome.valid);
    EXPECT_EQ(outcome.config.detector.channels, -3);
    EXPECT_EQ(outcome.config.detector.batch, 0);
}

TEST(ModelConfig, WhatWasReadBeforeAFailureIsKept)
{
    const Outcome outcome = parse(
        R"({"classes": [], "ignore_char": "-", "alphabet": "AB", "model_infer_info": {"input_dims": {"width": 64, "height": 16}}})");
    EXPECT_FALSE(outcome.valid);
    EXPECT_EQ(outcome.config.ignoreChar, "-");
    EXPECT_EQ(outcome.config.detector.width, 64);
    EXPECT_THAT(outcome.config.detector.alphabet, ElementsAre("A", "B"));
}

TEST(ModelConfig, MasksMustMatchTheOutputLayers)
{
    const QByteArray threeMasks = R"(, "anchors": {"mask": [[0], [1], [2]]})";
    const Outcome two = parse(configuration(R"(, "output_layers": ["a", "b"])" + threeMasks));
    EXPECT_FALSE(two.valid);
    EXPECT_EQ(two.error, "Incompatible size of output layers and anchors mask");
    EXPECT_TRUE(parse(configuration(R"(, "output_layers": ["a", "b", "c"])" + threeMasks)).valid);
    EXPECT_FALSE(parse(configuration(threeMasks)).valid);
}

TEST(ModelConfig, AMaskElementThatIsNoArrayIsAnEmptyList)
{
    const Outcome outcome = parse(configuration(R"(, "output_layers": ["a", "b"], "anchors": {"mask": [3, [4]]})"));
    ASSERT_TRUE(outcome.valid) << outcome.error;
    EXPECT_THAT(outcome.config.detector.mask, ElementsAre(IsEmpty(), ElementsAre(4)));
}

TEST(ModelConfig, BoxesAndMasksAreNotHeldAgainstEachOther)
{
    EXPECT_TRUE(
        parse(configuration(
                  R"(, "output_layers": ["a"], "anchors": {"boxes": [{"width": 1, "height": 1}], "mask": [[99, -1]]})"))
            .valid);
}

TEST(ModelConfig, BoxesWithoutMaskLeaveTheMaskEmpty)
{
    const Outcome outcome = parse(configuration(R"(, "anchors": {"boxes": [{"height": 13, "width": 10}]})"));
    ASSERT_TRUE(outcome.valid);
    EXPECT_THAT(outcome.config.detector.anchors, ElementsAre(Pair(10, 13)));
    EXPECT_THAT(outcome.config.detector.mask, IsEmpty());
}

TEST(ModelConfig, EmptyOrMissingAnchorsAreFineWithAnyOutputLayers)
{
    for (const char* anchors : {"", R"(, "anchors": {})", R"(, "anchors": null)"}) {
        EXPECT_TRUE(parse(configuration(R"(, "output_layers": ["a", "b"])" + QByteArray(anchors))).valid) << anchors;
    }
}

TEST(ModelConfig, TheAlphabetHasAnEntryPerUtf16Unit)
{
    // A character beyond the Basic Multilingual Plane is two units, neither of which is a character.
    const Outcome outcome = parse(configuration({}, R"(, "alphabet": "é\u0000\uFEFF😀x")"));
    ASSERT_TRUE(outcome.valid) << outcome.error;
    EXPECT_THAT(
        outcome.config.detector.alphabet, ElementsAre("\xC3\xA9", std::string(1, '\0'), "\xEF\xBB\xBF", "?", "?", "x"));
}

TEST(ModelConfig, AByteOrderMarkIsDropped)
{
    EXPECT_TRUE(parse("\xEF\xBB\xBF" + configuration()).valid);
}

TEST(ModelConfig, BytesThatAreNotUtf8AreReplacedNotFatal)
{
    const Outcome outcome = parse(configuration({}, QByteArray(", \"alphabet\": \"A\xFF") + "B\""));
    ASSERT_TRUE(outcome.valid) << outcome.error;
    EXPECT_THAT(outcome.config.detector.alphabet, ElementsAre("A", "\xEF\xBF\xBD", "B"));
}

TEST(ModelConfig, Utf16IsNotJson)
{
    EXPECT_FALSE(parse(QByteArray("\xFF\xFE{\0}\0", 6)).valid);
}

TEST(ModelConfig, BrokenJsonEndsWithTheParsersOwnWords)
{
    for (const QByteArray& bytes :
        {configuration().chopped(1), QByteArray(), QByteArray("{\"classes\": }"), QByteArray("{} trailing"),
            configuration() + QByteArray("\0\0", 2), QByteArray("7"), QByteArray("\0", 1)}) {
        const Outcome outcome = parse(bytes);
        QJsonParseError expected;
        QJsonDocument::fromJson(bytes, &expected);
        ASSERT_NE(expected.error, QJsonParseError::NoError);
        EXPECT_FALSE(outcome.valid);
        EXPECT_EQ(outcome.error,
            "Parse config file " + std::string(path) + " failed: " + expected.errorString().toStdString());
    }
}

TEST(ModelConfig, JsonNestedTooDeepIsAnErrorNotACrash)
{
    EXPECT_FALSE(parse(QByteArray(100000, '[')).valid);
    EXPECT_FALSE(parse("{\"classes\": " + QByteArray(5000, '[') + QByteArray(5000, ']') + "}").valid);
}

TEST(ModelConfig, ATopLevelArrayReadsAsAnEmptyObject)
{
    const Outcome outcome = parse("[" + configuration() + "]");
    EXPECT_FALSE(outcome.valid);
    EXPECT_EQ(outcome.error, noClassOrSize);
}

TEST(ModelConfig, TheLastOfEqualKeysCounts)
{
    const Outcome outcome = parse(configuration({}, R"(, "ignore_char": "a", "ignore_char": "b")"));
    ASSERT_TRUE(outcome.valid);
    EXPECT_EQ(outcome.config.ignoreChar, "b");
}

class ModelConfigFile : public ::testing::Test
{
protected:
    QString write(const QByteArray& bytes)
    {
        QFile file(folder.filePath("模型.json"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }

    QTemporaryDir folder;
    ModelConfig config;
};

TEST_F(ModelConfigFile, IsRead)
{
    const auto read = readModelConfig(write(configuration()), &config);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(config.detector.width, 320);
}

TEST_F(ModelConfigFile, WithWindowsLineEndsIsRead)
{
    const auto read = readModelConfig(write(configuration().replace(' ', "\r\n")), &config);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(config.detector.height, 32);
}

TEST_F(ModelConfigFile, ThatIsNoFileOrTooLargeCannotBeOpened)
{
    const QString pipe = folder.filePath("pipe.json");
    ASSERT_EQ(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    QFile large(write(configuration()));
    ASSERT_TRUE(large.resize((64 << 20) + 1));
    for (const QString& name : {folder.filePath("missing.json"), folder.path(), QString(), pipe, large.fileName()}) {
        const auto read = readModelConfig(name, &config);
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error().message, "Can not open config file: " + name.toStdString());
    }
}

TEST_F(ModelConfigFile, NamesItsPathAsItWasGiven)
{
    const QString name = QDir(folder.path()).filePath("./") + QFileInfo(write("{")).fileName();
    const auto read = readModelConfig(name, &config);
    ASSERT_FALSE(read);
    EXPECT_THAT(read.error().message, StartsWith("Parse config file " + name.toStdString() + " failed: "));
}

} // namespace
