#pragma once

#include <QString>
#include <QVector>

#include <cstdint>

/// The register map that a PLC sees, and how texts and long numbers lie in it.
///
/// Registers are 16 bits. A number of 32 bits takes two, the low one first. A text takes two characters a register, the
/// first in the high byte, and ends at its first NUL.
namespace scribo::line::plc {

/// What the PLC writes: holding registers.
namespace Holding {
constexpr quint16 command = 0; ///< see Command
constexpr quint16 commandNumber = 1; ///< a new number is a new command
constexpr quint16 jobNumber = 2;
constexpr quint16 lot = 10;
constexpr quint16 lotLength = 32; ///< registers
constexpr quint16 count = lot + lotLength;
} // namespace Holding

/// What the PLC reads: input registers.
namespace Input {
constexpr quint16 state = 0; ///< see State
constexpr quint16 commandAnswered = 1; ///< the number of the newest command that is done
constexpr quint16 verdict = 2; ///< see Answer
constexpr quint16 sequence = 3; ///< two registers
constexpr quint16 heartbeat = 5; ///< counts ten times a second
constexpr quint16 jobNumber = 6;
constexpr quint16 reason = 7; ///< see Reason
constexpr quint16 textLength = 8; ///< characters
constexpr quint16 text = 9;
constexpr quint16 textRegisters = 32;
constexpr quint16 okCount = 41; ///< two registers
constexpr quint16 ngCount = 43; ///< two registers
constexpr quint16 count = 45;
} // namespace Input

enum class Command : quint16 {
    none = 0,
    trigger = 1,
    job = 2,
};

enum class State : quint16 {
    ready = 1,
    busy = 2,
    fault = 3,
};

enum class Answer : quint16 {
    none = 0,
    ok = 1,
    ng = 2,
};

/// `text` in `count` registers. What is not printable ASCII becomes '?', a line feed stays; what does not fit is left
/// out. Returns the registers, all of them.
QVector<quint16> packText(const QString& text, int count);

/// The text in these registers, without spaces at its ends. What is not printable ASCII becomes '?'.
QString unpackText(const QVector<quint16>& registers);

/// The low 32 bits of `number`, the low register first.
QVector<quint16> packNumber(std::uint64_t number);

} // namespace scribo::line::plc
