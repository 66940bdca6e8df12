#pragma once

#include "core/linecommands.h"

#include <QStringList>

#include <mutex>

namespace scribo::test {

/// Keeps what is asked of the engine. Knows job 7 and the job "carton".
class AskedCommands : public line::LineCommands
{
public:
    std::uint64_t trigger() override
    {
        const std::lock_guard lock(mutex);
        asked.append(QStringLiteral("trigger"));
        return ++sequence;
    }
    Result<void> selectJob(int number) override
    {
        const std::lock_guard lock(mutex);
        asked.append(QStringLiteral("job %1").arg(number));
        return number == 7 ? Result<void>() : failure("there is no such job");
    }
    Result<void> selectJob(const QString& name) override
    {
        const std::lock_guard lock(mutex);
        asked.append(QStringLiteral("job ") + name);
        return name == QStringLiteral("carton") ? Result<void>() : failure("there is no such job");
    }
    void setLot(const QString& lot) override
    {
        const std::lock_guard lock(mutex);
        asked.append(QStringLiteral("lot ") + lot);
    }
    void setCounter(std::int64_t counter) override
    {
        const std::lock_guard lock(mutex);
        asked.append(QStringLiteral("counter %1").arg(counter));
    }

    QStringList all() const
    {
        const std::lock_guard lock(mutex);
        return asked;
    }

private:
    mutable std::mutex mutex;
    QStringList asked;
    std::uint64_t sequence = 100;
};

} // namespace scribo::test
