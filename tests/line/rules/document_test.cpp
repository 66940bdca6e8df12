#include "rulestesting.h"

#include <QFile>
#include <QJsonDocument>

namespace scribo::line {
namespace {

/// The page for the line engineer, in lines.
QStringList page()
{
    QFile file(QStringLiteral(EXPECTED_TEXT_PAGE));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}

/// The first settings that the page shows.
TextSettings settingsOf(const QStringList& lines)
{
    const int begin = lines.indexOf(QStringLiteral("    {"));
    const int end = lines.indexOf(QStringLiteral("    }"), begin);
    const QString json = QStringList(lines.mid(begin, end - begin + 1)).join(QLatin1Char('\n'));
    const auto settings = textSettings(QJsonDocument::fromJson(json.toUtf8()).object());
    EXPECT_TRUE(settings) << settings.error().message;
    return *settings;
}

/// The text between the backquotes of a cell.
QString code(const QString& cell)
{
    return cell.section(QLatin1Char('`'), 1, 1);
}

TEST(Document, ShowsWhatIsPrinted)
{
    const QStringList lines = page();
    const TextSettings settings = settingsOf(lines);
    const TextContext context{testing::localTime(QStringLiteral("2026-11-21T14:05:09")), QStringLiteral("A4828"), 27};
    bool isTable = false;
    int examples = 0;
    for (const QString& line : lines) {
        const bool isRow = line.startsWith(QLatin1String("| `"));
        isTable = line.startsWith(QLatin1String("| template |")) || (isTable && line.startsWith(QLatin1Char('|')));
        if (!isTable || !isRow) {
            continue;
        }
        const QString text = code(line.section(QLatin1Char('|'), 1, 1));
        const QString printed = code(line.section(QLatin1Char('|'), 2, 2));
        EXPECT_EQ(
            testing::expandedAll(text, context, settings).join(QLatin1Char('\n')).toStdString(), printed.toStdString())
            << text.toStdString();
        ++examples;
    }
    EXPECT_GE(examples, 45);
}

} // namespace
} // namespace scribo::line
