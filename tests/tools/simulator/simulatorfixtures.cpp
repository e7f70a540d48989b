#include "simulatorfixtures.h"

#include "reportedversion.h"

#include <algorithm>

namespace {

constexpr int bodySize = 24 * 120 - payloadOverhead;

} // namespace

QByteArray sixBitText(const QByteArray& record)
{
    const QByteArray alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    QByteArray text;
    for (int first = 0; first < record.size() * 8; first += 6) {
        int word = 0;
        for (int bit = first; bit < qMin(first + 6, record.size() * 8); ++bit)
            word |= ((record.at(bit / 8) >> (bit % 8)) & 1) << (bit - first);
        text.append(alphabet.at(word));
    }
    return text;
}

QList<QByteArray> recordTexts(const QByteArray& payload, int recordSize)
{
    QList<QByteArray> texts;
    for (int offset = 0; offset < payload.size(); offset += recordSize)
        texts.append(sixBitText(payload.mid(offset, recordSize)));
    return texts;
}

QByteArray trackingSoftware(VersionInfo version, const QString& appendix)
{
    return makePayload({PayloadComponent::TrackingSoftware, version, appendix}, bodySize, 1);
}

QByteArray controllerFirmware(VersionInfo version)
{
    return makePayload({PayloadComponent::ControllerFirmware, version, QString()}, bodySize, 2);
}

QByteArray cameraFirmware(VersionInfo version, const QString& appendix)
{
    return makePayload({PayloadComponent::CameraFirmware, version, appendix}, bodySize, 3);
}

Scenario shippedScenario(const QString& name)
{
    QString error;
    const std::optional<Scenario> scenario = ScenarioReader::read(name, &error);
    if (!scenario)
        qFatal("%s", qPrintable(error));
    return *scenario;
}

Fault faultAt(FaultMode mode, const QByteArray& request, int delayMs)
{
    Fault fault;
    fault.mode = mode;
    fault.request = request;
    fault.delayMs = delayMs;
    return fault;
}

SimulatedSite::SimulatedSite(const Scenario& scenario)
    : system(scenario, [this] { return nowMs; }), interpreter(system)
{
}

SimulatedSite::SimulatedSite(const QString& scenarioName)
    : SimulatedSite(shippedScenario(scenarioName))
{
}

QByteArray SimulatedSite::getString(const QByteArray& text)
{
    const Reply reply = interpreter.execute(Operation::GetString, text);
    return reply.ok ? reply.text : "failed: " + reply.text;
}

Reply SimulatedSite::set(const QByteArray& text)
{
    return interpreter.execute(Operation::SetValue, text);
}

Reply SimulatedSite::command(const QByteArray& text)
{
    return interpreter.execute(Operation::Command, text);
}

Reply SimulatedSite::send(const QByteArray& words, const QByteArray& payload)
{
    return sendRecords(Operation::SetValue, words, payload);
}

Reply SimulatedSite::sendToCamera(const QByteArray& camera, const QByteArray& payload)
{
    return sendRecords(Operation::Command, "vornix2 set camera update " + camera, payload);
}

void SimulatedSite::waitMs(qint64 ms)
{
    nowMs += ms;
    system.settle();
}

void SimulatedSite::bringUp()
{
    if (system.msUntilReachable() < 0)
        system.powerCycle();
    waitMs(system.msUntilReachable());
}

Reply SimulatedSite::sendRecords(Operation operation, const QByteArray& words,
                                 const QByteArray& payload)
{
    const QList<QByteArray> texts = recordTexts(payload);
    Reply reply;
    for (int index = 0; index < texts.size(); ++index) {
        const QByteArray numbers =
            QByteArray::number(texts.size()) + ' ' + QByteArray::number(index + 1);
        reply = interpreter.execute(operation, words + ' ' + numbers + ' ' + texts.at(index));
        if (!isTaken(reply))
            break;
    }
    return reply;
}

bool allRun(const SimulatedSystem& system, VersionInfo pt, VersionInfo ct)
{
    const QVector<ControllerState>& controllers = system.controllers();
    return std::all_of(controllers.begin(), controllers.end(), [&](const ControllerState& it) {
        return !it.available || (reportedVersion(it.pt) == pt &&
                                 reportedAppendix(it.pt).isEmpty() && reportedVersion(it.ct) == ct);
    });
}

bool isTaken(const Reply& reply)
{
    return reply.ok && !reply.text.startsWith("vornix2 err");
}
