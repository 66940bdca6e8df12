#include "core/verdict.h"

#include <QStringList>

namespace scribo::line {

QString joinedTexts(const Verdict& verdict)
{
    QStringList texts;
    for (const RegionReading& reading : verdict.readings) {
        texts.append(reading.text);
    }
    return texts.join(QLatin1Char('\n'));
}

} // namespace scribo::line
