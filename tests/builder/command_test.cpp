// The commands through their arguments and streams.

#include "fulldisk.h"
#include "testpackage.h"
#include "tool.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace scribo::tool;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

struct Outcome
{
    ExitCode code = Success;
    std::string out;
    std::string err;
};

Outcome call(const QStringList& arguments)
{
    std::ostringstream out, err;
    const ExitCode code = run(arguments, {out, err});
    return {code, out.str(), err.str()};
}

void expectWrongUsage(const QStringList& arguments, const std::string& reason)
{
    const Outcome outcome = call(arguments);
    EXPECT_EQ(outcome.code, WrongUsage);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr(reason));
    EXPECT_THAT(outcome.err, HasSubstr("--help"));
}

/// The number of the first operation of this kind in a table of operations; -1 when there is none.
int numberOf(const std::string& kind, const std::string& output)
{
    const QRegularExpression row(
        QStringLiteral("^ +(\\d+) +%1 ").arg(QString::fromStdString(kind)), QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = row.match(QString::fromStdString(output));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

class Commands : public testing::Test
{
protected:
    Commands() { package.writeFile("small.onnx", QByteArray::fromStdString(smallRecogniser(5).bytes())); }

    TestPackage package;
    QString model = package.path("small.onnx");
    QString output = package.path("new.trt");
};

TEST(Usage, HelpFitsAScreen)
{
    for (const QStringList& arguments : {QStringList{"--help"}, {"-h"}, {"build", "--help"}, {"inspect", "--help"},
             {"check", "-h"}, {"bench", "--help"}}) {
        const Outcome outcome = call(arguments);
        EXPECT_EQ(outcome.code, Success);
        EXPECT_THAT(outcome.err, IsEmpty());
        EXPECT_THAT(
            outcome.out, HasSubstr("scribo-engine " + (arguments.size() > 1 ? arguments[0].toStdString() : "")));
        const QStringList lines = QString::fromStdString(outcome.out).split('\n');
        EXPECT_LE(lines.size(), 24);
        for (const QString& line : lines) {
            EXPECT_LE(line.size(), 100) << line.toStdString();
        }
    }
}

TEST(Usage, Version)
{
    const Outcome outcome = call({"--version"});
    EXPECT_EQ(outcome.code, Success);
    EXPECT_THAT(outcome.out, MatchesRegex("scribo-engine [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Usage, Wrong)
{
    expectWrongUsage({}, "a command is needed");
    expectWrongUsage({"bild"}, "there is no command or option 'bild'");
    expectWrongUsage({"--verbose"}, "there is no command or option '--verbose'");
    expectWrongUsage({"build"}, "MODEL.onnx is missing");
    expectWrongUsage({"inspect"}, "ENGINE.trt is missing");
    expectWrongUsage({"bench"}, "ENGINE.trt is missing");
    expectWrongUsage({"bench", "a", "--runs", "many"}, "--runs needs a whole number, not 'many'");
    expectWrongUsage({"bench", "a", "--runs", "0"}, "--runs must lie between 1 and 1000000");
    expectWrongUsage({"check"}, "FOLDER/ENGINE.trt is missing");
    expectWrongUsage({"build", "a.onnx"}, "-o ENGINE.trt is missing");
    expectWrongUsage({"build", "a.onnx", "-o"}, "Missing value after '-o'");
    expectWrongUsage({"build", "a.onnx", "-o", "b", "--fast"}, "Unknown option 'fast'");
    expectWrongUsage({"inspect", "a", "--yaml", "--xml"}, "Unknown options: yaml, xml");
    expectWrongUsage({"check", "a", "b", "c"}, "one FOLDER/ENGINE.trt at a time, but 'b', 'c' follows");
}

TEST(Usage, WrongWidths)
{
    expectWrongUsage({"build", "a", "-o", "b", "--min-width", "wide"}, "--min-width needs a whole number, not 'wide'");
    expectWrongUsage({"build", "a", "-o", "b", "--max-width", "1.5"}, "--max-width needs a whole number, not '1.5'");
    for (const QStringList& widths : {QStringList{"0", "320"}, {"-3", "320"}, {"64", "63"}, {"32", "4097"}}) {
        expectWrongUsage({"build", "a", "-o", "b", "--min-width", widths[0], "--max-width", widths[1]},
            "widths go from 1 to 4096, the smallest first");
    }
}

TEST_F(Commands, BuildWritesAnEngine)
{
    const Outcome outcome = call({"build", model, "-o", output, "--min-width", "16", "--max-width", "100"});
    EXPECT_EQ(outcome.code, Success) << outcome.err;
    EXPECT_THAT(outcome.out,
        MatchesRegex(output.toStdString() + ": .* kB, 5 operations, widths 16 to 100, built in [0-9]+\\.[0-9] s\n"));
    EXPECT_EQ(call({"inspect", output}).code, Success);
}

TEST_F(Commands, BenchTimesTheWidthsAskedFor)
{
    ASSERT_EQ(call({"build", model, "-o", output}).code, Success);
    const Outcome outcome = call({"bench", output, "--width", "77", "--width", "40", "--runs", "3"});
    EXPECT_EQ(outcome.code, Success) << outcome.err;
    // On a machine with one processor nothing stands below "two threads".
    const std::string times
        = "( +[0-9]+\\.[0-9]{3} ms){3} +([0-9]+\\.[0-9]{3} ms|-) +(1 thread|2 threads) +[0-9.]+ [a-zA-Z]+\n";
    EXPECT_THAT(outcome.out,
        MatchesRegex(output.toStdString()
            + ": loaded in [0-9.]+ ms; [0-9.]+ [a-zA-Z]+ of weights in the kernels' order; 3 runs a width\n\n"
              "  width +first run +median +best +two threads +choice +plan\n  77 "
            + times + "  40 " + times));
}

TEST_F(Commands, BenchTakesTheUsualWidthsThatTheEngineTakes)
{
    ASSERT_EQ(call({"build", model, "-o", output, "--min-width", "50", "--max-width", "160"}).code, Success);
    const std::string usual = call({"bench", output, "--runs", "1"}).out;
    for (const char* row : {"\n  64 ", "\n  100 ", "\n  160 "}) {
        EXPECT_THAT(usual, HasSubstr(row));
    }
    EXPECT_THAT(usual, testing::Not(HasSubstr("\n  320 ")));

    ASSERT_EQ(call({"build", model, "-o", output, "--min-width", "40", "--max-width", "48"}).code, Success);
    const std::string ends = call({"bench", output, "--runs", "1"}).out;
    EXPECT_THAT(ends, HasSubstr("\n  40 "));
    EXPECT_THAT(ends, HasSubstr("\n  48 "));
}

TEST_F(Commands, BenchShowsWhereTheTimeGoes)
{
    ASSERT_EQ(call({"build", model, "-o", output}).code, Success);
    const Outcome outcome = call({"bench", output, "--width", "64", "--runs", "2", "--profile"});
    EXPECT_EQ(outcome.code, Success) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("\nwidth 64\n"));
    EXPECT_THAT(outcome.out, HasSubstr(" % "));
    const std::string inspected = call({"inspect", output}).out;
    for (const char* kind : {"Convolution", "Softmax"}) {
        EXPECT_GE(numberOf(kind, outcome.out), 0) << kind;
        EXPECT_EQ(numberOf(kind, outcome.out), numberOf(kind, inspected)) << kind;
    }
}

TEST_F(Commands, BenchRefusesWhatItCannotTime)
{
    ASSERT_EQ(call({"build", model, "-o", output}).code, Success);
    for (const char* width : {"31", "321", "-1", "wide"}) {
        expectWrongUsage({"bench", output, "--width", width},
            "--width needs a whole number from 32 to 320, the engine's widths, not '" + std::string(width) + "'");
    }
    EXPECT_EQ(call({"bench", package.path("none.trt")}).code, Failure);
    package.writeFile("foreign.trt", "no engine");
    const Outcome outcome = call({"bench", package.path("foreign.trt")});
    EXPECT_EQ(outcome.code, Failure);
    EXPECT_THAT(outcome.err, HasSubstr("foreign.trt: "));
    EXPECT_THAT(outcome.out, IsEmpty());
}

TEST_F(Commands, BuildReplacesAnEngineWhole)
{
    package.writeFile("new.trt", QByteArray(1 << 20, 'x'));
    EXPECT_EQ(call({"build", model, "-o", output}).code, Success);
    EXPECT_EQ(call({"inspect", output}).code, Success);
}

TEST_F(Commands, BuildNamesEverythingThatIsNotSupported)
{
    ModelMaker maker;
    maker.node("NonMaxSuppression", {"x"}, {"a"}, "/det/nms");
    maker.node("ConvTranspose", {"x"}, {"y"}, "/up");
    package.writeFile("bad.onnx", QByteArray::fromStdString(maker.bytes()));
    const std::string bad = package.path("bad.onnx").toStdString();
    const Outcome outcome = call({"build", package.path("bad.onnx"), "-o", output});
    EXPECT_EQ(outcome.code, Failure);
    EXPECT_EQ(outcome.err,
        bad + ": operation 'NonMaxSuppression' of node '/det/nms' is not supported\n" + bad
            + ": operation 'ConvTranspose' of node '/up' is not supported\n");
    EXPECT_FALSE(QFile::exists(output));
}

TEST_F(Commands, AFailedBuildLeavesTheOldEngine)
{
    package.writeFile("new.trt", "old");
    package.writeFile("bad.onnx", "bad");
    EXPECT_EQ(call({"build", package.path("bad.onnx"), "-o", output}).code, Failure);
    QFile file(output);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "old");
}

TEST_F(Commands, BuildWithoutAModel)
{
    const QString nowhere = package.path("nowhere.onnx");
    EXPECT_EQ(call({"build", nowhere, "-o", output}).err, nowhere.toStdString() + ": No such file or directory\n");
    EXPECT_EQ(call({"build", package.path("."), "-o", output}).err,
        package.path(".").toStdString() + ": this is a folder, not a file\n");
}

TEST_F(Commands, BuildToWhereNothingCanBeWritten)
{
    for (const QString& place : {package.path("no/such/folder.trt"), model + "/below.trt", package.path(".")}) {
        const Outcome outcome = call({"build", model, "-o", place});
        EXPECT_EQ(outcome.code, Failure);
        EXPECT_THAT(outcome.err, StartsWith(place.toStdString() + ": "));
    }
    EXPECT_EQ(QDir(QFileInfo(output).path()).entryList({"*.trt*"}, QDir::Files), QStringList{"ocr_small_p1_1_v1.trt"});
}

TEST_F(Commands, BuildDoesNotReplaceItsModel)
{
    const QString link = package.path("link.trt");
    ASSERT_TRUE(QFile::link(model, link));
    const std::string reason = "-o names the model itself, which the engine would replace";
    for (const QString& place : {model, package.path("./small.onnx"), link}) {
        expectWrongUsage({"build", model, "-o", place}, reason);
    }
    expectWrongUsage({"build", link, "-o", model}, reason);
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    QFile file(model);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(), smallRecogniser(5).bytes());
}

TEST_F(Commands, RefuseFilesTooLargeToBeRead)
{
    const QString large = package.path("large");
    QFile file(large);
    // A file without content takes no room on the disk.
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(qint64(1) << 31));
    for (const QStringList& arguments :
        {QStringList{"build", large, "-o", output}, {"inspect", large}, {"bench", large}}) {
        const Outcome outcome = call(arguments);
        EXPECT_EQ(outcome.code, Failure);
        EXPECT_EQ(outcome.err, large.toStdString() + ": the file is larger than 2 GB, the most that can be read\n");
    }
    EXPECT_FALSE(QFile::exists(output));
}

TEST_F(Commands, FailWhenTheirOutputCannotBeWritten)
{
    std::ostream nowhere(nullptr);
    std::ostringstream err;
    EXPECT_EQ(run({"inspect", package.engine()}, {nowhere, err}), Failure);
    EXPECT_EQ(err.str(), "scribo-engine: the output cannot be written\n");
    EXPECT_EQ(run({"inspect"}, {nowhere, err}), WrongUsage) << "which is told first";
}

TEST_F(Commands, BuildReplacesNoDevice)
{
    const Outcome outcome = call({"build", model, "-o", "/dev/null"});
    EXPECT_EQ(outcome.code, Failure);
    EXPECT_EQ(outcome.err, "/dev/null: this is no file that could be replaced\n");
}

TEST_F(Commands, BuildLeavesTheOldEngineWhenTheDiskIsFull)
{
    package.writeFile("new.trt", "old");
    Outcome outcome;
    {
        const FullDisk full(100);
        outcome = call({"build", model, "-o", output});
    }
    EXPECT_EQ(outcome.code, Failure);
    EXPECT_THAT(outcome.err, StartsWith(output.toStdString() + ": "));
    QFile file(output);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "old");
    EXPECT_EQ(QDir(QFileInfo(output).path()).entryList({"new.trt*"}, QDir::Files), QStringList{"new.trt"});
}

TEST_F(Commands, InspectShowsTheEngine)
{
    const Outcome outcome = call({"inspect", package.engine()});
    EXPECT_EQ(outcome.code, Success);
    for (const char* part : {"widths 32 to 320", "15 weights", "120 multiply-adds at width 32, 1,200 at width 320",
             "from small.onnx", "format 1", "input    input   1x3x32x*  1x3x32x32    1x3x32x320",
             "output   output  *x1x5     8x1x5        80x1x5", "Pooling",
             "AverageExcludePad, kernel 32 4, strides 32 4", "Convolution  scores", "5x3x1x1", "Softmax"}) {
        EXPECT_THAT(outcome.out, HasSubstr(part));
    }
}

TEST_F(Commands, InspectForPrograms)
{
    const Outcome outcome = call({"inspect", "--json", package.engine()});
    EXPECT_EQ(outcome.code, Success);
    const QJsonObject engine = QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).object();
    EXPECT_EQ(engine["file"].toString(), package.engine());
    EXPECT_EQ(engine["bytes"].toInt(), QFileInfo(package.engine()).size());
    EXPECT_EQ(engine["formatVersion"].toInt(), 1);
    EXPECT_EQ(engine["source"].toString(), "small.onnx");
    EXPECT_EQ(engine["minimumWidth"].toInt(), 32);
    EXPECT_EQ(engine["maximumWidth"].toInt(), 320);
    EXPECT_EQ(engine["weights"].toInt(), 15);
    EXPECT_EQ(engine["multiplyAddsAtMaximumWidth"].toInt(), 1200);
    const QJsonArray bindings = engine["bindings"].toArray();
    ASSERT_EQ(bindings.size(), 2);
    EXPECT_EQ(bindings[0].toObject()["shape"].toArray(), (QJsonArray{1, 3, 32, -1}));
    EXPECT_EQ(bindings[1].toObject()["name"].toString(), "output");
    const QJsonArray operations = engine["operations"].toArray();
    ASSERT_EQ(operations.size(), 5);
    EXPECT_EQ(operations[1].toObject()["kind"].toString(), "Convolution");
    EXPECT_EQ(operations[1].toObject()["weights"].toArray(), (QJsonArray{QJsonArray{5, 3, 1, 1}}));
    EXPECT_EQ(operations[4].toObject()["shapeAtMaximumWidth"].toArray(), (QJsonArray{80, 1, 5}));
}

TEST_F(Commands, InspectWhatIsNoEngine)
{
    const Outcome outcome = call({"inspect", model});
    EXPECT_EQ(outcome.code, Failure);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StartsWith(model.toStdString() + ": "));
    EXPECT_EQ(call({"inspect", package.path("nothing")}).code, Failure);
}

TEST_F(Commands, CheckTellsThatAllIsWell)
{
    const Outcome outcome = call({"check", package.engine()});
    EXPECT_EQ(outcome.code, Success);
    EXPECT_EQ(outcome.out,
        "ocr_small_p1_1_v1.trt: no faults (4 characters, widths 32 to 320, 80 time steps at the widest)\n");
}

TEST_F(Commands, CheckTellsFaultsAndWarnings)
{
    package.set("alphabet", "AA");
    package.setDimension("height", 48);
    const Outcome outcome = call({"check", package.engine()});
    EXPECT_EQ(outcome.code, Failure);
    EXPECT_EQ(outcome.out,
        "fault: \"height\" is 48 in the configuration and 32 in the engine\n"
        "fault: the alphabet has 2 characters; output 'output' has 5 classes, the blank and 4 characters\n"
        "warning: the alphabet holds 'A' more than once\n"
        "ocr_small_p1_1_v1.trt: 2 faults\n");
}

} // namespace
