#include "outputfile.h"

#include "resulttext.h"
#include "wholefile.h"

tl::unexpected<scribo::Error> unwritable(const QString& path, const QString& reason)
{
    return scribo::failure(path + QStringLiteral(": cannot be written: ") + reason);
}

scribo::Result<void> saveOutput(const QString& path, const QByteArray& bytes)
{
    if (!scribo::isReplaceable(path)) {
        return scribo::failure(path + QStringLiteral(": is no file that could be replaced"));
    }
    const scribo::Result<void> written = scribo::writeWholeFile(path, bytes);
    if (!written) {
        return unwritable(path, scribo::textOf(written.error()));
    }
    return {};
}
