// The program itself: arguments from the shell, exit codes to it.

#include "testpackage.h"

#include <QProcess>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

struct Outcome
{
    int code;
    std::string out;
    std::string err;
};

Outcome runProgram(const QStringList& arguments, const QString& outputFile = {})
{
    QProcess process;
    if (!outputFile.isEmpty()) {
        process.setStandardOutputFile(outputFile);
    }
    process.start(QStringLiteral(PROGRAM), arguments);
    EXPECT_TRUE(process.waitForFinished(120000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
        process.readAllStandardError().toStdString()};
}

TEST(Program, ExitCodes)
{
    TestPackage package;
    EXPECT_EQ(runProgram({"--help"}).code, 0);
    EXPECT_EQ(runProgram({}).code, 2);
    EXPECT_EQ(runProgram({"build", "--what"}).code, 2);
    EXPECT_EQ(runProgram({"check", package.engine()}).code, 0);
    package.set("alphabet", "A");
    EXPECT_EQ(runProgram({"check", package.engine()}).code, 1);
    EXPECT_EQ(runProgram({"inspect", package.path("nothing")}).code, 1);
}

TEST(Program, OutputToAFullDisk)
{
    const TestPackage package;
    for (const QStringList& arguments :
        {QStringList{"--help"}, {"inspect", package.engine()}, {"check", package.engine()}}) {
        const Outcome outcome = runProgram(arguments, QStringLiteral("/dev/full"));
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.err, "scribo-engine: the output cannot be written\n");
    }
}

TEST(Program, NamesWithOtherLettersAndBlanks)
{
    const TestPackage package;
    package.writeFile(QString::fromUtf8("größe 字.onnx"), QByteArray::fromStdString(smallRecogniser(5).bytes()));
    const QString output = package.path(QString::fromUtf8("größe 字.trt"));
    const Outcome outcome = runProgram({"build", package.path(QString::fromUtf8("größe 字.onnx")), "-o", output});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr(output.toStdString()));
}

} // namespace
