// scribo-engine check: every fault of a model package in plain words.

#include "packagecheck.h"
#include "testpackage.h"

#include <QFile>
#include <QJsonArray>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

using scribo::tool::checkPackage;
using scribo::tool::PackageReport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Sentences = std::vector<std::string>;

Sentences sentences(const QStringList& list)
{
    Sentences result;
    for (const QString& sentence : list) {
        result.push_back(sentence.toStdString());
    }
    return result;
}

Sentences faults(const QString& path)
{
    return sentences(checkPackage(path).faults);
}

TEST(PackageCheck, AFlawlessPackage)
{
    const TestPackage package;
    const PackageReport report = checkPackage(package.engine());
    EXPECT_THAT(sentences(report.faults), IsEmpty());
    EXPECT_THAT(sentences(report.warnings), IsEmpty());
    EXPECT_EQ(report.summary.toStdString(), "4 characters, widths 32 to 320, 80 time steps at the widest");
}

TEST(PackageCheck, NothingThere)
{
    const TestPackage package;
    const QString path = package.path("ocr_other_p1_1_v1.trt");
    EXPECT_THAT(faults(path),
        ElementsAre(HasSubstr("the configuration file is missing: "), "there is no file " + path.toStdString()));
    EXPECT_THAT(faults(package.path("")), testing::Not(IsEmpty()));
}

TEST(PackageCheck, TheName)
{
    const TestPackage package;
    package.writeEngine(smallRecogniser(5), "small_v1.trt");
    const PackageReport report = checkPackage(package.path("small_v1.trt"));
    EXPECT_THAT(sentences(report.faults),
        ElementsAre("the plug-in does not list the file: its name 'small_v1.trt' does not fit the pattern "
                    "ocr_*_p*_*_*.*",
            "the name 'small_v1.trt' does not split into five pieces at its underscores"));
    EXPECT_THAT(sentences(report.warnings),
        ElementsAre("which configuration file belongs to the engine follows from its name; not checked"));
}

TEST(PackageCheck, SixPieces)
{
    const TestPackage package;
    package.writeEngine(smallRecogniser(5), "ocr_small_p1_1_v1_b.trt");
    EXPECT_THAT(faults(package.path("ocr_small_p1_1_v1_b.trt")),
        ElementsAre("the name 'ocr_small_p1_1_v1_b.trt' does not split into five pieces at its underscores"));
}

TEST(PackageCheck, TheSuffix)
{
    const TestPackage package;
    package.writeEngine(smallRecogniser(5), "ocr_small_p1_1_v1.engine");
    EXPECT_THAT(
        faults(package.path("ocr_small_p1_1_v1.engine")), ElementsAre("the suffix must be 'trt', not 'engine'"));
}

TEST(PackageCheck, ConfigurationMissing)
{
    const TestPackage package;
    ASSERT_TRUE(QFile::remove(package.path("ocr_small_p1_1.json")));
    EXPECT_THAT(faults(package.engine()), ElementsAre(HasSubstr("the configuration file is missing: ")));
}

TEST(PackageCheck, ConfigurationTruncated)
{
    const TestPackage package;
    package.writeFile("ocr_small_p1_1.json", "{\"classes\": [");
    EXPECT_THAT(faults(package.engine()), ElementsAre(HasSubstr("Parse config file ")));
}

TEST(PackageCheck, NoClasses)
{
    TestPackage package;
    package.set("classes", QJsonArray());
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("Invalid config: there should be at least 1 class, or input size greater than 0.",
            "the configuration names no classes"));
}

TEST(PackageCheck, NoSize)
{
    TestPackage package;
    package.setDimension("width", 0);
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("Invalid config: there should be at least 1 class, or input size greater than 0."));
}

TEST(PackageCheck, MasksThatDoNotFit)
{
    TestPackage package;
    package.setInferInfo("anchors", QJsonObject{{"mask", QJsonArray{QJsonArray{0}, QJsonArray{1}}}});
    EXPECT_THAT(faults(package.engine()), ElementsAre("Incompatible size of output layers and anchors mask"));
}

TEST(PackageCheck, EngineDamaged)
{
    const TestPackage package;
    QFile file(package.engine());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(file.size() / 2));
    EXPECT_THAT(faults(package.engine()), ElementsAre(HasSubstr("the engine cannot be used: ")));
}

TEST(PackageCheck, EngineIsAFolder)
{
    const TestPackage package;
    EXPECT_THAT(faults(package.path("..")), testing::Contains(HasSubstr("this is a folder, not a file")));
}

TEST(PackageCheck, Sizes)
{
    TestPackage package;
    package.setDimension("height", 48);
    package.setDimension("channels", 1);
    package.setDimension("batch", 2);
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("\"batch\" is 2 in the configuration and 1 in the engine",
            "\"channels\" is 1 in the configuration and 3 in the engine",
            "\"height\" is 48 in the configuration and 32 in the engine"));
}

TEST(PackageCheck, LayerNames)
{
    TestPackage package;
    package.setInferInfo("input_layers", QJsonArray{"image"});
    package.setInferInfo("output_layers", QJsonArray{"scores", "extra"});
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("\"input_layers\" says 'image', the engine's input is called 'input'",
            "\"output_layers\" holds 2 names, the engine has 1 output",
            "\"output_layers\" says 'scores' at place 1, the engine's output there is called 'output'"));
    package.setInferInfo("input_layers", QJsonArray());
    package.setInferInfo("output_layers", QJsonArray());
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("\"input_layers\" must hold exactly one name, not 0",
            "\"output_layers\" holds 0 names, the engine has 1 output"));
}

TEST(PackageCheck, OrderOfOutputs)
{
    TestPackage package;
    ModelMaker model = smallRecogniser(5);
    setAttribute(model.node("Softmax", {"steps"}, {"second"}), "axis", std::int64_t(2));
    model.graph().add_output()->set_name("second");
    package.writeEngine(model, "ocr_small_p1_1_v1.trt");
    package.setInferInfo("output_layers", QJsonArray{"second", "output"});
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("\"output_layers\" says 'second' at place 1, the engine's output there is called 'output'",
            "\"output_layers\" says 'output' at place 2, the engine's output there is called 'second'"));
}

TEST(PackageCheck, Alphabet)
{
    TestPackage package;
    package.set("alphabet", "ABC");
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("the alphabet has 3 characters; output 'output' has 5 classes, the blank and 4 characters"));
    package.set("alphabet", "");
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("the alphabet has 0 characters; output 'output' has 5 classes, the blank and 4 characters"));
    package.set("alphabet", "ABCA");
    PackageReport report = checkPackage(package.engine());
    EXPECT_THAT(sentences(report.faults), IsEmpty());
    EXPECT_THAT(sentences(report.warnings), ElementsAre("the alphabet holds 'A' more than once"));
    package.set("alphabet", QString::fromUtf8("AB\xF0\x9F\x98\x80"));
    report = checkPackage(package.engine());
    EXPECT_THAT(
        sentences(report.warnings), ElementsAre("the alphabet holds '?' more than once, or characters beyond U+FFFF"));
}

TEST(PackageCheck, Widths)
{
    TestPackage package;
    package.writeEngine(smallRecogniser(5), "ocr_small_p1_1_v1.trt", 64, 256);
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("pictures of 32 to 320 columns are handed over; the engine takes 64 to 256"));
    package.setDimension("width", 256);
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("pictures of 32 to 256 columns are handed over; the engine takes 64 to 256"));
    package.writeEngine(smallRecogniser(5), "ocr_small_p1_1_v1.trt", 16, 256);
    EXPECT_THAT(faults(package.engine()), IsEmpty());
    package.setDimension("width", 16);
    EXPECT_THAT(faults(package.engine()), IsEmpty()) << "the configured width wins over 32";
}

TEST(PackageCheck, ChannelsOfTheEngine)
{
    TestPackage package;
    ModelMaker model = smallRecogniser(5);
    model.inputShape({1, 1, 32, -1});
    model.graph().clear_initializer();
    model.constant("w", {5, 1, 1, 1}, {0.1f, 0.2f, 0.3f, 0.4f, 0.5f});
    model.integers("axes", {2});
    package.writeEngine(model, "ocr_small_p1_1_v1.trt");
    package.setDimension("channels", 1);
    EXPECT_THAT(faults(package.engine()), ElementsAre("the engine takes 1 channels; pictures are handed over with 3"));
}

TEST(PackageCheck, ShapeOfTheOutput)
{
    TestPackage package;
    ModelMaker model = smallRecogniser(5);
    onnx::NodeProto& transpose = *model.graph().mutable_node(3);
    ASSERT_EQ(transpose.op_type(), "Transpose");
    transpose.clear_attribute();
    setAttribute(transpose, "perm", std::vector<std::int64_t>{0, 2, 1});
    package.writeEngine(model, "ocr_small_p1_1_v1.trt");
    EXPECT_THAT(faults(package.engine()), ElementsAre("output 'output' is 1x*x5; steps x 1 x classes is needed"));
}

TEST(PackageCheck, ScoresThatAreNotFinite)
{
    TestPackage package;
    ModelMaker model = smallRecogniser(5);
    model.graph().mutable_node(4)->set_op_type("Log");
    model.graph().mutable_node(4)->clear_attribute();
    package.writeEngine(model, "ocr_small_p1_1_v1.trt");
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("a trial run at width 32 gives scores that are not finite",
            "a trial run at width 320 gives scores that are not finite"));
}

TEST(PackageCheck, ScoresThatAreNoSoftmaxAreAWarning)
{
    TestPackage package;
    ModelMaker model = smallRecogniser(5);
    model.graph().mutable_node(4)->set_op_type("LogSoftmax");
    package.writeEngine(model, "ocr_small_p1_1_v1.trt");
    const PackageReport report = checkPackage(package.engine());
    EXPECT_THAT(sentences(report.faults), IsEmpty());
    EXPECT_THAT(sentences(report.warnings),
        ElementsAre(HasSubstr("at width 32 the scores are not those of a soft-max"),
            HasSubstr("at width 320 the scores are not those of a soft-max")));
}

TEST(PackageCheck, BuffersThatANarrowPictureOutgrows)
{
    TestPackage package;
    ModelMaker model;
    model.graph().mutable_input(0)->set_name("input");
    model.graph().mutable_output(0)->set_name("output");
    model.inputShape({1, 3, 32, -1});
    // (400 - W) x 1 x 5 rows of one value each.
    model.integers("widest", {400});
    model.integers("last", {3});
    model.integers("tail", {1, 5});
    model.node("Shape", {"input"}, {"shape"});
    model.node("Gather", {"shape", "last"}, {"width"});
    model.node("Sub", {"widest", "width"}, {"steps"});
    setAttribute(model.node("Concat", {"steps", "tail"}, {"target"}), "axis", std::int64_t(0));
    setAttribute(model.node("ReduceMean", {"input"}, {"mean"}), "keepdims", std::int64_t(0));
    model.node("Expand", {"mean", "target"}, {"rows"});
    setAttribute(model.node("Softmax", {"rows"}, {"output"}), "axis", std::int64_t(2));
    package.writeEngine(model, "ocr_small_p1_1_v1.trt");
    EXPECT_THAT(faults(package.engine()),
        ElementsAre("output 0 is larger at width 32 than at width 320, which buffers are made for"));
}

TEST(PackageCheck, SeveralFaultsAreAllTold)
{
    TestPackage package;
    package.setDimension("height", 31);
    package.set("alphabet", "AB");
    package.setInferInfo("input_layers", QJsonArray{"image"});
    EXPECT_EQ(faults(package.engine()).size(), 3u);
}

} // namespace
