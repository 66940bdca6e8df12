// scribo-engine package: from a published model and its keys to the two files of a model package.

#include "testpackage.h"
#include "tool.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace scribo::tool;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A recogniser of `classes` classes in the layout that published ones often have, N x T x K.
ModelMaker stepsSecond(int classes)
{
    ModelMaker maker = smallRecogniser(classes);
    setAttribute(maker.node("Transpose", {"output"}, {"y"}), "perm", std::vector<std::int64_t>{1, 0, 2});
    maker.graph().mutable_output(0)->set_name("y");
    return maker;
}

/// A recogniser without the soft-max at its end.
ModelMaker withoutSoftmax(int classes)
{
    ModelMaker maker = smallRecogniser(classes);
    maker.graph().mutable_node()->RemoveLast();
    maker.graph().mutable_output(0)->set_name("steps");
    return maker;
}

class MakePackage : public testing::Test
{
protected:
    MakePackage() { keys("A\nB\nC\nD\n"); }

    void keys(const QByteArray& content) { folder.writeFile("keys.txt", content); }

    /// Calls the command with these options behind the usual ones.
    ExitCode make(const ModelMaker& model, const QStringList& options = {})
    {
        folder.writeFile("model.onnx", QByteArray::fromStdString(model.bytes()));
        return call(QStringList{folder.path("model.onnx"), "--keys", folder.path("keys.txt"), "--name",
                        "ocr_made_p1_1_v1", "-o", output()}
            + options);
    }

    ExitCode call(const QStringList& arguments)
    {
        std::ostringstream outStream, errStream;
        const ExitCode code = run(QStringList("package") + arguments, {outStream, errStream});
        out = outStream.str();
        err = errStream.str();
        return code;
    }

    QString output() const { return folder.path("new/model"); }
    QString engine() const { return output() + "/ocr_made_p1_1_v1.trt"; }
    QString configuration() const { return output() + "/ocr_made_p1_1.json"; }

    QJsonObject readConfiguration() const
    {
        QFile file(configuration());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll()).object();
    }

    std::string checked() const
    {
        std::ostringstream outStream, errStream;
        run({"check", engine()}, {outStream, errStream});
        return outStream.str() + errStream.str();
    }

    TestPackage folder;
    std::string out;
    std::string err;
};

TEST_F(MakePackage, WritesBothFiles)
{
    EXPECT_EQ(make(smallRecogniser(5)), Success) << err;
    EXPECT_THAT(err, IsEmpty());
    EXPECT_THAT(out, Not(HasSubstr("note")));
    EXPECT_THAT(out, HasSubstr("4 characters, widths 32 to 320, 80 time steps at the widest"));
    EXPECT_THAT(checked(), HasSubstr("no faults"));
    const QJsonObject root = readConfiguration();
    EXPECT_EQ(root["alphabet"].toString(), "ABCD");
    EXPECT_EQ(root["ignore_char"].toString(), "");
    EXPECT_EQ(root["classes"].toArray().size(), 1);
    EXPECT_EQ(root["classes"].toArray()[0].toObject()["name"].toString(), "A");
    const QJsonObject info = root["model_infer_info"].toObject();
    EXPECT_EQ(info["input_layers"].toArray(), QJsonArray{"input"});
    EXPECT_EQ(info["output_layers"].toArray(), QJsonArray{"output"});
    const QJsonObject dims = {{"batch", 1}, {"channels", 3}, {"height", 32}, {"width", 320}};
    EXPECT_EQ(info["input_dims"].toObject(), dims);
}

TEST_F(MakePackage, TurnsTheScores)
{
    EXPECT_EQ(make(stepsSecond(5), {"--max-width", "160"}), Success) << err;
    EXPECT_THAT(out, HasSubstr("note: the scores, 1x*x5, are turned into steps x batch x classes (--layout ntk)"));
    EXPECT_THAT(checked(), HasSubstr("no faults (4 characters, widths 32 to 160, 40 time steps"));
    EXPECT_EQ(make(stepsSecond(5), {"--max-width", "160", "--layout", "ntk"}), Success) << err;
    EXPECT_THAT(out, Not(HasSubstr("note")));
    EXPECT_EQ(make(stepsSecond(5), {"--layout", "tnk"}), Failure) << "as if it were steps x batch x classes";
}

TEST_F(MakePackage, AddsTheSoftmax)
{
    EXPECT_EQ(make(withoutSoftmax(5)), Success) << err;
    EXPECT_THAT(out, HasSubstr("note: the scores do not add up to 1: a soft-max was added (--softmax)"));
    EXPECT_THAT(checked(), Not(HasSubstr("warning")));
    EXPECT_EQ(make(withoutSoftmax(5), {"--softmax"}), Success) << err;
    EXPECT_THAT(out, Not(HasSubstr("note")));
}

TEST_F(MakePackage, TakesWhatTheModelWasTrainedOn)
{
    ModelMaker model = smallRecogniser(5);
    model.inputShape({1, 3, -1, -1});
    EXPECT_EQ(make(model), Failure);
    EXPECT_THAT(err, HasSubstr("leaves the height open; say which one the model was trained with (--height)"));
    EXPECT_EQ(make(model, {"--height", "32", "--channels", "bgr", "--range", "0:1", "--blank", "last"}), Success)
        << err;
    EXPECT_THAT(checked(), HasSubstr("no faults"));
}

TEST_F(MakePackage, AddsASpaceWhereTheModelHasOneCharacterMore)
{
    EXPECT_EQ(make(smallRecogniser(6)), Success) << err;
    EXPECT_THAT(out, HasSubstr("the last is a space"));
    EXPECT_EQ(readConfiguration()["alphabet"].toString(), "ABCD ");
}

TEST_F(MakePackage, OtherNumbersOfKeysDoNotFit)
{
    for (int classes : {4, 7}) {
        EXPECT_EQ(make(smallRecogniser(classes)), Failure);
        EXPECT_THAT(err,
            HasSubstr("keys.txt: there are 4 keys, but the model has " + std::to_string(classes)
                + " classes: a blank and " + std::to_string(classes - 1) + " characters"));
        EXPECT_FALSE(QFileInfo::exists(output()));
    }
}

TEST_F(MakePackage, KeysInAnyForm)
{
    for (const char* content : {"A\r\nB\r\n \r\nD", "AB D",
             "\xEF\xBB\xBF"
             "A\nB\n \nD\n",
             "AB D\n"}) {
        QFile::remove(configuration());
        keys(content);
        EXPECT_EQ(make(smallRecogniser(5)), Success) << content << err;
        EXPECT_EQ(readConfiguration()["alphabet"].toString(), "AB D") << content;
    }
}

TEST_F(MakePackage, KeysBeyondACodeUnitAreReplaced)
{
    keys("A\n\xF0\xA3\x87\x89\nC\nD\n");
    EXPECT_EQ(make(smallRecogniser(5)), Success) << err;
    EXPECT_THAT(out, HasSubstr("note: key 2, '\xF0\xA3\x87\x89', lies beyond U+FFFF and reads as '\xEF\xBF\xBD'"));
    EXPECT_EQ(readConfiguration()["alphabet"].toString(), QString("A") + QChar(QChar::ReplacementCharacter) + "CD");
}

TEST_F(MakePackage, KeysThatAreNone)
{
    const struct
    {
        QByteArray content;
        const char* reason;
    } cases[] = {{"", "keys.txt: there are no characters in it"}, {"\n", "keys.txt: there are no characters in it"},
        {"A\n\nC\nD", "keys.txt: line 2 is empty"},
        {"A\nBC\nD", "keys.txt: line 2 holds more than one character: 'BC'"},
        {"A\n\xFF\nC\nD", "keys.txt: this is not text in UTF-8"}};
    for (const auto& one : cases) {
        keys(one.content);
        EXPECT_EQ(make(smallRecogniser(5)), Failure);
        EXPECT_THAT(err, HasSubstr(one.reason));
    }
    QFile::remove(folder.path("keys.txt"));
    EXPECT_EQ(make(smallRecogniser(5)), Failure);
    EXPECT_THAT(err, HasSubstr("keys.txt: No such file"));
}

TEST_F(MakePackage, ModelsThatDoNotFit)
{
    ModelMaker two = smallRecogniser(5);
    two.graph().add_output()->set_name("steps");
    EXPECT_EQ(make(two), Failure);
    EXPECT_THAT(err, HasSubstr("model.onnx: it has 2 outputs; exactly one, the scores, can be read"));

    ModelMaker flat = smallRecogniser(5);
    flat.graph().mutable_output(0)->set_name("scores");
    EXPECT_EQ(make(flat), Failure);
    EXPECT_THAT(err, HasSubstr("which axes of its scores, 1x5x1x*, are steps, batch and classes is not clear"));

    ModelMaker grey = smallRecogniser(5);
    grey.inputShape({1, 1, 32, -1});
    EXPECT_EQ(make(grey), Failure);

    folder.writeFile("model.onnx", "nothing");
    EXPECT_EQ(call({folder.path("model.onnx"), "--keys", folder.path("keys.txt"), "--name", "ocr_made_p1_1_v1", "-o",
                  output()}),
        Failure);
    EXPECT_THAT(err, HasSubstr("model.onnx: this is not an ONNX model, or it is damaged"));
}

TEST_F(MakePackage, FaultsOfThePackageAreTold)
{
    EXPECT_EQ(make(smallRecogniser(5), {"--min-width", "64"}), Failure);
    EXPECT_THAT(err, HasSubstr("pictures of 32 to 320 columns are handed over; the engine takes 64 to 320"));
    EXPECT_FALSE(QFileInfo::exists(output()));
}

TEST_F(MakePackage, KeepsAConfigurationThatSaysSomethingElse)
{
    EXPECT_EQ(make(smallRecogniser(5)), Success) << err;
    EXPECT_EQ(make(smallRecogniser(5)), Success) << "the same again: " << err;
    keys("E\nB\nC\nD\n");
    EXPECT_EQ(make(smallRecogniser(5)), Failure);
    EXPECT_THAT(
        err, HasSubstr("ocr_made_p1_1.json: it exists and says something else; remove it or take another name"));
    EXPECT_EQ(readConfiguration()["alphabet"].toString(), "ABCD");
}

TEST_F(MakePackage, DoesNotReplaceWhatItIsMadeFrom)
{
    ASSERT_TRUE(QDir().mkpath(output()));
    folder.writeFile("new/model/ocr_made_p1_1_v1.trt", QByteArray::fromStdString(smallRecogniser(5).bytes()));
    const QStringList options = {"--name", "ocr_made_p1_1_v1", "-o", output()};
    const std::string reason = "the engine would replace " + engine().toStdString() + ", which it is made from";
    EXPECT_EQ(call(QStringList{engine(), "--keys", folder.path("keys.txt")} + options), WrongUsage);
    EXPECT_THAT(err, HasSubstr(reason));
    EXPECT_EQ(call(QStringList{folder.path("model.onnx"), "--keys", engine()} + options), WrongUsage);
    EXPECT_THAT(err, HasSubstr(reason));
    EXPECT_FALSE(QFileInfo::exists(configuration()));
}

TEST_F(MakePackage, FoldersThatCannotBeWritten)
{
    folder.writeFile("new", "a file where the folder should be");
    EXPECT_EQ(make(smallRecogniser(5)), Failure);
    EXPECT_THAT(err, HasSubstr("new/model: the folder cannot be made"));
    QFile::remove(folder.path("new"));
    QDir().mkpath(engine());
    EXPECT_EQ(make(smallRecogniser(5)), Failure);
    EXPECT_THAT(err, HasSubstr("ocr_made_p1_1_v1.trt: this is no file that could be replaced"));
}

TEST_F(MakePackage, WrongUse)
{
    const auto expectWrong = [this](const QStringList& options, const char* reason) {
        EXPECT_EQ(make(smallRecogniser(5), options), WrongUsage) << reason;
        EXPECT_THAT(err, HasSubstr(reason));
        EXPECT_FALSE(QFileInfo::exists(output()));
    };
    EXPECT_EQ(call({"model.onnx"}), WrongUsage);
    EXPECT_THAT(err, HasSubstr("--keys is missing"));
    EXPECT_EQ(call({"model.onnx", "--keys", "keys.txt"}), WrongUsage);
    EXPECT_THAT(err, HasSubstr("--name is missing"));
    EXPECT_EQ(call({"model.onnx", "--keys", "keys.txt", "--name", "ocr_made_p1_1_v1"}), WrongUsage);
    EXPECT_THAT(err, HasSubstr("--output is missing"));
    for (const char* name : {"made", "ocr_made_1_1_v1", "ocr_made_p1_1", "a/ocr_made_p1_1_v1", "crnn_made_p1_1_v1"}) {
        expectWrong({"--name", name}, "--name needs five pieces like ocr_printed_p1_1_v1");
    }
    expectWrong({"--layout", "xyz"}, "--layout is one of tnk, tkn, ntk, nkt, ktn, knt, not 'xyz'");
    expectWrong({"--blank", "middle"}, "--blank is one of first, last, not 'middle'");
    expectWrong({"--channels", "cmyk"}, "--channels is one of rgb, bgr, grey, not 'cmyk'");
    for (const char* range : {"1", "0:0", "a:1", "0:1,", "0:nan", "0:1:2"}) {
        expectWrong({"--range", range}, "--range needs BLACK:WHITE, two different numbers");
    }
    expectWrong({"--height", "0"}, "heights go from 1 to 4096");
    expectWrong({"--height", "tall"}, "--height needs a whole number, not 'tall'");
    expectWrong({"--max-width", "9999"}, "widths go from 1 to 4096, the smallest first");
    expectWrong({"--max-width", "wide"}, "--max-width needs a whole number");
}

TEST_F(MakePackage, Help)
{
    EXPECT_EQ(call({"--help"}), Success);
    EXPECT_THAT(out, HasSubstr("scribo-engine package MODEL.onnx --keys KEYS.txt --name"));
    EXPECT_THAT(out, HasSubstr("--layout AXES"));
}

} // namespace
