#include "modeloptions.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace scribo::tool {

const char* const modelOptionsHelp =
    R"(  --min-width COLUMNS  the narrowest picture that the engine takes (32)
  --max-width COLUMNS  the widest picture that the engine takes (320)

How the model was trained, where it is not as training/ does it:

  --height ROWS        the height, for a model that leaves it open
  --channels ORDER     the channels that it takes: rgb, bgr or grey (rgb)
  --range BLACK:WHITE  the values that it takes for black and white (-1:1); one pair, or one for
                       each channel between commas
  --layout AXES        the axes of its scores: a permutation of t, n and k for steps, batch and
                       classes (tnk)
  --blank END          where the blank is among the classes: first or last (first)
  --softmax            its scores need a soft-max
)";

namespace {

const QString layoutOption = QStringLiteral("layout");

/// One of the words that an option knows; nothing, told to the streams, for another one.
template <class Value>
struct Word
{
    const char* text;
    Value value;
};

template <class Value, std::size_t count>
std::optional<Value> readWord(
    const Arguments& command, const char* option, const Word<Value> (&words)[count], Streams streams)
{
    const QString given = command.value(QLatin1String(option));
    QStringList known;
    for (const Word<Value>& word : words) {
        if (given == QLatin1String(word.text)) {
            return word.value;
        }
        known << QLatin1String(word.text);
    }
    command.wrongUsage(QStringLiteral("--%1 is one of %2, not '%3'")
                           .arg(QLatin1String(option), known.join(QStringLiteral(", ")), given),
        streams);
    return std::nullopt;
}

std::optional<builder::ValueRange> readRange(const QString& text)
{
    const QStringList ends = text.split(QLatin1Char(':'));
    bool blackIsNumber = false, whiteIsNumber = false;
    const builder::ValueRange range = {ends.value(0).toFloat(&blackIsNumber), ends.value(1).toFloat(&whiteIsNumber)};
    const bool possible = ends.size() == 2 && blackIsNumber && whiteIsNumber && std::isfinite(range.black)
        && std::isfinite(range.white) && range.black != range.white;
    return possible ? std::optional(range) : std::nullopt;
}

bool readRanges(const Arguments& command, builder::PictureOptions* picture, Streams streams)
{
    picture->ranges.clear();
    const QString given = command.value(QStringLiteral("range"));
    for (const QString& text : given.split(QLatin1Char(','))) {
        const auto range = readRange(text);
        if (!range) {
            command.wrongUsage(
                QStringLiteral("--range needs BLACK:WHITE, two different numbers, not '%1'").arg(text), streams);
            return false;
        }
        picture->ranges.push_back(*range);
    }
    return true;
}

bool readWidths(const Arguments& command, builder::WidthRange* widths, Streams streams)
{
    const std::optional<int> minimum = command.number(QStringLiteral("min-width"), streams);
    const std::optional<int> maximum = minimum ? command.number(QStringLiteral("max-width"), streams) : std::nullopt;
    if (!maximum) {
        return false;
    }
    if (*minimum < 1 || *maximum < *minimum || *maximum > builder::largestWidth) {
        command.wrongUsage(
            QStringLiteral("widths go from 1 to %1, the smallest first").arg(builder::largestWidth), streams);
        return false;
    }
    *widths = {*minimum, *maximum};
    return true;
}

bool readPicture(const Arguments& command, builder::PictureOptions* picture, Streams streams)
{
    constexpr Word<builder::Channels> orders[]
        = {{"rgb", builder::Channels::Rgb}, {"bgr", builder::Channels::Bgr}, {"grey", builder::Channels::Grey}};
    if (command.isSet(QStringLiteral("height"))) {
        const std::optional<int> height = command.number(QStringLiteral("height"), streams);
        if (!height) {
            return false;
        }
        if (*height < 1 || *height > builder::largestWidth) {
            command.wrongUsage(QStringLiteral("heights go from 1 to %1").arg(builder::largestWidth), streams);
            return false;
        }
        picture->height = *height;
    }
    const auto channels = readWord(command, "channels", orders, streams);
    picture->channels = channels.value_or(builder::Channels::Rgb);
    return channels && readRanges(command, picture, streams);
}

bool readScores(const Arguments& command, builder::ScoreOptions* scores, Streams streams)
{
    constexpr Word<const char*> layouts[]
        = {{"tnk", "tnk"}, {"tkn", "tkn"}, {"ntk", "ntk"}, {"nkt", "nkt"}, {"ktn", "ktn"}, {"knt", "knt"}};
    constexpr Word<bool> blanks[] = {{"first", false}, {"last", true}};
    const auto layout = readWord(command, "layout", layouts, streams);
    const auto blankLast = layout ? readWord(command, "blank", blanks, streams) : std::nullopt;
    if (!blankLast) {
        return false;
    }
    *scores = {*layout, *blankLast, command.isSet(QStringLiteral("softmax"))};
    return true;
}

} // namespace

void addModelOptions(Arguments* command)
{
    const QString columns = QStringLiteral("COLUMNS");
    command->addOption({QStringLiteral("min-width"), {}, columns, QStringLiteral("32")});
    command->addOption({QStringLiteral("max-width"), {}, columns, QStringLiteral("320")});
    command->addOption({QStringLiteral("height"), {}, QStringLiteral("ROWS")});
    command->addOption({QStringLiteral("channels"), {}, QStringLiteral("ORDER"), QStringLiteral("rgb")});
    command->addOption({QStringLiteral("range"), {}, QStringLiteral("BLACK:WHITE"), QStringLiteral("-1:1")});
    command->addOption({layoutOption, {}, QStringLiteral("AXES"), QStringLiteral("tnk")});
    command->addOption({QStringLiteral("blank"), {}, QStringLiteral("END"), QStringLiteral("first")});
    command->addOption({QStringLiteral("softmax"), {}});
}

std::optional<builder::BuildOptions> readModelOptions(const Arguments& command, Streams streams)
{
    builder::BuildOptions options;
    options.source = QFileInfo(command.file()).fileName().toStdString();
    const bool read = readWidths(command, &options.widths, streams) && readPicture(command, &options.picture, streams)
        && readScores(command, &options.scores, streams);
    return read ? std::optional(options) : std::nullopt;
}

bool isLayoutGiven(const Arguments& command)
{
    return command.isSet(layoutOption);
}

} // namespace scribo::tool
