#include "paramwrap.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <memory>

namespace {

QJsonObject written(ParamWrap& parameter)
{
    QJsonObject object;
    parameter.writeJson(object);
    return object;
}

struct IntLimits
{
    int value = 3;
    int low = 1;
    int high = 9;

    LimitLineEditParam parameter(const QString& name = QStringLiteral("count"))
    {
        return LimitLineEditParam(
            name, {}, true, true, &value, &low, &high, LineEditParam::IntValue, nullptr, nullptr, nullptr);
    }
};

} // namespace

TEST(ParamWrap, KeepsWhatTheConstructorIsGiven)
{
    ParamWrap parameter("name", "tip", true, false, 2);
    EXPECT_EQ(parameter.name, "name");
    EXPECT_EQ(parameter.tip, "tip");
    EXPECT_TRUE(parameter.hostFlag);
    EXPECT_FALSE(parameter.isRunningShow);
    EXPECT_EQ(parameter.category, 2U);
    EXPECT_FALSE(parameter.auxFlag);
    EXPECT_FALSE(parameter.isSpecial());
    EXPECT_TRUE(parameter.typeName().isEmpty());
}

TEST(ParamWrap, NamesEveryKind)
{
    bool flags[1] = {};
    QString texts[1];
    QString selected;
    QStringList items;
    IntLimits limits;
    EXPECT_EQ(SeparateParam("n", "t", true, true).typeName(), "SeparateParam");
    EXPECT_EQ(
        LineEditParam("n", "t", true, true, 3, &selected, 4, nullptr, nullptr, nullptr).typeName(), "LineEditParam");
    EXPECT_EQ(limits.parameter().typeName(), "LimitLineEditParam");
    EXPECT_EQ(RadioBoxParam("n", "t", true, true, 1, flags, 1, texts, texts).typeName(), "RadioBoxParam");
    EXPECT_EQ(CheckBoxParam("n", "t", true, true, 1, flags, 1, texts, texts).typeName(), "CheckBoxParam");
    EXPECT_EQ(
        ComboBoxParam_ByValue("n", "t", true, true, 1, &items, &items, &selected).typeName(), "ComboBoxParam_ByValue");
}

TEST(ParamWrap, ReadsRunningShowOnlyWhereItIsGiven)
{
    ParamWrap parameter("n", "t", true, true, 1);
    parameter.readJson({});
    EXPECT_TRUE(parameter.isRunningShow);
    parameter.readJson({{"isRunningShow", false}});
    EXPECT_FALSE(parameter.isRunningShow);
    parameter.isRunningShow = true;
    parameter.readJson({{"isRunningShow", "yes"}});
    EXPECT_FALSE(parameter.isRunningShow) << "a text converts to false";
}

TEST(ParamWrap, WritesIntoAnObjectThatHoldsOtherKeys)
{
    QJsonObject object{{"other", 1}, {"isRunningShow", "old"}};
    SeparateParam("n", "t", true, true).writeJson(object);
    EXPECT_EQ(object, (QJsonObject{{"other", 1}, {"isRunningShow", true}}));
}

TEST(SeparateParam, WritesNothingOfItsOwn)
{
    SeparateParam parameter("n", "t", true, true);
    EXPECT_EQ(parameter.category, 0U);
    EXPECT_EQ(written(parameter), (QJsonObject{{"isRunningShow", true}}));
}

TEST(LineEditParam, WritesAndReadsEveryType)
{
    bool flag = true;
    int number = -7;
    float real = 0.1F;
    double wide = 0.1;
    QString text = "A4827";
    const std::pair<quint32, void*> values[] = {{0, &flag}, {1, &number}, {2, &real}, {3, &wide}, {4, &text}};
    const QJsonValue expected[] = {true, -7, 0.10000000149011612, 0.1, "A4827"};
    const QJsonValue others[] = {false, 12, 2.5, 7.25, "B"};
    for (int i = 0; i < 5; ++i) {
        LineEditParam parameter("n", "t", true, true, 3, values[i].second, values[i].first, nullptr, nullptr, nullptr);
        EXPECT_EQ(written(parameter)["values"], expected[i]) << i;
        parameter.readJson({{"values", others[i]}});
        EXPECT_EQ(written(parameter)["values"], others[i]) << i;
        parameter.readJson({{"isRunningShow", true}});
        EXPECT_EQ(written(parameter)["values"], others[i]) << "a missing key changed type " << i;
    }
    EXPECT_FALSE(flag);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(real, 2.5F);
    EXPECT_EQ(wide, 7.25);
    EXPECT_EQ(text, "B");
}

TEST(LineEditParam, ConvertsValuesOfOtherJsonTypes)
{
    int number = 5;
    double real = 5;
    QString text = "old";
    bool flag = true;
    LineEditParam("n", "t", true, true, 3, &number, 1, nullptr, nullptr, nullptr).readJson({{"values", "7"}});
    LineEditParam("n", "t", true, true, 3, &real, 3, nullptr, nullptr, nullptr).readJson({{"values", "7"}});
    LineEditParam("n", "t", true, true, 3, &text, 4, nullptr, nullptr, nullptr).readJson({{"values", 7}});
    LineEditParam("n", "t", true, true, 3, &flag, 0, nullptr, nullptr, nullptr).readJson({{"values", 1}});
    EXPECT_EQ(number, 0);
    EXPECT_EQ(real, 0.0);
    EXPECT_EQ(text, "");
    EXPECT_FALSE(flag);
}

TEST(LineEditParam, LeavesAnUnknownTypeAlone)
{
    int number = 5;
    LineEditParam parameter("n", "t", true, true, 3, &number, 9, nullptr, nullptr, nullptr);
    EXPECT_EQ(written(parameter), (QJsonObject{{"isRunningShow", true}}));
    parameter.readJson({{"values", 1}});
    EXPECT_EQ(number, 5);
}

TEST(LimitLineEditParam, WritesItsLimits)
{
    IntLimits limits{0, 0, 1000};
    LimitLineEditParam parameter = limits.parameter();
    EXPECT_EQ(parameter.category, 3U);
    EXPECT_EQ(written(parameter),
        (QJsonObject{{"isRunningShow", true}, {"values", 0}, {"lowThresh", 0}, {"highThresh", 1000}}));
    parameter.compensate = &limits.value;
    EXPECT_EQ(written(parameter)["compensate"], 0);
}

TEST(LimitLineEditParam, WidensFloats)
{
    float value = 0.1F;
    float low = 0.2F;
    float high = 0.3F;
    LimitLineEditParam parameter("n", "t", true, true, &value, &low, &high, 2, nullptr, nullptr, nullptr);
    EXPECT_EQ(written(parameter)["lowThresh"].toDouble(), static_cast<double>(0.2F));
    EXPECT_EQ(written(parameter)["highThresh"].toDouble(), static_cast<double>(0.3F));
}

TEST(LimitLineEditParam, HasNoLimitsForTextsAndFlags)
{
    QString value = "v";
    QString low = "l";
    QString high = "h";
    LimitLineEditParam text("匹配分数", "t", true, true, &value, &low, &high, 4, nullptr, nullptr, nullptr);
    EXPECT_EQ(written(text), (QJsonObject{{"isRunningShow", true}, {"values", "v"}}));
    text.readJson({{"values", "w"}, {"lowThresh", "a"}, {"highThresh", "b"}});
    EXPECT_EQ(value, "w");
    EXPECT_EQ(low, "l");
    EXPECT_EQ(high, "h");
    text.readJson({{"values", "x"}});
    EXPECT_EQ(value, "x");
    EXPECT_EQ(low, "l") << "only a number becomes the lower limit of a match score";

    bool on = false;
    bool lowFlag = false;
    bool highFlag = true;
    LimitLineEditParam flag("匹配分数", "t", true, true, &on, &lowFlag, &highFlag, 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(written(flag), (QJsonObject{{"isRunningShow", true}, {"values", false}}));
    flag.readJson({{"values", true}});
    EXPECT_TRUE(on);
    EXPECT_FALSE(lowFlag);
}

TEST(LimitLineEditParam, KeepsItsLimitsWhenOneIsMissing)
{
    IntLimits limits;
    limits.parameter().readJson({{"values", 7}});
    EXPECT_EQ(limits.value, 7);
    EXPECT_EQ(limits.low, 1);
    EXPECT_EQ(limits.high, 9);
    limits.parameter().readJson({{"lowThresh", 5}});
    EXPECT_EQ(limits.low, 1);
    limits.parameter().readJson({{"highThresh", 5}});
    EXPECT_EQ(limits.high, 9);
    limits.parameter().readJson({{"lowThresh", 2}, {"highThresh", 4}});
    EXPECT_EQ(limits.low, 2);
    EXPECT_EQ(limits.high, 4);
}

TEST(LimitLineEditParam, ReadsCompensationWithTheLimits)
{
    IntLimits limits;
    int compensation = 6;
    LimitLineEditParam parameter = limits.parameter();
    parameter.compensate = &compensation;
    parameter.readJson({{"values", 1}});
    EXPECT_EQ(compensation, 6);
    parameter.readJson({{"lowThresh", 2}, {"highThresh", 4}});
    EXPECT_EQ(compensation, 0) << "a missing compensation reads as 0";
    parameter.readJson({{"lowThresh", 2}, {"highThresh", 4}, {"compensate", 8}});
    EXPECT_EQ(compensation, 8);
}

TEST(LimitLineEditParam, TakesAnOldMatchScoreAsItsLowerLimit)
{
    double value = 0;
    double low = 0;
    double high = 1;
    LimitLineEditParam score("匹配分数", {}, true, true, &value, &low, &high, 3, nullptr, nullptr, nullptr);
    score.readJson({{"values", 0.8}});
    EXPECT_EQ(value, 0.8);
    EXPECT_EQ(low, 0.8);
    EXPECT_EQ(high, 1.0);

    IntLimits limits;
    limits.parameter(QStringLiteral("匹配分数")).readJson({{"values", 5}, {"lowThresh", 2}});
    EXPECT_EQ(limits.low, 5) << "one limit alone is as good as none";

    float real = 0;
    float realLow = 0;
    float realHigh = 1;
    LimitLineEditParam("匹配分数", {}, true, true, &real, &realLow, &realHigh, 2, nullptr, nullptr, nullptr)
        .readJson({{"values", 0.25}});
    EXPECT_EQ(realLow, 0.25F);
}

TEST(RadioBoxParam, WritesAndReadsItsChoices)
{
    bool values[3] = {false, true, true};
    QString texts[3];
    RadioBoxParam parameter("n", "t", true, true, 1, values, 3, texts, texts);
    EXPECT_EQ(written(parameter)["values"], (QJsonArray{false, true, true}));
    parameter.readJson({{"values", QJsonArray{true}}});
    EXPECT_TRUE(values[0]);
    EXPECT_FALSE(values[1]);
    EXPECT_FALSE(values[2]);
    parameter.readJson({{"values", QJsonArray{false, 1, true, true, true}}});
    EXPECT_FALSE(values[0]);
    EXPECT_FALSE(values[1]);
    EXPECT_TRUE(values[2]);
    parameter.readJson({});
    EXPECT_TRUE(values[2]);
    parameter.readJson({{"values", 3}});
    EXPECT_FALSE(values[2]);
}

TEST(ComboBoxParam, KeepsItsChoiceByText)
{
    QStringList items{"a", "b"};
    QString selected = "a";
    ComboBoxParam_ByValue parameter("n", "t", true, true, 1, &items, &items, &selected);
    EXPECT_EQ(written(parameter), (QJsonObject{{"isRunningShow", true}, {"selectedText", "a"}}));
    parameter.readJson({{"selectedText", 5}});
    EXPECT_EQ(selected, "a");
    parameter.readJson({});
    EXPECT_EQ(selected, "a");
    parameter.readJson({{"selectedText", "not in the list"}});
    EXPECT_EQ(selected, "not in the list");
}

TEST(ParamWrap, IsDeletedThroughItsBase)
{
    int number = 0;
    std::unique_ptr<ParamWrap> parameter = std::make_unique<LineEditParam>(
        QString(1000, 'x'), QString(1000, 'y'), true, true, 3, &number, 1, nullptr, nullptr, nullptr);
    parameter.reset(); // the address sanitizer sees a text that is not freed
    EXPECT_EQ(number, 0);
}
