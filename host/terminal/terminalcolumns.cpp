#include "terminal/terminalcolumns.h"

#include <QVector>

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <numeric>

namespace scribo::host {

namespace {

/// Makes the C library see all of Unicode in the calling thread while it lives, whatever the user's locale is.
class UnicodeLocale
{
public:
    UnicodeLocale()
        : unicode(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
        , before(uselocale(unicode))
    {
    }
    ~UnicodeLocale()
    {
        uselocale(before);
        if (unicode) {
            freelocale(unicode);
        }
    }
    UnicodeLocale(const UnicodeLocale&) = delete;
    UnicodeLocale& operator=(const UnicodeLocale&) = delete;

private:
    locale_t unicode;
    locale_t before;
};

} // namespace

int terminalColumns(const QString& text)
{
    const UnicodeLocale locale;
    const QVector<uint> characters = text.toUcs4();
    return std::accumulate(characters.begin(), characters.end(), 0, [](int sum, uint character) {
        const int width = wcwidth(static_cast<wchar_t>(character));
        return sum + (width < 0 ? 1 : width); // an unknown one is shown as a box
    });
}

QString paddedTo(int columns, const QString& text)
{
    return text + QString(std::max(columns - terminalColumns(text), 0), QLatin1Char(' '));
}

} // namespace scribo::host
