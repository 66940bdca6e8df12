#include "history/historyforwarder.h"

#include "history/historytables.h"

#include <QVariant>

#include <chrono>
#include <memory>
#include <utility>

namespace scribo::line {

namespace {

using namespace std::chrono_literals;

constexpr auto idleTime = 500ms;
constexpr auto retryTime = 2s;
constexpr int mostInABatch = 500;

Result<void> writeForwarded(SqlConnection& local, const Forwarded& arrived)
{
    auto done = local.run(
        QStringLiteral("UPDATE forwarding SET sequence = ?, number = ?"), {arrived.sequence, arrived.change});
    return done ? Result<void>() : tl::unexpected(done.error());
}

Result<std::unique_ptr<SqlConnection>> opened(const QString& place)
{
    Result<SqlConnection> connection = SqlConnection::open(place);
    if (!connection) {
        return tl::unexpected(connection.error());
    }
    if (Result<void> made = makeTables(*connection); !made) {
        return tl::unexpected(made.error());
    }
    return std::make_unique<SqlConnection>(std::move(*connection));
}

} // namespace

Result<Forwarded> readForwarded(SqlConnection& local)
{
    auto query = local.run(QStringLiteral("SELECT sequence, number FROM forwarding"));
    if (!query) {
        return tl::unexpected(query.error());
    }
    return query->next() ? Forwarded{query->value(0).toLongLong(), query->value(1).toLongLong()} : Forwarded{};
}

HistoryForwarder::HistoryForwarder(QString local, QString plant, QString station)
    : localPlace(std::move(local))
    , plantPlace(std::move(plant))
    , station(std::move(station))
    , thread([this] { run(); })
{
}

HistoryForwarder::~HistoryForwarder()
{
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
    }
    changed.notify_all();
    thread.join();
}

QString HistoryForwarder::fault() const
{
    const std::lock_guard lock(mutex);
    return problem;
}

void HistoryForwarder::run()
{
    bool goesOn = true;
    while (goesOn) {
        const Result<bool> hasMore = forwardBatch();
        {
            const std::lock_guard lock(mutex);
            problem = hasMore
                ? QString()
                : QStringLiteral("the plant's database is behind: ") + QString::fromStdString(hasMore.error().message);
        }
        if (!hasMore) {
            local.reset(); // the next try begins anew
            plant.reset();
        }
        goesOn = pause(!hasMore ? retryTime : *hasMore ? 0ms : idleTime);
    }
    local.reset();
    plant.reset();
}

/// Whether there is more.
Result<bool> HistoryForwarder::forwardBatch()
{
    if (Result<void> connected = connect(); !connected) {
        return tl::unexpected(connected.error());
    }
    Result<Forwarded> arrived = readForwarded(*local);
    if (!arrived) {
        return tl::unexpected(arrived.error());
    }
    Result<bool> items = forwardItems(&*arrived);
    if (!items) {
        return items;
    }
    const Result<bool> changes = forwardChanges(&*arrived);
    return changes ? Result<bool>(*items || *changes) : changes;
}

Result<void> HistoryForwarder::connect()
{
    for (const auto& [connection, place] : {std::pair(&local, &localPlace), std::pair(&plant, &plantPlace)}) {
        if (*connection) {
            continue;
        }
        Result<std::unique_ptr<SqlConnection>> made = opened(*place);
        if (!made) {
            return tl::unexpected(made.error());
        }
        *connection = std::move(*made);
    }
    return {};
}

Result<bool> HistoryForwarder::forwardItems(Forwarded* arrived)
{
    HistoryFilter next;
    next.station = station;
    next.aboveSequence = arrived->sequence;
    next.order = HistoryFilter::Order::bySequence;
    next.limit = mostInABatch;
    const Result<QList<HistoryRow>> rows = selectRows(*local, next);
    if (!rows) {
        return tl::unexpected(rows.error());
    }
    if (rows->isEmpty()) {
        return false;
    }
    const Result<QList<qint64>> refused = addMissingRows(*plant, *rows);
    if (!refused) {
        return tl::unexpected(refused.error());
    }
    if (!refused->isEmpty()) {
        return failure(QStringLiteral("it holds another item %1 of station %2: do two stations have this name?")
                           .arg(refused->first())
                           .arg(station)
                           .toStdString());
    }
    arrived->sequence = rows->last().sequence;
    const Result<void> noted = writeForwarded(*local, *arrived);
    return noted ? Result<bool>(rows->size() == mostInABatch) : tl::unexpected(noted.error());
}

Result<bool> HistoryForwarder::forwardChanges(Forwarded* arrived)
{
    const Result<QList<HistoryChange>> changes = selectChanges(*local, station, arrived->change);
    if (!changes) {
        return tl::unexpected(changes.error());
    }
    if (changes->isEmpty()) {
        return false;
    }
    if (Result<void> done = addMissingChanges(*plant, station, *changes); !done) {
        return tl::unexpected(done.error());
    }
    arrived->change = changes->last().number;
    const Result<void> noted = writeForwarded(*local, *arrived);
    return noted ? Result<bool>(false) : tl::unexpected(noted.error());
}

/// False: the end.
bool HistoryForwarder::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(mutex);
    return !changed.wait_for(lock, time, [this] { return isEnding; });
}

} // namespace scribo::line
