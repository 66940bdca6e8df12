#include "resultrecord.h"

#include <QRect>

#include <gtest/gtest.h>

namespace {

SOrgAI_ResInfo line(const std::string& text, double score, const cv::Rect& rect, bool isOk)
{
    SOrgAI_ResInfo result;
    result.text = text;
    result.score = score;
    result.rect = rect;
    result.isOk = isOk;
    return result;
}

const QStringList keys{"charCount", "defect_rects", "defect_scores", "defect_types", "resString"};

void expectTypes(const QVariantMap& record)
{
    EXPECT_EQ(record.keys(), keys);
    for (const char* list : {"defect_rects", "defect_scores", "defect_types"}) {
        EXPECT_EQ(record[list].type(), QVariant::List) << list;
    }
    EXPECT_EQ(record["charCount"].type(), QVariant::Int);
    EXPECT_EQ(record["resString"].type(), QVariant::String);
}

} // namespace

TEST(ResultRecord, TheTemplateHasEveryKeyAndNoContent)
{
    const QVariantMap record = makeResultTemplate();
    expectTypes(record);
    EXPECT_TRUE(record["defect_rects"].toList().isEmpty());
    EXPECT_TRUE(record["defect_scores"].toList().isEmpty());
    EXPECT_TRUE(record["defect_types"].toList().isEmpty());
    EXPECT_EQ(record["charCount"].toInt(), 0);
    EXPECT_EQ(record["resString"].toString(), "");
    EXPECT_EQ(makeResultTemplate(), record);
}

TEST(ResultRecord, AnItemWithoutLinesHasEmptyListsBesideCountAndText)
{
    const QVariantMap record = makeResultRecord({}, -1, "");
    expectTypes(record);
    EXPECT_TRUE(record["defect_rects"].toList().isEmpty());
    EXPECT_EQ(record["charCount"].toInt(), -1);
    EXPECT_EQ(record["resString"].toString(), "");
}

TEST(ResultRecord, LinesThatAreOkAreLeftOut)
{
    const QVariantMap record
        = makeResultRecord({line("A", 0.9, {1, 2, 3, 4}, true), line("B", 0.8, {5, 6, 7, 8}, true)}, 1, "B");
    EXPECT_TRUE(record["defect_rects"].toList().isEmpty());
    EXPECT_TRUE(record["defect_scores"].toList().isEmpty());
    EXPECT_TRUE(record["defect_types"].toList().isEmpty());
    EXPECT_EQ(record["charCount"].toInt(), 1);
    EXPECT_EQ(record["resString"].toString(), "B");
}

TEST(ResultRecord, OfTwoLinesTheOneThatIsNgIsListed)
{
    const QVariantMap record
        = makeResultRecord({line("A1", 0.9, {1, 2, 3, 4}, true), line("B2", 0.25, {5, 6, 7, 8}, false)}, 2, "B2");
    EXPECT_EQ(record["defect_rects"].toList(), QVariantList{QRect(5, 6, 7, 8)});
    EXPECT_EQ(record["defect_scores"].toList(), QVariantList{0.25});
    EXPECT_EQ(record["defect_types"].toList(), QVariantList{QString("B2")});
}

TEST(ResultRecord, TheListsKeepTheOrderOfTheLines)
{
    const QVariantMap record = makeResultRecord({line("C", 0.3, {0, 0, 0, 0}, false), line("ok", 1, {9, 9, 9, 9}, true),
                                                    line(u8"批号", -1.0, {-5, -6, 7, 8}, false)},
        4, "x");
    const QVariantList rects{QRect(0, 0, 0, 0), QRect(-5, -6, 7, 8)};
    const QVariantList scores{0.3, -1.0};
    const QVariantList types{QString("C"), QStringLiteral("批号")};
    EXPECT_EQ(record["defect_rects"].toList(), rects);
    EXPECT_EQ(record["defect_scores"].toList(), scores);
    EXPECT_EQ(record["defect_types"].toList(), types);
    EXPECT_EQ(record["defect_rects"].toList()[0].type(), QVariant::Rect);
    EXPECT_EQ(record["defect_scores"].toList()[0].type(), QVariant::Double);
    EXPECT_EQ(record["defect_types"].toList()[0].type(), QVariant::String);
}
