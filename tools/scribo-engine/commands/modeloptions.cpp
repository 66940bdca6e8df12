#include "modeloptions.h"

#include "resulttext.h"

#include <QFileInfo>

#include <cmath>
#include <optional>

namespace scribo::tool {

const char* const modelOptionsHelp =
    R"(  --min-width COLUMNS  the narrowest picture that the engine takes (32)
  --max-width COLUMNS  the widest picture that the engine takes (320)

How the model was trained, where that differs from training/:

  --height ROWS        the height, for a model that leaves it open
  --channels ORDER     the channels that it takes: rgb, bgr or grey (rgb)
  --range BLACK:WHITE  the values that it takes for black and white (-1:1): one pair, or a pair for
                       each channel, with commas between them
  --layout AXES        the axes of its scores: a permutation of t, n and k for steps, batch and
                       classes (tnk)
  --blank END          where the blank is among the classes: first or last (first)
  --softmax            adds a soft-max, which its scores need
)";

namespace {

const QString layoutOption = QStringLiteral("layout");

/// One of the words that an option knows.
template <class Value>
struct Word
{
    const char* text;
    Value value;
};

template <class Value, std::size_t count>
Result<Value> readWord(const Arguments& command, const char* option, const Word<Value> (&words)[count])
{
    const QString given = command.value(QLatin1String(option));
    QStringList known;
    for (const Word<Value>& word : words) {
        if (given == QLatin1String(word.text)) {
            return word.value;
        }
        known << QLatin1String(word.text);
    }
    return failure(QStringLiteral("--%1 is one of %2, not '%3'")
                       .arg(QLatin1String(option), known.join(QStringLiteral(", ")), given));
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

Result<std::vector<builder::ValueRange>> readRanges(const Arguments& command)
{
    std::vector<builder::ValueRange> ranges;
    for (const QString& text : command.value(QStringLiteral("range")).split(QLatin1Char(','))) {
        const auto range = readRange(text);
        if (!range) {
            return failure(QStringLiteral("--range needs BLACK:WHITE, two different numbers, not '%1'").arg(text));
        }
        ranges.push_back(*range);
    }
    return ranges;
}

Result<builder::WidthRange> readWidths(const Arguments& command)
{
    const Result<int> minimum = command.number(QStringLiteral("min-width"));
    const Result<int> maximum = minimum ? command.number(QStringLiteral("max-width")) : minimum;
    if (!maximum) {
        return tl::unexpected<Error>(maximum.error());
    }
    if (*minimum < 1 || *maximum < *minimum || *maximum > builder::largestWidth) {
        return failure(QStringLiteral("widths go from 1 to %1, the smallest first").arg(builder::largestWidth));
    }
    return builder::WidthRange{*minimum, *maximum};
}

/// The height that the option gives; 0 without the option.
Result<int> readHeight(const Arguments& command)
{
    const QString option = QStringLiteral("height");
    if (!command.isSet(option)) {
        return 0;
    }
    const Result<int> height = command.number(option);
    if (height && (*height < 1 || *height > builder::largestWidth)) {
        return failure(QStringLiteral("heights go from 1 to %1").arg(builder::largestWidth));
    }
    return height;
}

Result<builder::PictureOptions> readPicture(const Arguments& command)
{
    constexpr Word<builder::Channels> orders[]
        = {{"rgb", builder::Channels::Rgb}, {"bgr", builder::Channels::Bgr}, {"grey", builder::Channels::Grey}};
    const Result<int> height = readHeight(command);
    if (!height) {
        return tl::unexpected<Error>(height.error());
    }
    const auto channels = readWord(command, "channels", orders);
    if (!channels) {
        return tl::unexpected<Error>(channels.error());
    }
    return readRanges(command).map([&](std::vector<builder::ValueRange> ranges) {
        return builder::PictureOptions{*height, *channels, std::move(ranges)};
    });
}

Result<builder::ScoreOptions> readScores(const Arguments& command)
{
    constexpr Word<const char*> layouts[]
        = {{"tnk", "tnk"}, {"tkn", "tkn"}, {"ntk", "ntk"}, {"nkt", "nkt"}, {"ktn", "ktn"}, {"knt", "knt"}};
    constexpr Word<bool> blanks[] = {{"first", false}, {"last", true}};
    const auto layout = readWord(command, "layout", layouts);
    if (!layout) {
        return tl::unexpected<Error>(layout.error());
    }
    return readWord(command, "blank", blanks).map([&](bool blankLast) {
        return builder::ScoreOptions{*layout, blankLast, command.isSet(QStringLiteral("softmax"))};
    });
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

Result<builder::BuildOptions> readModelOptions(const Arguments& command)
{
    builder::BuildOptions options;
    options.source = QFileInfo(command.file()).fileName().toStdString();
    const auto put = [](auto& place) { return [&place](auto value) { place = std::move(value); }; };
    return readWidths(command)
        .map(put(options.widths))
        .and_then([&] { return readPicture(command).map(put(options.picture)); })
        .and_then([&] { return readScores(command).map(put(options.scores)); })
        .map([&] { return options; });
}

bool isLayoutGiven(const Arguments& command)
{
    return command.isSet(layoutOption);
}

} // namespace scribo::tool
