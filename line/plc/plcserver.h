#pragma once

#include "core/eventthread.h"
#include "core/linecommands.h"
#include "core/verdictsink.h"

#include <QHostAddress>
#include <QList>

#include <memory>
#include <mutex>

namespace scribo::line {

class PlcWorker;

/// Where the station answers its PLC.
struct PlcOptions
{
    QHostAddress address{QHostAddress::LocalHost}; ///< of the network card to listen on
    quint16 port = 1502; ///< 502, Modbus' own, needs a privilege
    QList<QHostAddress> allowed{QHostAddress(QHostAddress::LocalHost)}; ///< who may connect
    bool showsAllItems = false; ///< for a free-running source: each verdict shows, not only those of PLC commands
};

/// The station as a Modbus TCP server (unit 1): a PLC writes commands and reads answers. See plcregisters.h.
///
/// Works in a thread of its own. All registers of an answer change at once, between two requests of the PLC.
class PlcServer : public VerdictSink
{
public:
    explicit PlcServer(PlcOptions options);
    /// Stops.
    ~PlcServer() override;

    /// Listens and hands commands to `commands`, which must live until stop(). A port that cannot be had is a fault(),
    /// and is tried again every two seconds.
    void start(LineCommands& commands);
    /// Ends all connections; no command is handed over after it returns. deliver() may still be called.
    void stop();

    void deliver(const Verdict& verdict) override;
    void statusChanged(const EngineStatus& status) override;
    QString fault() const override;

    bool isListening() const;

private:
    const PlcOptions options;
    mutable std::mutex mutex; ///< guards what follows
    std::shared_ptr<PlcWorker> worker; ///< lives in `thread`, and is destroyed there; null: stopped
    EngineStatus lastStatus;
    EventThread thread;
};

} // namespace scribo::line
