#include "engine/lineengine.h"

#include <QLoggingCategory>

#include <exception>
#include <utility>

namespace scribo::line {

namespace {

Q_LOGGING_CATEGORY(log, "scribo.line")

/// How long a thread waits for work, or a free source for a picture, before it looks after other things.
constexpr std::chrono::milliseconds idleWait{200};

Reason reasonOf(CaptureFault fault)
{
    switch (fault) {
    case CaptureFault::timeout:
        return Reason::noPicture;
    case CaptureFault::incomplete:
        return Reason::incompletePicture;
    case CaptureFault::lost:
        return Reason::cameraLost;
    case CaptureFault::ended:
        return Reason::sourceEnded;
    case CaptureFault::interrupted:
        return Reason::stopped;
    }
    return Reason::internalFault;
}

void take(const Judgement& judgement, const Frame& frame, Verdict* verdict)
{
    verdict->isOk = judgement.isOk;
    verdict->reason = judgement.isOk ? Reason::none : judgement.reason;
    verdict->reasonText = judgement.isOk ? QString() : judgement.reasonText;
    verdict->readings = judgement.readings;
    verdict->processMilliseconds = judgement.processMilliseconds;
    verdict->picture = judgement.picture ? judgement.picture : std::make_shared<const cv::Mat>(frame.picture);
}

} // namespace

LineEngine::LineEngine(Options options, std::unique_ptr<PictureSource> source, std::vector<VerdictSink*> sinks)
    : options(std::move(options))
    , source(std::move(source))
    , sinks(std::move(sinks))
    , sequencer(this->options.sequencing, [this](const Verdict& verdict) { emitVerdict(verdict); })
{
}

LineEngine::~LineEngine()
{
    stop();
}

void LineEngine::start()
{
    if (captureThread.joinable()) {
        return;
    }
    isRunning = true;
    hasEnded = false;
    toCapture.reopen();
    toJudge.reopen();
    judgeThread = std::thread([this] { judgeAll(); });
    captureThread = std::thread([this] {
        source->open(options.mode);
        options.mode == PictureSource::Mode::free ? captureFree() : captureTriggered();
        source->close();
    });
    tellStatus();
}

void LineEngine::stop()
{
    if (!captureThread.joinable()) {
        return;
    }
    isRunning = false;
    source->interrupt();
    sequencer.stopPending();
    toCapture.close();
    captureThread.join();
    toJudge.close();
    judgeThread.join();
    sequencer.stopPending();
    tellStatus();
}

void LineEngine::setJobs(const JobSet& jobs)
{
    {
        const std::lock_guard lock(mutex);
        const int number = job ? job->identity().number : 0;
        this->jobs = jobs;
        job = jobs.value(number, nullptr);
    }
    tellStatus();
}

void LineEngine::resetCounts()
{
    {
        const std::lock_guard lock(mutex);
        okCount = 0;
        ngCount = 0;
    }
    tellStatus();
}

std::uint64_t LineEngine::trigger()
{
    auto [item, accepted] = begin();
    const std::uint64_t sequence = item.draft.sequence;
    if (accepted) {
        toCapture.push(std::move(item));
    }
    tellStatus();
    return sequence;
}

Result<void> LineEngine::selectJob(int number)
{
    std::shared_ptr<ItemJudge> found;
    {
        const std::lock_guard lock(mutex);
        found = jobs.value(number, nullptr);
    }
    return select(found, QStringLiteral("number %1").arg(number));
}

Result<void> LineEngine::selectJob(const QString& name)
{
    std::shared_ptr<ItemJudge> found;
    {
        const std::lock_guard lock(mutex);
        for (const auto& candidate : std::as_const(jobs)) {
            if (candidate->identity().name == name) {
                found = candidate;
            }
        }
    }
    return select(found, QStringLiteral("name \"%1\"").arg(name));
}

Result<void> LineEngine::select(const std::shared_ptr<ItemJudge>& job, const QString& wanted)
{
    if (!job) {
        return failure(QStringLiteral("there is no job of %1").arg(wanted).toStdString());
    }
    {
        const std::lock_guard lock(mutex);
        this->job = job;
    }
    tellStatus();
    return {};
}

void LineEngine::setLot(const QString& lot)
{
    const std::lock_guard lock(mutex);
    this->lot = lot;
}

void LineEngine::setCounter(std::int64_t counter)
{
    const std::lock_guard lock(mutex);
    this->counter = counter;
}

EngineStatus LineEngine::status() const
{
    const std::size_t waiting = sequencer.pendingCount();
    EngineStatus status;
    status.lastSequence = sequencer.lastSequence();
    const std::lock_guard lock(mutex);
    status.okCount = okCount;
    status.ngCount = ngCount;
    if (!sourceFault.isEmpty()) {
        status.faults.append(sourceFault);
    }
    if (job) {
        status.job = job->identity().name;
        status.jobNumber = job->identity().number;
    } else {
        status.faults.append(QStringLiteral("no job is chosen"));
    }
    if (!isRunning) {
        status.faults.append(QStringLiteral("the engine does not run"));
    }
    status.state = waiting > 0 ? EngineState::busy : EngineState::ready;
    if (!status.faults.isEmpty()) {
        status.state = EngineState::fault;
    }
    return status;
}

bool LineEngine::isFinished() const
{
    return hasEnded && sequencer.pendingCount() == 0;
}

/// Binds a trigger to what holds now. The lock is kept until it has its number, so that numbers follow changes.
std::pair<LineEngine::Item, bool> LineEngine::begin()
{
    Item item;
    const std::lock_guard lock(mutex);
    item.context = {options.now(), lot, counter};
    item.draft.takenAt = item.context.at.toUTC();
    item.job = job;
    if (job) {
        const JobIdentity& identity = job->identity();
        item.draft.job = identity.name;
        item.draft.jobNumber = identity.number;
        item.draft.jobHash = identity.jobHash;
        item.draft.modelHash = identity.modelHash;
    }
    const Sequencer::Ticket ticket = sequencer.begin(item.draft);
    item.draft.sequence = ticket.sequence;
    return {std::move(item), ticket.accepted};
}

// On the capture thread

void LineEngine::captureTriggered()
{
    while (isRunning) {
        std::optional<Item> item = toCapture.pop(idleWait);
        if (!item) {
            setSourceFault(source->watch());
            continue;
        }
        auto frame = takeFor(item->job, options.sequencing.deadline);
        if (frame) {
            item->frame = std::move(*frame);
            item->draft.takenAt = item->frame.takenAt;
            toJudge.push(std::move(*item));
        } else {
            refuse(*item, frame.error());
        }
    }
}

void LineEngine::captureFree()
{
    while (isRunning) {
        std::shared_ptr<ItemJudge> current;
        {
            const std::lock_guard lock(mutex);
            current = job;
        }
        auto frame = takeFor(current, idleWait);
        const bool isItem = frame || frame.error().fault == CaptureFault::incomplete;
        if (!isItem) {
            if (frame.error().fault == CaptureFault::ended) {
                break;
            }
            continue; // no part has passed that anybody knows of
        }
        auto [item, accepted] = begin();
        if (!frame) {
            refuse(item, frame.error());
        } else if (accepted) {
            item.frame = std::move(*frame);
            item.draft.takenAt = item.frame.takenAt;
            toJudge.push(std::move(item));
        }
        tellStatus();
    }
    hasEnded = true;
}

tl::expected<Frame, CaptureError> LineEngine::takeFor(
    const std::shared_ptr<ItemJudge>& job, std::chrono::milliseconds timeout)
{
    try {
        if (job && configuredFor != job) {
            if (const Result<void> done = source->configure(job->sourceSettings()); !done) {
                return tl::unexpected(CaptureError{CaptureFault::lost, QString::fromStdString(done.error().message)});
            }
            configuredFor = job;
        }
        auto frame = source->take(timeout);
        const bool isLost = !frame && frame.error().fault == CaptureFault::lost;
        setSourceFault(isLost ? frame.error().message : QString());
        return frame;
    } catch (const std::exception& error) {
        qCCritical(log) << "the source failed:" << error.what();
    } catch (...) {
        qCCritical(log) << "the source failed";
    }
    return tl::unexpected(CaptureError{CaptureFault::lost, QStringLiteral("the source failed: see the log")});
}

void LineEngine::refuse(const Item& item, const CaptureError& error)
{
    Verdict verdict = item.draft;
    verdict.reason = reasonOf(error.fault);
    verdict.reasonText = error.message;
    sequencer.complete(std::move(verdict));
}

// On the judging thread

void LineEngine::judgeAll()
{
    while (!toJudge.isDone()) {
        std::optional<Item> item = toJudge.pop(idleWait);
        if (item && isRunning) { // else it has its verdict
            sequencer.complete(judged(*item));
        }
    }
}

Verdict LineEngine::judged(Item& item)
{
    Verdict verdict = item.draft;
    verdict.pictureName = item.frame.name;
    if (!item.job) {
        verdict.reason = Reason::noJob;
        verdict.reasonText = QStringLiteral("no job is chosen");
        return verdict;
    }
    try {
        take(item.job->judge(item.frame, item.context), item.frame, &verdict);
        return verdict;
    } catch (const std::exception& error) {
        qCCritical(log) << "an item could not be judged:" << error.what();
    } catch (...) {
        qCCritical(log) << "an item could not be judged";
    }
    verdict.isOk = false;
    verdict.reason = Reason::internalFault;
    verdict.reasonText = QStringLiteral("the item could not be judged: see the log");
    return verdict;
}

// On any thread

void LineEngine::emitVerdict(const Verdict& verdict)
{
    {
        const std::lock_guard lock(mutex);
        ++(verdict.isOk ? okCount : ngCount);
    }
    {
        const std::lock_guard order(telling);
        for (VerdictSink* const sink : sinks) {
            sink->deliver(verdict);
        }
    }
    tellStatus();
}

void LineEngine::setSourceFault(const QString& fault)
{
    {
        const std::lock_guard lock(mutex);
        if (sourceFault == fault) {
            return;
        }
        sourceFault = fault;
    }
    tellStatus();
}

void LineEngine::tellStatus()
{
    const std::lock_guard order(telling);
    const EngineStatus now = status();
    for (VerdictSink* const sink : sinks) {
        sink->statusChanged(now);
    }
}

} // namespace scribo::line
