#pragma once

#include "core/enginestatus.h"
#include "core/verdict.h"

namespace scribo::line {

/// Where verdicts go. The engine calls a sink on its own threads, one call at a time, in the order of the sequence
/// numbers. A call must return at once, whatever is the matter with the disk or the network behind it: a sink that
/// has slow work hands it to a thread of its own. A call must not call the engine back. Nothing throws.
class VerdictSink
{
public:
    virtual ~VerdictSink() = default;

    /// Takes the verdict of one trigger. Called exactly once for each.
    virtual void deliver(const Verdict& verdict) = 0;

    /// The engine's status changed.
    virtual void statusChanged(const EngineStatus& status) = 0;

    /// What is wrong with the sink itself, for people ("the broker does not answer"); empty: nothing. Any thread.
    virtual QString fault() const = 0;
};

} // namespace scribo::line
