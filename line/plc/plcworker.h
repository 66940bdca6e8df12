#pragma once

#include "core/linecommands.h"
#include "core/verdictsink.h"
#include "plc/plcregisters.h"
#include "plc/plcserver.h"

#include <QMap>
#include <QModbusTcpServer>
#include <QTimer>

#include <atomic>
#include <memory>
#include <mutex>

namespace scribo::line {

/// What PlcServer does in its thread: the Modbus server and its registers.
class PlcWorker : public QObject
{
    Q_OBJECT

public:
    /// All but fault() and isListening() is called in one thread with an event loop.
    PlcWorker(const PlcOptions& options, LineCommands& commands);
    ~PlcWorker() override;

    void listen();
    void showVerdict(const Verdict& verdict);
    void showStatus(const EngineStatus& status);

    QString fault() const;
    bool isListening() const { return listening; }

private:
    void tryToListen();
    void onWritten(QModbusDataUnit::RegisterType table, int address, int size);
    void takeLot();
    void takeCommand();
    void chooseJob(quint16 commandNumber);
    void answer(quint16 commandNumber, plc::Answer answer, Reason reason);
    quint16 holding(quint16 address) const;
    void set(quint16 address, quint16 value);
    void set(quint16 address, const QVector<quint16>& values);
    void setFault(const QString& text);

    const PlcOptions options;
    LineCommands& commands;
    QModbusTcpServer* server;
    QTimer* heartbeat;
    QTimer* retry;
    quint16 beats = 0;
    quint16 newestCommand = 0;
    QMap<quint64, quint16> open; ///< triggers of the PLC that have no verdict yet: command numbers by sequence number
    std::atomic<bool> listening{false};
    mutable std::mutex mutex; ///< guards the fault
    QString problem;
};

} // namespace scribo::line
