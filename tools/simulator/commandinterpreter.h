#pragma once

#include "recordrequest.h"
#include "simulatedsystem.h"

#include <QByteArray>

#include <optional>

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
    int deviceMs = 0; ///< how long the device takes to answer: to wait, or to compare with the
                      ///< time-out
    Delivery delivery = Delivery::Answered;
};

/// Understands the command language on the devices' side; docs/command-language.md describes it.
///
/// Any bytes may be handed in: what is no text of the language gives an error reply. Never blocks.
/// To be used from the thread of the system.
class CommandInterpreter
{
public:
    /// Longer texts are refused; what exceeds this is not read. A record has some 200 bytes.
    static constexpr int maxTextBytes = 1024;

    /// @param system must outlive the interpreter
    explicit CommandInterpreter(SimulatedSystem& system);

    Reply execute(Operation operation, const QByteArray& text);

private:
    /// A text with what faults and answer need to know of it.
    struct Request
    {
        Operation operation;
        QByteArray text;
        std::optional<RecordRequest> record;
    };

    static Request read(Operation operation, const QByteArray& text);
    ExchangeMoment momentOf(const Request& request) const;
    Reply answerWithFault(const Fault& fault, const Request& request);

    Reply answer(const Request& request);
    Reply answerQuery(Operation operation, const QByteArray& text) const;
    Reply answerRecord(const RecordRequest& record);
    Reply answerSetting(const QByteArray& text);
    Reply answerCommand(const QByteArray& text);

    Reply redirect(const QByteArray& target);
    const BlockReceiver& take(const RecordRequest& record);
    int recordMs(const RecordRequest& record) const;

    SimulatedSystem& m_system;
};
