#pragma once

#include "result.h"

#include <QString>

#include <cstdint>

namespace scribo::line {

/// What a PLC, a broker or a window may ask of the engine. All may be called on any thread and return at once.
/// Commands take effect in the order in which they come, between two items and never within one.
class LineCommands
{
public:
    virtual ~LineCommands() = default;

    /// Asks for one item and returns its sequence number. Its verdict comes to every sink.
    virtual std::uint64_t trigger() = 0;

    /// Takes another job for the triggers that come after. Fails, and keeps the job, when there is none of this
    /// number or name, or when it may not be used.
    virtual Result<void> selectJob(int number) = 0;
    virtual Result<void> selectJob(const QString& name) = 0;

    /// What `{lot}` and `{counter}` of expected texts stand for from the next trigger on.
    virtual void setLot(const QString& lot) = 0;
    virtual void setCounter(std::int64_t counter) = 0;
};

} // namespace scribo::line
