#pragma once

#include "simulatedsystem.h"

#include <QByteArray>

/// The operation of the command channel that carries a text.
enum class Operation
{
    GetString, ///< a query for a text
    GetInt,    ///< a query for a whole number
    SetValue,  ///< a setting
    Command,   ///< a text that begins with "vornix2"
};

/// How an answer arrives.
enum class Delivery
{
    Answered,
    Silent,         ///< no answer comes; whoever waits runs into the time-out
    ConnectionLost, ///< the connection closes, or there is none: the system is down
};

/// What comes back for one text.
struct Reply
{
    /// Success of the operation. A command has it whenever a reply text arrived, also one that
    /// begins with "vornix2 err": what the text says is for the sender to judge.
    bool ok = false;
    QByteArray text;  ///< the value of a query, or the reply text; UTF-8, at most 199 bytes
    int integer = 0;  ///< the value of Operation::GetInt
    int deviceMs = 0; ///< time that the device takes before it answers, for the caller to wait
    Delivery delivery = Delivery::Answered;
};

/// Understands the command language on the devices' side; docs/command-language.md describes it.
///
/// Any bytes may be handed in: what is no text of the language gives an error reply. Never blocks.
/// To be used from the thread of the system.
class CommandInterpreter
{
public:
    /// Texts longer than this many bytes are refused unread.
    static constexpr int maxTextBytes = 1024;

    /// @param system must outlive the interpreter
    explicit CommandInterpreter(SimulatedSystem& system);

    Reply execute(Operation operation, const QByteArray& text);

private:
    Reply answer(Operation operation, const QByteArray& text);
    Reply answerWithFault(const Fault& fault, Operation operation, const QByteArray& text);

    SimulatedSystem& m_system;
};
