#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

namespace scribo::line {

/// What the engine does at the moment.
enum class EngineState {
    ready, ///< waits for a trigger
    busy, ///< a trigger has no verdict yet
    fault, ///< a trigger now would get NG: no camera, or no job that can be used
};

/// What the station shows and tells about itself.
struct EngineStatus
{
    EngineState state = EngineState::fault;
    QStringList faults; ///< what is wrong, one sentence each
    QString job; ///< the job's name; empty: none
    int jobNumber = 0;
    std::uint64_t lastSequence = 0; ///< of the last trigger; 0: none yet
    std::uint64_t okCount = 0; ///< since the counters were reset
    std::uint64_t ngCount = 0;
};

} // namespace scribo::line
