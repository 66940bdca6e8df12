#include "station.h"
#include "terminal/progressbar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>
#include <memory>

#include <pty.h>
#include <unistd.h>

using namespace scribo::host;

using testing::HasSubstr;
using testing::Not;

namespace {

/// Expects that the command refuses these arguments. Returns the first line of its errors.
std::string refusal(const Station& station, const QStringList& arguments)
{
    const Station::Outcome outcome = station.run(arguments);
    EXPECT_EQ(outcome.code, 2) << arguments.join(' ').toStdString();
    EXPECT_EQ(outcome.output, "");
    return outcome.errors.left(outcome.errors.indexOf('\n')).toStdString();
}

/// Expects the bar of two pictures, and that it is erased at the end.
void expectWholeBar(const std::string& shown)
{
    EXPECT_THAT(shown, HasSubstr("[........................................] 0/2"));
    EXPECT_THAT(shown, HasSubstr("[####################....................] 1/2"));
    EXPECT_THAT(shown, testing::EndsWith("\r\033[K"));
}

} // namespace

TEST(Inspect, ShowsHelpOnOneScreen)
{
    const Station station;
    const Station::Outcome outcome = station.run({"--help"});
    EXPECT_EQ(outcome.code, 0);
    const QList<QByteArray> lines = outcome.output.split('\n');
    EXPECT_LE(lines.size(), 40);
    for (const QByteArray& line : lines) {
        EXPECT_LE(line.size(), 80) << line.constData();
    }
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(station.run({"--version"}).output, "scribo-inspect 1.4.0\n");
}

TEST(Inspect, SaysWhatIsWrongWithTheCommandLine)
{
    const Station station;
    station.writePicture("a.png");
    const std::string name = "scribo-inspect: ";
    EXPECT_EQ(refusal(station, {}), name + "no pictures given");
    EXPECT_EQ(refusal(station, {"a.png", ""}), name + "an empty argument is no picture or folder");
    EXPECT_EQ(refusal(station, {"--nope", "a.png"}), name + "Unknown option 'nope'.");
    EXPECT_EQ(refusal(station, {"a.png", "--model"}), name + "Missing value after '--model'.");
    EXPECT_EQ(refusal(station, {"--model=", "a.png"}), name + "--model needs a value");
    EXPECT_EQ(refusal(station, {"--work", ".", "--work", ".", "a.png"}), name + "--work is given more than once");
    EXPECT_EQ(refusal(station, {"--compare", "on", "a.png"}), name + "--compare on: must be off, fixed or auto");
    EXPECT_EQ(refusal(station, {"--count", "3", "a.png"}), name + "--count 3: must be MIN:MAX, whole numbers from 0");
    EXPECT_EQ(refusal(station, {"--region", "1,2,3", "a.png"}),
        name + "--region 1,2,3: must be X,Y,WIDTH,HEIGHT in pixels, at least 1 wide and high");
    EXPECT_EQ(refusal(station, {"--region", "1,2,3,4", "--regions", "r.json", "a.png"}),
        name + "--region and --regions exclude each other");
    EXPECT_EQ(refusal(station, {"--save", "ok", "a.png"}), name + "--save needs --archive DIR or --removable DIR");
    EXPECT_EQ(
        refusal(station, {"--save", "all", "--archive", "x", "a.png"}), name + "--save all: must be ok, ng or ok,ng");
    EXPECT_EQ(refusal(station, {"--identity", "a/b", "a.png"}),
        name + "--identity a/b: must not contain \"/\", because it becomes part of file names");
}

TEST(Inspect, RefusesToJudgeLessThanWasAskedFor)
{
    const Station station;
    station.writePicture("a.png");
    EXPECT_THAT(refusal(station, {"--count", "3:4", "a.png"}), HasSubstr("--count is looked at only when"));
    EXPECT_THAT(refusal(station, {"--reference", "A", "a.png"}), HasSubstr("--reference is looked at only when"));
    EXPECT_THAT(refusal(station, {"--compare", "fixed", "a.png"}), HasSubstr("fixed comparison needs --reference"));
    EXPECT_THAT(refusal(station, {"--compare", "auto", "--region", "0,0,9,9", "--region", "9,0,9,9", "a.png"}),
        HasSubstr("automatic comparison learns one text"));
    EXPECT_THAT(refusal(station, {"--archive", "x", "a.png"}), HasSubstr("nothing would be archived"));
}

TEST(Inspect, RefusesARegionsReferenceOrCountThatNothingLooksAt)
{
    const Station station;
    station.writePicture("a.png");
    station.write(
        "reference.json", R"({"b.png": [{"rect": [0, 0, 9, 9], "reference": "A"}], "a.png": [[0, 0, 9, 9]]})");
    station.write("count.json", R"([[0, 0, 9, 9], {"rect": [0, 0, 9, 9], "count": [3, 4]}])");
    station.write("one.json", R"([{"rect": [0, 0, 9, 9], "count": [3, 4]}])");
    const QStringList reference = {"--regions", "reference.json", "a.png"};
    for (const QStringList& compare : {QStringList{}, QStringList{"--compare", "auto"}}) {
        EXPECT_THAT(refusal(station, compare + reference),
            HasSubstr("/reference.json: \"reference\" is looked at only by fixed comparison: add --compare fixed"));
    }
    EXPECT_THAT(refusal(station, {"--regions", "count.json", "a.png"}),
        HasSubstr("/count.json: \"count\" is looked at only when readings are compared: add --compare fixed or auto"));
    EXPECT_EQ(station.run({"--regions", "one.json", "--compare", "auto", "a.png"}).code, 1);
}

TEST(Inspect, NamesWhatIsMissing)
{
    const Station station;
    station.writePicture("a.png");
    station.write("bare/model/readme", {});
    const std::string root = station.path("").toStdString() + "/";
    EXPECT_EQ(refusal(station, {"--plugin", "none.so", "a.png"}),
        "scribo-inspect: " + root + "none.so: there is no such plug-in");
    EXPECT_EQ(refusal(station, {"--work", "none", "a.png"}), "scribo-inspect: " + root + "none: is not a folder");
    EXPECT_EQ(refusal(station, {"--work", "bare", "a.png"}), "scribo-inspect: " + root + "bare/model: holds no model");
    EXPECT_EQ(refusal(station, {"--model", "zz", "a.png"}),
        "scribo-inspect: --model: parameter 2: no such model: \"zz\" (ocr_a_p1_1_v1.trt)");
    EXPECT_EQ(refusal(station, {"--settings", "s.json", "a.png"}),
        "scribo-inspect: " + root + "s.json: cannot be opened: No such file or directory");
    EXPECT_EQ(refusal(station, {"--regions", "r.json", "a.png"}),
        "scribo-inspect: " + root + "r.json: cannot be opened: No such file or directory");
    EXPECT_EQ(refusal(station, {"--set", "9=7", "a.png"}),
        "scribo-inspect: --set: parameter 9: \"7\" is none of the choices: [1 off] | 2 固定字符 | 3 auto");
}

TEST(Inspect, ExitsByTheWorstVerdict)
{
    const Station station;
    station.writePicture("a.png");
    station.write("damaged.png", "x");
    EXPECT_EQ(station.run({"a.png"}).code, 0);
    EXPECT_EQ(station.run({"--compare", "fixed", "--reference", "AB12", "a.png"}).code, 0);
    EXPECT_EQ(station.run({"--compare", "fixed", "--reference", "X", "a.png"}).code, 1);
    EXPECT_EQ(station.run({"--compare", "fixed", "--reference", "AB12", "--count", "5:9", "a.png"}).code, 1);
    const Station::Outcome outcome
        = station.run({"--compare", "fixed", "--reference", "X", "damaged.png", "a.png", "model"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors,
        "scribo-inspect: damaged.png: is damaged, or not a picture in a known format\n"
        "scribo-inspect: model: holds no pictures\n");
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("3 pictures: 0 OK, 1 NG, 2 faults; median "));
}

TEST(Inspect, ShowsAProcessorsMessageOnceAndExitsWithAFault)
{
    const Station station;
    station.write("readings", "!模型文件加载出错\n");
    station.writePicture("a.png");
    station.writePicture("b.png");
    const Station::Outcome outcome = station.run({"a.png", "b.png"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, "scribo-inspect: a.png: not read: 模型文件加载出错\n");
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("b.png    (not read)                -  NG "));
}

TEST(Inspect, ResolvesPathsWhereItWasCalledAndModelsWhereItWorks)
{
    const Station station;
    station.write("elsewhere/model/ocr_z_p1_1_v1.trt", {});
    station.writePicture("pictures/a.png");
    const Station::Outcome outcome = station.run({"--work", "elsewhere", "--records", "r.jsonl", "pictures"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors.constData();
    EXPECT_THAT(station.read("r.jsonl").toStdString(), HasSubstr("\"picture\":\"pictures/a.png\""));
    EXPECT_EQ(station.run({"--work", "elsewhere", "--list-models"}).output, "ocr_z_p1_1_v1.trt\n");
}

TEST(Inspect, ListsTheParametersWithWhatWasSet)
{
    const Station station;
    const Station::Outcome outcome = station.run({"--set", "13=2:8", "--compare", "fixed", "--list-params"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output.count('\n'), 13);
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("\n 9  compare: 1 off | [2 固定字符] | 3 auto\n"));
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("\n13  count: 0 (limits 2:8)\n"));
}

TEST(Inspect, KeepsSettingsOnlyWhereItIsTold)
{
    const Station station;
    station.writePicture("a.png");
    EXPECT_EQ(station.run({"--compare", "fixed", "--reference", "AB12", "--save-settings", "s.json", "a.png"}).code, 0);
    const QByteArray saved = station.read("s.json");
    EXPECT_THAT(saved.toStdString(), HasSubstr("\"AB12\""));
    EXPECT_EQ(station.run({"--settings", "s.json", "a.png"}).code, 0);
    EXPECT_EQ(station.run({"--settings", "s.json", "--reference", "X", "a.png"}).code, 1);
    EXPECT_EQ(station.read("s.json"), saved);
    EXPECT_EQ(station.run({"--save-settings", "/proc/none/s.json", "a.png"}).code, 2);
}

TEST(Inspect, RefusesAModelOfTheSettingsThatIsGone)
{
    const Station station;
    station.writePicture("a.png");
    station.write("s.json", R"({"paramsWrap": [{}, {"selectedText": "old.trt"}]})");
    EXPECT_EQ(refusal(station, {"--settings", "s.json", "a.png"}),
        "scribo-inspect: no such model: \"old.trt\" (ocr_a_p1_1_v1.trt)");
    EXPECT_EQ(station.run({"--settings", "s.json", "--model", "ocr", "a.png"}).code, 0);
}

TEST(Inspect, ReadsNamesAsUtf8WithoutALocale)
{
    const Station station;
    station.writePicture("prüf/字.png");
    const Station::Outcome outcome = station.run({"--json", "prüf"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors.constData();
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("\"picture\":\"prüf/字.png\""));
}

TEST(Inspect, ShowsProgressOnATerminalOnly)
{
    const Station station;
    station.writePicture("a.png");
    station.writePicture("b.png");
    EXPECT_EQ(station.run({"a.png", "b.png"}).errors, "");

    int master = -1;
    int slave = -1;
    if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) {
        std::cerr << "There is no terminal to test with: is /dev/pts mounted?\n";
        return; // the bar by itself is tested below
    }
    EXPECT_EQ(station.run({"a.png", "b.png"}, ttyname(slave)).code, 0);
    char buffer[4096];
    const ssize_t length = read(master, buffer, sizeof buffer);
    close(slave);
    close(master);
    ASSERT_GT(length, 0);
    expectWholeBar(std::string(buffer, static_cast<std::size_t>(length)));
}

TEST(ProgressBar, IsDrawnOverItselfOnATerminalOnly)
{
    for (const bool isTerminal : {true, false}) {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::tmpfile(), std::fclose);
        ASSERT_TRUE(stream);
        {
            ProgressBar bar(stream.get(), isTerminal, 2);
            bar.show(0);
            bar.show(1);
        }
        std::rewind(stream.get());
        char buffer[4096];
        const std::string shown(buffer, std::fread(buffer, 1, sizeof buffer, stream.get()));
        if (isTerminal) {
            expectWholeBar(shown);
        } else {
            EXPECT_EQ(shown, "");
        }
    }
}
