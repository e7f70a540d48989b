#pragma once

#include "recordrequest.h"
#include "simulatedsystem.h"

#include <reply.h>

#include <QByteArray>

#include <optional>

/// Understands the command language on the devices' side; docs/command-language.md describes it.
///
/// Any bytes may be handed in: what is no text of the language gives an error reply. Never blocks.
/// To be used from the thread of the system.
class CommandInterpreter
{
public:
    /// @param system must outlive the interpreter
    explicit CommandInterpreter(SimulatedSystem& system);

    /// Does what @p text asks for, as far as faults and the state of the system let it, and
    /// answers.
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
