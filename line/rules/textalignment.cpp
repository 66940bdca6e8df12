#include "rules/textalignment.h"

#include <algorithm>

namespace scribo::line {

namespace {

/// A character of the expected text, or a match part as a whole.
struct Symbol
{
    QChar character;
    int part = 0;
    bool isMatch = false;
};

std::vector<Symbol> symbolsOf(const AcceptedText& expected)
{
    std::vector<Symbol> symbols;
    for (std::size_t part = 0; part < expected.parts.size(); ++part) {
        const int number = static_cast<int>(part);
        if (expected.parts[part].kind == PartKind::match) {
            symbols.push_back({QChar(), number, true});
            continue;
        }
        for (const QChar character : expected.parts[part].text) {
            symbols.push_back({character, number, false});
        }
    }
    return symbols;
}

/// The edit distance between the expected symbols and the reading, with the way that leads to it.
class Aligner
{
public:
    Aligner(const QString& reading, const AcceptedText& expected, const CharacterRules& characters)
        : reading(reading)
        , expected(expected)
        , characters(characters)
        , symbols(symbolsOf(expected))
        , columns(reading.size() + 1)
        , costs((symbols.size() + 1) * columns)
    {
    }

    TextAlignment run()
    {
        fill();
        result.read.resize(expected.parts.size());
        result.agrees.assign(expected.parts.size(), true);
        result.cost = cost(symbolCount(), reading.size());
        walkBack();
        return std::move(result);
    }

private:
    int symbolCount() const { return static_cast<int>(symbols.size()); }
    int& cost(int symbol, int column) { return costs[static_cast<std::size_t>(symbol) * columns + column]; }
    int substitution(int symbol, int column) const
    {
        return characters.isSame(reading[column - 1], symbols[symbol - 1].character) ? 0 : 1;
    }

    void fill()
    {
        for (int column = 0; column <= reading.size(); ++column) {
            cost(0, column) = column;
        }
        for (int symbol = 1; symbol <= symbolCount(); ++symbol) {
            const int step = symbols[symbol - 1].isMatch ? 0 : 1;
            cost(symbol, 0) = cost(symbol - 1, 0) + step;
            for (int column = 1; column <= reading.size(); ++column) {
                cost(symbol, column) = step == 0
                    ? std::min(cost(symbol - 1, column), cost(symbol, column - 1))
                    : std::min({cost(symbol - 1, column - 1) + substitution(symbol, column),
                        cost(symbol - 1, column) + 1, cost(symbol, column - 1) + 1});
            }
        }
    }

    /// Back from the ends of both. Where several ways cost the same, a character is rather wrong than missing.
    void walkBack()
    {
        int symbol = symbolCount();
        int column = reading.size();
        while (symbol > 0 || column > 0) {
            if (symbol > 0 && symbols[symbol - 1].isMatch) {
                if (column > 0 && cost(symbol, column) == cost(symbol, column - 1)) {
                    result.read[symbols[symbol - 1].part].prepend(reading[--column]);
                } else {
                    --symbol;
                }
            } else if (symbol > 0 && column > 0
                && cost(symbol, column) == cost(symbol - 1, column - 1) + substitution(symbol, column)) {
                const int part = symbols[symbol - 1].part;
                if (substitution(symbol, column) != 0) {
                    result.agrees[part] = false;
                }
                result.read[part].prepend(reading[--column]);
                --symbol;
            } else if (symbol > 0 && cost(symbol, column) == cost(symbol - 1, column) + 1) {
                result.agrees[symbols[--symbol].part] = false;
            } else {
                takeExtra(symbol, reading[--column]);
            }
        }
    }

    /// A character that is too many, after `symbol` symbols: it goes to the part round it. Between two parts it goes
    /// to one that is not plain text, as that is what a printer gets wrong.
    void takeExtra(int symbol, QChar character)
    {
        if (symbol == 0) {
            result.before.prepend(character);
            return;
        }
        if (symbol == symbolCount()) {
            result.after.prepend(character);
            return;
        }
        const int left = symbols[symbol - 1].part;
        const int right = symbols[symbol].part;
        const bool goesRight = expected.parts[left].kind == PartKind::text && !symbols[symbol].isMatch;
        const int part = goesRight ? right : left;
        result.read[part].prepend(character);
        result.agrees[part] = false;
    }

    const QString& reading;
    const AcceptedText& expected;
    const CharacterRules& characters;
    const std::vector<Symbol> symbols;
    const int columns;
    std::vector<int> costs;
    TextAlignment result;
};

} // namespace

TextAlignment alignText(const QString& reading, const AcceptedText& expected, const CharacterRules& characters)
{
    return Aligner(reading, expected, characters).run();
}

} // namespace scribo::line
