#pragma once

#include "result.h"

#include <QString>

#include <cstdint>

namespace scribo::line {

/// A small text file that remembers which sequence numbers may have been used, so that none is used twice, not even
/// after a crash.
class SequenceStore
{
public:
    explicit SequenceStore(QString path);

    /// The first number that was never reserved; 1 when the file is not there. Fails when the file cannot be read or
    /// holds no number: somebody has to decide then, as numbers could repeat.
    Result<std::uint64_t> load() const;

    /// Reserves all numbers below `end`; returns when that is on the disk. Fails when the file cannot be written.
    Result<void> reserveBelow(std::uint64_t end) const;

private:
    const QString path;
};

} // namespace scribo::line
