#include "plc/plcregisters.h"

namespace scribo::line::plc {

namespace {

constexpr quint16 lowByte = 0xff;

char asAscii(QChar character)
{
    const char16_t code = character.unicode();
    const bool isKept = code == u'\n' || (code >= u' ' && code <= u'~');
    return isKept ? static_cast<char>(code) : '?';
}

} // namespace

QVector<quint16> packText(const QString& text, int count)
{
    QVector<quint16> registers(count, 0);
    const int length = qMin(text.size(), 2 * count);
    for (int i = 0; i < length; ++i) {
        const quint16 code = static_cast<unsigned char>(asAscii(text[i]));
        registers[i / 2] |= static_cast<quint16>(i % 2 == 0 ? code << 8 : code);
    }
    return registers;
}

QString unpackText(const QVector<quint16>& registers)
{
    QString text;
    for (const quint16 pair : registers) {
        for (const int code : {pair >> 8, pair & lowByte}) {
            if (code == 0) {
                return text.trimmed();
            }
            text.append(QLatin1Char(asAscii(QChar(code))));
        }
    }
    return text.trimmed();
}

QVector<quint16> packNumber(std::uint64_t number)
{
    return {static_cast<quint16>(number & 0xffff), static_cast<quint16>(number >> 16 & 0xffff)};
}

} // namespace scribo::line::plc
