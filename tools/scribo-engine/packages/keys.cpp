#include "keys.h"

#include "filebytes.h"
#include "resulttext.h"

#include <QVector>

namespace scribo::tool {

namespace {

/// Adds one character; what does not fit into a code unit is replaced.
void addKey(uint character, Keys* keys)
{
    if (QChar::requiresSurrogates(character)) {
        keys->notes << QStringLiteral("key %1, '%2', lies beyond U+FFFF and reads as '%3'")
                           .arg(keys->alphabet.size() + 1)
                           .arg(QString::fromUcs4(&character, 1))
                           .arg(QChar(QChar::ReplacementCharacter));
        character = QChar::ReplacementCharacter;
    }
    keys->alphabet += QChar(character);
}

/// The lines of `text`, whatever they end with.
QStringList linesOf(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (text.endsWith(QLatin1Char('\n'))) {
        text.chop(1);
    }
    return text.split(QLatin1Char('\n'));
}

} // namespace

Result<Keys> readKeys(const QString& path)
{
    const Result<FileBytes> file = FileBytes::read(path);
    if (!file) {
        return tl::unexpected<Error>(file.error());
    }
    QByteArray bytes(static_cast<const char*>(file->data()), static_cast<int>(file->size()));
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        bytes.remove(0, 3);
    }
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() != bytes) {
        return failure("this is not text in UTF-8");
    }
    Keys keys;
    const QStringList lines = linesOf(text);
    for (int i = 0; i < lines.size(); ++i) {
        const QVector<uint> characters = lines[i].toUcs4();
        if (characters.isEmpty()) {
            return failure(lines.size() == 1 ? QStringLiteral("there are no characters in it")
                                             : QStringLiteral("line %1 is empty").arg(i + 1));
        }
        if (characters.size() > 1 && lines.size() > 1) {
            return failure(QStringLiteral("line %1 holds more than one character: '%2'").arg(i + 1).arg(lines[i]));
        }
        for (uint character : characters) {
            addKey(character, &keys);
        }
    }
    return keys;
}

} // namespace scribo::tool
