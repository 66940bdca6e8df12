#include "rulestesting.h"

#include <QProcess>

namespace scribo::line {
namespace {

constexpr int daysFrom2020To2040 = 7671;
constexpr int mostShown = 5;

/// The lines that the script prints, in fields.
std::vector<QStringList> oracle(const QString& what)
{
    QProcess process;
    process.start(QStringLiteral(ORACLE_PYTHON), {QStringLiteral(ORACLE_SCRIPT), what});
    EXPECT_TRUE(process.waitForFinished(280'000)) << process.errorString().toStdString();
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    std::vector<QStringList> lines;
    for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty()) {
            lines.push_back(QString::fromUtf8(line).split(QLatin1Char('\t')));
        }
    }
    return lines;
}

TextTemplate parsed(const QString& text)
{
    auto result = TextTemplate::parse(text);
    EXPECT_TRUE(result) << text.toStdString() << ": " << (result ? "" : result.error().message);
    return *result;
}

/// Counts what differs and shows the first.
class Differences
{
public:
    void compare(const Result<Expectation>& found, const QString& right, const QString& where)
    {
        ++compared;
        const QString text = found ? found->text() : QString::fromStdString(found.error().message);
        if (text != right && count++ < mostShown) {
            ADD_FAILURE() << where.toStdString() << " is " << text.toStdString() << ", expected "
                          << right.toStdString();
        }
    }

    int count = 0;
    int compared = 0;
};

TEST(Oracle, AgreesOnEveryDateFrom2020To2040)
{
    const std::vector<QStringList> lines = oracle(QStringLiteral("dates"));
    ASSERT_EQ(lines.size(), daysFrom2020To2040 + 1);
    struct Column
    {
        QTime time;
        TextTemplate text;
    };
    std::vector<Column> columns;
    for (const QString& head : lines[0].mid(1)) {
        columns.push_back({QTime::fromString(head.left(5), QStringLiteral("HH:mm")), parsed(head.mid(6))});
    }
    ASSERT_GE(columns.size(), 35U);
    TextSettings settings;
    settings.zone = QTimeZone("Asia/Shanghai");
    constexpr int fromUtc = 8 * 60 * 60; // all year round
    const QString letters = QStringLiteral("ABCDEFGHJKLM");
    for (int i = 0; i < letters.size(); ++i) {
        settings.tables[QStringLiteral("letters")][i + 1] = letters[i];
    }
    Differences differences;
    for (std::size_t line = 1; line < lines.size(); ++line) {
        const QDate date = QDate::fromString(lines[line][0], Qt::ISODate);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const QDateTime now = QDateTime(date, columns[i].time, Qt::UTC).addSecs(-fromUtc);
            differences.compare(columns[i].text.expand({now, QString(), {}}, settings),
                lines[line][static_cast<int>(i) + 1], lines[line][0] + QLatin1Char(' ') + columns[i].text.source());
        }
    }
    EXPECT_EQ(differences.count, 0);
    EXPECT_EQ(differences.compared, daysFrom2020To2040 * static_cast<int>(columns.size()));
}

TEST(Oracle, AgreesOnTheDayRoundEveryChangeOfTheClocks)
{
    const std::vector<QStringList> lines = oracle(QStringLiteral("clocks"));
    ASSERT_GT(lines.size(), 10'000U);
    const QStringList begins{QStringLiteral("00:00"), QStringLiteral("01:00"), QStringLiteral("02:00"),
        QStringLiteral("02:30"), QStringLiteral("03:00"), QStringLiteral("06:00"), QStringLiteral("23:00")};
    std::vector<TextTemplate> templates;
    for (const QString& begin : begins) {
        templates.push_back(parsed(QStringLiteral("{date:yyyy-MM-dd HH:mm;day begins at %1}").arg(begin)));
    }
    TextSettings settings;
    Differences differences;
    for (const QStringList& line : lines) {
        if (QString::fromUtf8(settings.zone.id()) != line[0]) {
            settings.zone = QTimeZone(line[0].toUtf8());
            ASSERT_TRUE(settings.zone.isValid()) << line[0].toStdString();
        }
        ASSERT_EQ(line.size(), 3 + begins.size());
        const QDateTime now = QDateTime::fromSecsSinceEpoch(line[1].toLongLong(), Qt::UTC);
        for (int i = 0; i < begins.size(); ++i) {
            differences.compare(templates[i].expand({now, QString(), {}}, settings),
                line[3 + i] + QLatin1Char(' ') + line[2], line[0] + QLatin1Char(' ') + line[1] + begins[i]);
        }
    }
    EXPECT_EQ(differences.count, 0);
}

} // namespace
} // namespace scribo::line
