#include "engine/sequencekeeper.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace scribo::line {
namespace {

class SequenceNumbers : public testing::Test
{
protected:
    void write(const QByteArray& bytes)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    /// What a start after a crash at this moment would begin with, once it is `wanted`.
    std::uint64_t awaitNext(std::uint64_t wanted)
    {
        for (int i = 0; i < 1000 && SequenceStore(path()).load().value_or(0) != wanted; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return SequenceStore(path()).load().value_or(0);
    }

    static Verdict numbered(std::uint64_t sequence)
    {
        Verdict verdict;
        verdict.sequence = sequence;
        return verdict;
    }

    QString path() const { return folder.filePath(QStringLiteral("sequence")); }

    QTemporaryDir folder;
};

TEST_F(SequenceNumbers, StartAtOneWithoutAFile)
{
    EXPECT_EQ(SequenceStore(path()).load().value(), 1U);
}

TEST_F(SequenceNumbers, GoOnAfterThoseThatWereReserved)
{
    ASSERT_TRUE(SequenceStore(path()).reserveBelow(4321));
    EXPECT_EQ(SequenceStore(path()).load().value(), 4321U);
}

TEST_F(SequenceNumbers, AreNotGuessedFromADamagedFile)
{
    for (const char* const bytes : {"", "x", "0", "-3", "12 34", "99999999999999999999999"}) {
        write(bytes);
        const auto loaded = SequenceStore(path()).load();
        ASSERT_FALSE(loaded) << bytes;
        EXPECT_EQ(
            QString::fromStdString(loaded.error().message), path() + QStringLiteral(": holds no sequence number"));
    }
}

TEST_F(SequenceNumbers, AreNotGuessedFromAFolderInPlaceOfTheFile)
{
    ASSERT_TRUE(QDir().mkdir(path()));
    EXPECT_FALSE(SequenceStore(path()).load());
    EXPECT_FALSE(SequenceStore(path()).reserveBelow(5));
}

TEST_F(SequenceNumbers, AreReservedBeforeTheFirstIsUsed)
{
    SequenceKeeper keeper(SequenceStore(path()), 1);
    ASSERT_TRUE(keeper.start());
    EXPECT_EQ(SequenceStore(path()).load().value(), 1 + SequenceKeeper::ahead);
}

TEST_F(SequenceNumbers, CannotStartWhereNothingCanBeWritten)
{
    SequenceKeeper keeper(SequenceStore(folder.filePath(QStringLiteral("missing/sequence"))), 1);
    EXPECT_FALSE(keeper.start());
}

TEST_F(SequenceNumbers, AreReservedAheadOfThoseInUse)
{
    SequenceKeeper keeper(SequenceStore(path()), 1);
    ASSERT_TRUE(keeper.start());
    keeper.deliver(numbered(1000));
    EXPECT_EQ(SequenceStore(path()).load().value(), 2001U);
    keeper.deliver(numbered(1001));
    EXPECT_EQ(awaitNext(3002), 3002U);
    EXPECT_EQ(keeper.fault(), QString());
}

TEST_F(SequenceNumbers, SayThatTheyAreNotKeptAndAreKeptAgain)
{
    SequenceKeeper keeper(SequenceStore(path()), 1);
    ASSERT_TRUE(keeper.start());
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_TRUE(QDir().mkdir(path()));
    keeper.deliver(numbered(1500));
    for (int i = 0; i < 1000 && keeper.fault().isEmpty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_THAT(keeper.fault().toStdString(), testing::StartsWith("sequence numbers are not kept: "));

    ASSERT_TRUE(QDir().rmdir(path()));
    EXPECT_EQ(awaitNext(3501), 3501U);
    for (int i = 0; i < 1000 && !keeper.fault().isEmpty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(keeper.fault(), QString());
}

} // namespace
} // namespace scribo::line
