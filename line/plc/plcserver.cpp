#include "plc/plcserver.h"

#include "plc/plcworker.h"

#include <utility>

namespace scribo::line {

PlcServer::PlcServer(PlcOptions options)
    : options(std::move(options))
{
}

PlcServer::~PlcServer()
{
    stop();
}

void PlcServer::start(LineCommands& commands)
{
    stop();
    std::shared_ptr<PlcWorker> started;
    thread.call([&] { started = std::make_shared<PlcWorker>(options, commands); });
    EngineStatus status;
    {
        const std::lock_guard lock(mutex);
        worker = started;
        status = lastStatus;
    }
    thread.call([&] { started->showStatus(status); });
    thread.call([&] { started->listen(); });
    thread.call([&] { started.reset(); });
}

void PlcServer::stop()
{
    std::shared_ptr<PlcWorker> ended;
    {
        const std::lock_guard lock(mutex);
        ended.swap(worker);
    }
    if (ended) {
        thread.call([&] { ended.reset(); });
    }
}

void PlcServer::deliver(const Verdict& verdict)
{
    const std::lock_guard lock(mutex);
    if (worker) {
        thread.post([worker = worker, verdict] { worker->showVerdict(verdict); });
    }
}

void PlcServer::statusChanged(const EngineStatus& status)
{
    const std::lock_guard lock(mutex);
    lastStatus = status;
    if (worker) {
        thread.post([worker = worker, status] { worker->showStatus(status); });
    }
}

QString PlcServer::fault() const
{
    const std::lock_guard lock(mutex);
    return worker ? worker->fault() : QString();
}

bool PlcServer::isListening() const
{
    const std::lock_guard lock(mutex);
    return worker && worker->isListening();
}

} // namespace scribo::line
