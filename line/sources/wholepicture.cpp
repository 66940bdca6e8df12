#include "sources/wholepicture.h"

#include <QFile>
#include <QtEndian>

namespace scribo::line {

namespace {

constexpr int headBytes = 8;
constexpr int tailBytes = 64; // some writers put zeros behind the end

} // namespace

bool isWholePicture(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray head = file.read(headBytes);
    file.seek(qMax<qint64>(0, file.size() - tailBytes));
    const QByteArray tail = file.read(tailBytes);
    if (head.isEmpty()) {
        return false;
    }
    if (head.startsWith("\x89PNG")) {
        return tail.contains("IEND");
    }
    if (head.startsWith("\xff\xd8")) {
        return tail.contains("\xff\xd9");
    }
    if (head.startsWith("BM") && head.size() >= 6) {
        return file.size() >= qFromLittleEndian<quint32>(head.constData() + 2);
    }
    return true;
}

} // namespace scribo::line
