#include "engine/lineengine.h"

#include "line/engine/collectingsink.h"
#include "line/engine/scriptedsource.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace scribo::line {
namespace {

using namespace std::chrono_literals;
using test::CollectingSink;
using test::ScriptedSource;

/// Says OK of every picture and writes its name, the lot and the counter as the text that was read.
class EchoJudge : public ItemJudge
{
public:
    EchoJudge(int number, const QString& name)
    {
        who.number = number;
        who.name = name;
        who.jobHash = name + QStringLiteral("-hash");
        who.modelHash = QStringLiteral("model-hash");
        settings[QStringLiteral("gain")] = number;
    }

    const JobIdentity& identity() const override { return who; }
    const QJsonObject& sourceSettings() const override { return settings; }
    Judgement judge(const Frame& frame, const ItemContext& context) override
    {
        if (before) {
            before();
        }
        Judgement judgement;
        judgement.isOk = true;
        judgement.reason = Reason::none;
        RegionReading reading;
        reading.text = QStringLiteral("%1 %2 %3").arg(frame.name, context.lot).arg(context.counter.value_or(0));
        judgement.readings.append(reading);
        judgement.processMilliseconds = 1.5;
        return judgement;
    }

    std::function<void()> before;

private:
    JobIdentity who;
    QJsonObject settings;
};

class Engine : public testing::Test
{
protected:
    Engine()
    {
        options.sequencing.deadline = 5s;
        jobs[1] = first;
        jobs[2] = second;
    }

    LineEngine& start()
    {
        auto made = std::make_unique<ScriptedSource>();
        source = made.get();
        engine = std::make_unique<LineEngine>(options, std::move(made), std::vector<VerdictSink*>{&sink});
        engine->setJobs(jobs);
        EXPECT_TRUE(engine->selectJob(1));
        engine->start();
        return *engine;
    }

    LineEngine::Options options;
    std::shared_ptr<EchoJudge> first = std::make_shared<EchoJudge>(1, QStringLiteral("carton"));
    std::shared_ptr<EchoJudge> second = std::make_shared<EchoJudge>(2, QStringLiteral("can"));
    JobSet jobs;
    CollectingSink sink;
    ScriptedSource* source = nullptr; ///< the engine's
    std::unique_ptr<LineEngine> engine;
};

TEST_F(Engine, AnswersATriggerWithTheVerdictOfItsPicture)
{
    start();
    source->show(7);
    EXPECT_EQ(engine->trigger(), 1U);

    const auto verdicts = sink.await(1);
    ASSERT_EQ(verdicts.size(), 1U);
    const Verdict& verdict = verdicts[0];
    EXPECT_EQ(verdict.sequence, 1U);
    EXPECT_TRUE(verdict.isOk);
    EXPECT_EQ(verdict.reason, Reason::none);
    EXPECT_EQ(verdict.job, QStringLiteral("carton"));
    EXPECT_EQ(verdict.jobNumber, 1);
    EXPECT_EQ(verdict.jobHash, QStringLiteral("carton-hash"));
    EXPECT_EQ(verdict.modelHash, QStringLiteral("model-hash"));
    EXPECT_EQ(verdict.pictureName, QStringLiteral("7"));
    EXPECT_EQ(joinedTexts(verdict), QStringLiteral("7  0"));
    EXPECT_EQ(verdict.processMilliseconds, 1.5);
    EXPECT_EQ(verdict.takenAt.timeSpec(), Qt::UTC);
    ASSERT_TRUE(verdict.picture);
    EXPECT_EQ(verdict.picture->at<uchar>(0, 0), 7);
    EXPECT_EQ(source->openedAs, PictureSource::Mode::triggered);
}

TEST_F(Engine, NumbersItemsFromTheGivenNumberOn)
{
    options.sequencing.firstSequence = 5001;
    start();
    EXPECT_EQ(engine->status().lastSequence, 5000U);
    source->show(1);
    EXPECT_EQ(engine->trigger(), 5001U);
    EXPECT_EQ(sink.await(1).at(0).sequence, 5001U);
}

TEST_F(Engine, GivesEveryFaultOfTheSourceAsItsReason)
{
    const struct
    {
        CaptureFault fault;
        Reason reason;
    } cases[] = {{CaptureFault::timeout, Reason::noPicture}, {CaptureFault::incomplete, Reason::incompletePicture},
        {CaptureFault::lost, Reason::cameraLost}, {CaptureFault::ended, Reason::sourceEnded},
        {CaptureFault::interrupted, Reason::stopped}};
    start();
    for (const auto& one : cases) {
        source->fail(one.fault, QStringLiteral("because"));
        engine->trigger();
    }
    const auto verdicts = sink.await(std::size(cases));
    ASSERT_EQ(verdicts.size(), std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_FALSE(verdicts[i].isOk);
        EXPECT_EQ(verdicts[i].reason, cases[i].reason);
        EXPECT_EQ(verdicts[i].reasonText, QStringLiteral("because"));
        EXPECT_EQ(verdicts[i].job, QStringLiteral("carton"));
    }
}

TEST_F(Engine, GivesNgWhenThePictureComesTooLate)
{
    options.sequencing.deadline = 50ms;
    start();
    source->add([this]() -> ScriptedSource::Taken {
        sink.await(1);
        Frame frame;
        frame.picture = cv::Mat(4, 4, CV_8UC1, cv::Scalar(1));
        return frame;
    });
    engine->trigger();
    EXPECT_EQ(sink.await(1).at(0).reason, Reason::deadlinePassed);

    source->show(2);
    engine->trigger();
    const auto verdicts = sink.await(2);
    ASSERT_EQ(verdicts.size(), 2U);
    EXPECT_TRUE(verdicts[1].isOk) << "the late picture must not answer the next trigger";
    EXPECT_EQ(verdicts[1].pictureName, QStringLiteral("2"));
}

TEST_F(Engine, GivesNgWhenTheJudgementComesTooLate)
{
    options.sequencing.deadline = 50ms;
    first->before = [this] { sink.await(1); };
    start();
    source->show(1);
    engine->trigger();
    EXPECT_EQ(sink.await(1).at(0).reason, Reason::deadlinePassed);
    engine->stop();
    EXPECT_EQ(sink.await(1).size(), 1U);
    EXPECT_EQ(engine->sequence().lateCount(), 1U);
}

TEST_F(Engine, GivesNgWhenJudgingThrows)
{
    start();
    for (const bool isStandard : {true, false}) {
        first->before = [isStandard] {
            if (isStandard) {
                throw std::runtime_error("broken");
            }
            throw 5;
        };
        source->show(1);
        engine->trigger();
        const auto verdicts = sink.await(isStandard ? 1 : 2);
        EXPECT_FALSE(verdicts.back().isOk);
        EXPECT_EQ(verdicts.back().reason, Reason::internalFault);
        EXPECT_EQ(verdicts.back().reasonText, QStringLiteral("the item could not be judged: see the log"));
    }
}

TEST_F(Engine, GivesNgWhenTheSourceThrows)
{
    start();
    source->add([]() -> ScriptedSource::Taken { throw std::runtime_error("broken"); });
    source->add([]() -> ScriptedSource::Taken { throw 5; });
    engine->trigger();
    engine->trigger();
    for (const Verdict& verdict : sink.await(2)) {
        EXPECT_EQ(verdict.reason, Reason::cameraLost);
        EXPECT_EQ(verdict.reasonText, QStringLiteral("the source failed: see the log"));
    }
}

TEST_F(Engine, GivesNgWithoutAJob)
{
    start();
    engine->setJobs({});
    source->show(1);
    engine->trigger();
    const Verdict verdict = sink.await(1).at(0);
    EXPECT_EQ(verdict.reason, Reason::noJob);
    EXPECT_EQ(verdict.reasonText, QStringLiteral("no job is chosen"));
    EXPECT_EQ(verdict.jobNumber, 0);
    EXPECT_TRUE(engine->status().faults.contains(QStringLiteral("no job is chosen")));
}

TEST_F(Engine, GivesNgWhenMoreTriggersComeThanCanWait)
{
    options.sequencing.mostPending = 2;
    start();
    engine->trigger();
    engine->trigger();
    engine->trigger();
    source->show(1);
    source->show(2);
    const auto verdicts = sink.await(3);
    ASSERT_EQ(verdicts.size(), 3U);
    EXPECT_TRUE(verdicts[0].isOk);
    EXPECT_TRUE(verdicts[1].isOk);
    EXPECT_EQ(verdicts[2].reason, Reason::overrun);
}

TEST_F(Engine, ChangesTheJobBetweenTwoTriggersOnly)
{
    start();
    engine->trigger();
    ASSERT_TRUE(engine->selectJob(2));
    engine->trigger();
    ASSERT_TRUE(engine->selectJob(QStringLiteral("carton")));
    engine->trigger();
    for (int grey : {1, 2, 3}) {
        source->show(grey);
    }
    const auto verdicts = sink.await(3);
    ASSERT_EQ(verdicts.size(), 3U);
    EXPECT_EQ(verdicts[0].job, QStringLiteral("carton"));
    EXPECT_EQ(verdicts[1].job, QStringLiteral("can"));
    EXPECT_EQ(verdicts[2].job, QStringLiteral("carton"));
    const auto configured = source->configurations();
    ASSERT_EQ(configured.size(), 3U);
    EXPECT_EQ(configured[1][QStringLiteral("gain")].toInt(), 2);
}

TEST_F(Engine, SetsTheSourceUpOncePerJob)
{
    start();
    for (int i = 0; i < 3; ++i) {
        source->show(i);
        engine->trigger();
    }
    sink.await(3);
    EXPECT_EQ(source->configurations().size(), 1U);
}

TEST_F(Engine, GivesNgWhileTheSourceCannotBeSetUp)
{
    start();
    source->configuring = [] { return failure("the exposure is out of range"); };
    engine->trigger();
    const Verdict verdict = sink.await(1).at(0);
    EXPECT_EQ(verdict.reason, Reason::cameraLost);
    EXPECT_EQ(verdict.reasonText, QStringLiteral("the exposure is out of range"));
}

TEST_F(Engine, KeepsTheJobWhenTheWantedOneIsNotThere)
{
    start();
    const auto byNumber = engine->selectJob(9);
    ASSERT_FALSE(byNumber);
    EXPECT_EQ(byNumber.error().message, "there is no job of number 9");
    const auto byName = engine->selectJob(QStringLiteral("box"));
    ASSERT_FALSE(byName);
    EXPECT_EQ(byName.error().message, "there is no job of name \"box\"");
    EXPECT_EQ(engine->status().jobNumber, 1);
}

TEST_F(Engine, KeepsTheChosenNumberWhenJobsAreReplaced)
{
    start();
    ASSERT_TRUE(engine->selectJob(2));
    jobs[2] = std::make_shared<EchoJudge>(2, QStringLiteral("tin"));
    engine->setJobs(jobs);
    EXPECT_EQ(engine->status().job, QStringLiteral("tin"));
}

TEST_F(Engine, BindsLotAndCounterToTheTrigger)
{
    start();
    engine->setLot(QStringLiteral("A1"));
    engine->setCounter(41);
    engine->trigger();
    engine->setLot(QStringLiteral("B2"));
    engine->setCounter(42);
    engine->trigger();
    source->show(1);
    source->show(2);
    const auto verdicts = sink.await(2);
    EXPECT_EQ(joinedTexts(verdicts.at(0)), QStringLiteral("1 A1 41"));
    EXPECT_EQ(joinedTexts(verdicts.at(1)), QStringLiteral("2 B2 42"));
}

TEST_F(Engine, CountsVerdictsAndTellsItsStatus)
{
    start();
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) { return status.state == EngineState::ready; }));
    engine->trigger();
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) { return status.state == EngineState::busy; }));
    source->show(1);
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) { return status.okCount == 1; }));
    source->fail(CaptureFault::timeout, QStringLiteral("no picture came"));
    engine->trigger();
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) {
        return status.ngCount == 1 && status.lastSequence == 2 && status.state == EngineState::ready;
    }));
    engine->resetCounts();
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) { return status.okCount + status.ngCount == 0; }));
}

TEST_F(Engine, IsAtFaultWhileTheCameraIsGone)
{
    start();
    source->setFault(QStringLiteral("camera 3 is not there"));
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) {
        return status.state == EngineState::fault && status.faults.contains(QStringLiteral("camera 3 is not there"));
    }));
    source->setFault(QString());
    EXPECT_TRUE(sink.awaitStatus([](const EngineStatus& status) { return status.state == EngineState::ready; }));
}

TEST_F(Engine, TakesEachPictureOfAFreeSourceForATrigger)
{
    options.mode = PictureSource::Mode::free;
    start();
    EXPECT_FALSE(engine->isFinished());
    source->show(1);
    source->fail(CaptureFault::lost, QStringLiteral("gone"));
    source->fail(CaptureFault::timeout, QStringLiteral("nothing"));
    source->fail(CaptureFault::incomplete, QStringLiteral("2 rows are missing"));
    source->show(2);
    source->fail(CaptureFault::ended, QStringLiteral("that was all"));
    const auto verdicts = sink.await(3);
    ASSERT_EQ(verdicts.size(), 3U);
    EXPECT_TRUE(verdicts[0].isOk);
    EXPECT_EQ(verdicts[1].reason, Reason::incompletePicture);
    EXPECT_EQ(verdicts[1].reasonText, QStringLiteral("2 rows are missing"));
    EXPECT_TRUE(verdicts[2].isOk);
    for (int i = 0; i < 1000 && !engine->isFinished(); ++i) {
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_TRUE(engine->isFinished());
}

TEST_F(Engine, GivesWhatIsPendingNgWhenItIsStopped)
{
    start();
    engine->trigger();
    engine->trigger();
    engine->stop();
    const auto verdicts = sink.await(2);
    ASSERT_EQ(verdicts.size(), 2U);
    EXPECT_EQ(verdicts[0].reason, Reason::stopped);
    EXPECT_EQ(verdicts[1].reason, Reason::stopped);
    EXPECT_EQ(source->closed, 1);
    EXPECT_TRUE(engine->status().faults.contains(QStringLiteral("the engine does not run")));
}

TEST_F(Engine, CanBeDestroyedWhileAnItemIsJudged)
{
    std::atomic<bool> isJudging{false};
    first->before = [&] {
        isJudging = true;
        std::this_thread::sleep_for(50ms);
    };
    start();
    source->show(1);
    engine->trigger();
    while (!isJudging) {
        std::this_thread::sleep_for(1ms);
    }
    engine.reset();
    EXPECT_EQ(sink.await(1).size(), 1U);
}

TEST_F(Engine, AnswersTriggersOfManyThreadsInOrder)
{
    options.sequencing.mostPending = 10000;
    start();
    constexpr int each = 200;
    for (int i = 0; i < 4 * each; ++i) {
        source->show(i % 200);
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int k = 0; k < each; ++k) {
                engine->trigger();
                engine->setLot(QString::number(k));
                static_cast<void>(engine->selectJob(1 + (i + k) % 2));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto verdicts = sink.await(4 * each);
    ASSERT_EQ(verdicts.size(), static_cast<std::size_t>(4 * each));
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        ASSERT_EQ(verdicts[i].sequence, i + 1);
        ASSERT_TRUE(verdicts[i].isOk);
    }
}

} // namespace
} // namespace scribo::line
