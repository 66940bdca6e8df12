#pragma once

#include "core/linecommands.h"
#include "core/picturesource.h"
#include "core/verdictsink.h"
#include "engine/itemjudge.h"
#include "engine/sequencer.h"
#include "engine/workqueue.h"

#include <QMap>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace scribo::line {

/// The jobs that may be chosen, by number. Their models are loaded.
using JobSet = QMap<int, std::shared_ptr<ItemJudge>>;

/// Takes each trigger through source, job and sinks: one verdict a trigger, in order, in time.
///
///     trigger() ──► capture thread: source ──► judging thread: job ──► sequencer ──► sinks
///
/// A trigger is bound to the job, the lot and the counter that hold when it comes, so a change never falls into an
/// item. The picture is taken while the one before is still judged. Whatever fails gives NG with its reason.
class LineEngine : public LineCommands
{
public:
    struct Options
    {
        PictureSource::Mode mode = PictureSource::Mode::triggered; ///< free: the source's pictures are the triggers
        Sequencer::Options sequencing;
        std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc; ///< the time in UTC
    };

    /// `sinks` outlive the engine. Nothing runs before start().
    LineEngine(Options options, std::unique_ptr<PictureSource> source, std::vector<VerdictSink*> sinks);
    /// Stops.
    ~LineEngine() override;

    void start();
    /// Ends both threads. Pending triggers get NG with Reason::stopped; waits for a picture that is being judged.
    void stop();

    /// Replaces the jobs, between two items. The chosen job stays chosen by its number if there is still one.
    void setJobs(const JobSet& jobs);
    /// Sets the counts of OK and NG to 0.
    void resetCounts();

    std::uint64_t trigger() override;
    Result<void> selectJob(int number) override;
    Result<void> selectJob(const QString& name) override;
    void setLot(const QString& lot) override;
    void setCounter(std::int64_t counter) override;

    EngineStatus status() const;
    /// In free mode: the source has no more pictures and all verdicts are out. The service ends then.
    bool isFinished() const;
    const Sequencer& sequence() const { return sequencer; }

private:
    /// A trigger on its way.
    struct Item
    {
        Verdict draft; ///< sequence number, time and job
        ItemContext context;
        std::shared_ptr<ItemJudge> job;
        Frame frame;
    };

    Result<void> select(const std::shared_ptr<ItemJudge>& job, const QString& wanted);
    std::pair<Item, bool> begin();
    void captureTriggered();
    void captureFree();
    tl::expected<Frame, CaptureError> takeFor(const std::shared_ptr<ItemJudge>& job, std::chrono::milliseconds timeout);
    void refuse(const Item& item, const CaptureError& error);
    void judgeAll();
    Verdict judged(Item& item);
    void emitVerdict(const Verdict& verdict);
    void setSourceFault(const QString& fault);
    void tellStatus();

    const Options options;
    const std::unique_ptr<PictureSource> source;
    const std::vector<VerdictSink*> sinks;

    mutable std::mutex mutex; ///< guards what follows, up to the queues
    JobSet jobs;
    std::shared_ptr<ItemJudge> job; ///< for the next trigger; null: none is chosen
    QString lot;
    std::optional<std::int64_t> counter;
    QString sourceFault;
    std::uint64_t okCount = 0;
    std::uint64_t ngCount = 0;

    std::shared_ptr<ItemJudge> configuredFor; ///< the job that the source is set up for; capture thread
    WorkQueue<Item> toCapture;
    WorkQueue<Item> toJudge;
    std::atomic<bool> isRunning{false};
    std::atomic<bool> hasEnded{false};
    std::mutex telling; ///< one call of a sink at a time
    Sequencer sequencer; ///< behind all that its emission uses
    std::thread captureThread;
    std::thread judgeThread;
};

} // namespace scribo::line
