#include "commandinterpreter.h"

#include "queries.h"

#include <errorreply.h>
#include <protocolversions.h>

namespace {

constexpr int maxReplyBytes = replyBytes - 1;

Reply success(int deviceMs = 0)
{
    Reply reply;
    reply.ok = true;
    reply.text = QByteArrayLiteral("vornix2 ok");
    reply.deviceMs = deviceMs;
    return reply;
}

Reply refusal(const QByteArray& text)
{
    Reply reply;
    reply.text = text;
    return reply;
}

Reply refusal(ErrorCode code, const QString& reason)
{
    return refusal(errorReply(code, reason));
}

Reply notAnswered(Delivery delivery)
{
    Reply reply;
    reply.delivery = delivery;
    return reply;
}

// Bytes that are no text of the language in any encoding, without a line end.
QByteArray garbage()
{
    QByteArray bytes;
    for (int index = 0; index < maxReplyBytes; ++index)
        bytes.append(static_cast<char>(0x80 + index * 7 % 0x80));
    return bytes;
}

Reply garbled(Reply reply, Operation operation)
{
    reply.text = garbage();
    reply.integer = 0;
    reply.ok = operation == Operation::GetString || operation == Operation::Command;
    return reply;
}

Reply unknownText()
{
    return refusal(ErrorCode::UnknownText, QStringLiteral("unknown text"));
}

Reply noSuchDevice()
{
    return refusal(ErrorCode::NoSuchDevice, QStringLiteral("no such device"));
}

// When record @p number of a steady stream is done, so that the times of all records add up to the
// stream's without a rounding error.
qint64 doneMs(qint64 number, int recordsPerSecond)
{
    return recordsPerSecond > 0 ? number * 1000 / recordsPerSecond : 0;
}

} // namespace

CommandInterpreter::CommandInterpreter(SimulatedSystem& system) : m_system(system) {}

Reply CommandInterpreter::execute(Operation operation, const QByteArray& text)
{
    m_system.settle();
    if (!m_system.isReachable())
        return notAnswered(Delivery::ConnectionLost);

    const Request request = read(operation, text);
    const std::optional<Fault> fault = m_system.takeFault(momentOf(request));
    Reply reply = fault ? answerWithFault(*fault, request) : answer(request);
    // A reply text that says "no" is as good as any other for the one who sends a command.
    if (operation == Operation::Command && reply.delivery == Delivery::Answered)
        reply.ok = true;
    reply.text.truncate(maxReplyBytes);
    return reply;
}

CommandInterpreter::Request CommandInterpreter::read(Operation operation, const QByteArray& text)
{
    // What exceeds the limit is not read, but one byte of it makes the text too long for any use.
    Request request{operation, text.left(maxTextBytes + 1), std::nullopt};
    if (operation == Operation::SetValue)
        request.record = RecordRequest::fromSetting(request.text);
    else if (operation == Operation::Command)
        request.record = RecordRequest::fromCommand(request.text);
    return request;
}

ExchangeMoment CommandInterpreter::momentOf(const Request& request) const
{
    if (!request.record)
        return {request.text, QString(), 0, 0};
    const RecordRequest& record = *request.record;
    const QString device = record.camera == RecordRequest::toController
                               ? m_system.controllers().at(m_system.updateTarget()).hostName
                               : cameraName(record.camera);
    return {request.text, device, record.number, record.count};
}

Reply CommandInterpreter::answerWithFault(const Fault& fault, const Request& request)
{
    Reply reply;
    switch (fault.mode) {
    case FaultMode::AnswerLate:
        reply = answer(request);
        reply.deviceMs += fault.delayMs;
        return reply;
    case FaultMode::AnswerGarbage:
        return garbled(answer(request), request.operation);
    case FaultMode::RefuseRecord:
        reply = refusal(ErrorCode::AskedFor, QStringLiteral("refused on demand"));
        break;
    case FaultMode::RefuseWithCameraError:
        reply = refusal(QByteArrayLiteral("vornix2 err -26"));
        break;
    case FaultMode::RefuseWithQuotedCameraError:
        reply = refusal(QByteArrayLiteral("vornix2 err \"-26\""));
        break;
    case FaultMode::DropConnection:
        reply = notAnswered(Delivery::ConnectionLost);
        break;
    case FaultMode::StaySilent:
        reply = notAnswered(Delivery::Silent);
        break;
    case FaultMode::LosePower:
        m_system.restart();
        return notAnswered(Delivery::ConnectionLost);
    case FaultMode::ComeBackOld:
    case FaultMode::NeverComeBack:
        break; // they strike at a restart, never here
    }
    m_system.dropReception(
        QStringLiteral("Update broken off: %1").arg(faultModeInfo(fault.mode).title));
    return reply;
}

Reply CommandInterpreter::answer(const Request& request)
{
    if (request.record)
        return answerRecord(*request.record);
    switch (request.operation) {
    case Operation::GetString:
    case Operation::GetInt:
        return answerQuery(request.operation, request.text);
    case Operation::SetValue:
        return answerSetting(request.text);
    case Operation::Command:
        return answerCommand(request.text);
    }
    return unknownText();
}

Reply CommandInterpreter::answerQuery(Operation operation, const QByteArray& text) const
{
    QByteArray error;
    const std::optional<QByteArray> value = queryValue(m_system, text, &error);
    if (!value)
        return refusal(error);
    Reply reply;
    reply.ok = true;
    reply.text = *value;
    if (operation == Operation::GetInt)
        reply.integer = value->toInt(&reply.ok);
    return reply;
}

Reply CommandInterpreter::answerRecord(const RecordRequest& record)
{
    if (m_system.measurement() != Measurement::Off) {
        m_system.dropReception(QStringLiteral("Update broken off: a measurement runs"));
        return refusal(ErrorCode::NotNow, QStringLiteral("a measurement runs"));
    }
    const QVector<CameraState>& cameras = m_system.cameras();
    if (record.camera >= cameras.size() || (record.camera >= 0 && !cameras.at(record.camera).found))
        return noSuchDevice();

    const BlockReceiver& receiver = take(record);
    if (receiver.state() == BlockReceiver::State::Damaged)
        return refusal(ErrorCode::DamagedUpdate, receiver.reason());
    if (receiver.refused())
        return refusal(ErrorCode::WrongRecord, receiver.reason());
    return success(recordMs(record));
}

Reply CommandInterpreter::answerSetting(const QByteArray& text)
{
    const QByteArray redirection = QByteArrayLiteral("system redirect_update ");
    if (text.startsWith(redirection) && m_system.scenario().protocol >= protocolWithCascade)
        return redirect(text.mid(redirection.size()));
    return unknownText();
}

Reply CommandInterpreter::answerCommand(const QByteArray& text)
{
    if (text == "vornix2 tracking stop")
        return m_system.stopMeasurement()
                   ? success()
                   : refusal(ErrorCode::NotNow, QStringLiteral("the measurement does not stop"));
    if (text == "vornix2 reinit") {
        m_system.searchHardware();
        return success(m_system.scenario().timing.searchMs);
    }
    if (text == "vornix2 system reboot") {
        m_system.restart();
        return success();
    }
    if (text == "vornix2 system shutdown") {
        m_system.shutDown();
        return success();
    }
    return unknownText();
}

Reply CommandInterpreter::redirect(const QByteArray& target)
{
    const int master = 0;
    const int index = target == "none" ? master : m_system.slaveAt(QString::fromUtf8(target));
    if (index < 0 || !m_system.controllers().at(index).available)
        return noSuchDevice();
    m_system.setUpdateTarget(index);
    return success();
}

const BlockReceiver& CommandInterpreter::take(const RecordRequest& record)
{
    if (record.camera == RecordRequest::toController)
        return m_system.takeRecord(record.component, record.count, record.number, record.text);
    return m_system.takeCameraRecord(record.camera, record.count, record.number, record.text);
}

int CommandInterpreter::recordMs(const RecordRequest& record) const
{
    const ScenarioTiming& timing = m_system.scenario().timing;
    const bool toCamera = record.camera != RecordRequest::toController;
    const int perSecond = toCamera ? timing.cameraRecordsPerSecond : timing.recordsPerSecond;
    const int verifyMs = toCamera ? timing.cameraVerifyMs : timing.verifyMs;
    const qint64 streamMs = doneMs(record.number, perSecond) - doneMs(record.number - 1, perSecond);
    return static_cast<int>(streamMs) + (record.number == record.count ? verifyMs : 0);
}
