#include "files/outputfile.h"

#include "resulttext.h"
#include "wholefile.h"

namespace scribo::host {

tl::unexpected<Error> unwritable(const QString& path, const QString& reason)
{
    return failure(path + QStringLiteral(": cannot be written: ") + reason);
}

Result<void> saveOutput(const QString& path, const QByteArray& bytes)
{
    if (!isReplaceable(path)) {
        return failure(path + QStringLiteral(": is no file that could be replaced"));
    }
    const Result<void> written = writeWholeFile(path, bytes);
    if (!written) {
        return unwritable(path, textOf(written.error()));
    }
    return {};
}

} // namespace scribo::host
