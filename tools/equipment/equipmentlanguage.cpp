#include "equipmentlanguage.h"

#include "faultjson.h"

#include <payload.h>
#include <wirelanguage.h>

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <iterator>

namespace {

using Command = std::optional<EquipmentCommand>;
using Kind = EquipmentCommand::Kind;

QByteArray oneLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Command readPowerCycle(const QByteArray& /*argument*/, const Scenario& /*scenario*/,
                       QString* /*error*/)
{
    return EquipmentCommand{Kind::PowerCycle};
}

Command readCameraPowerCycle(const QByteArray& argument, const Scenario& scenario, QString* error)
{
    for (int index = 0; index < scenario.cameras.size(); ++index) {
        if (cameraName(index).toLatin1() == argument)
            return EquipmentCommand{Kind::PowerCycleCamera, index};
    }
    *error = QStringLiteral("no such camera");
    return std::nullopt;
}

Command readMeasurement(const QByteArray& argument, const Scenario& /*scenario*/, QString* error)
{
    if (argument == "on")
        return EquipmentCommand{Kind::StartMeasurement};
    if (argument == "off")
        return EquipmentCommand{Kind::StopMeasurement};
    *error = QStringLiteral("on or off is expected");
    return std::nullopt;
}

Command readFault(const QByteArray& argument, const Scenario& scenario, QString* error)
{
    const QString name = QStringLiteral("fault");
    const std::optional<QJsonObject> object = parseJsonObject(argument, name, error);
    if (!object)
        return std::nullopt;
    const Fault fault = faultFromJson(CheckedObject(*object, name, error), scenario.deviceNames());
    if (!error->isEmpty())
        return std::nullopt;
    return EquipmentCommand{Kind::ArmFault, 0, fault};
}

Command readDisarming(const QByteArray& /*argument*/, const Scenario& /*scenario*/,
                      QString* /*error*/)
{
    return EquipmentCommand{Kind::DisarmFaults};
}

/// One kind of line, by its first word.
struct Verb
{
    const char* word;
    Command (*read)(const QByteArray& argument, const Scenario& scenario, QString* error);
};

constexpr Verb verbs[] = {
    {"power-cycle", readPowerCycle}, {"power-cycle-camera", readCameraPowerCycle},
    {"measure", readMeasurement},    {"arm", readFault},
    {"disarm", readDisarming},
};

template <typename Device>
QJsonArray activitiesOf(const QVector<Device>& devices)
{
    QJsonArray array;
    for (const Device& device : devices)
        array.append(QJsonObject{{QStringLiteral("activity"), device.activity},
                                 {QStringLiteral("received"), device.recordsReceived},
                                 {QStringLiteral("expected"), device.recordsExpected}});
    return array;
}

template <typename Device>
void readActivities(CheckedObject* root, const QString& key, QVector<Device>* devices)
{
    const QVector<CheckedObject> objects = root->objects(key);
    if (objects.size() != devices->size())
        root->fail(key, QStringLiteral("must have %1 entries").arg(devices->size()));
    for (int index = 0; index < qMin(objects.size(), devices->size()); ++index) {
        CheckedObject object = objects.at(index);
        Device& device = (*devices)[index];
        device.activity = object.text(QStringLiteral("activity"));
        device.recordsReceived =
            static_cast<int>(object.number(QStringLiteral("received"), 0, maxRecords));
        device.recordsExpected =
            static_cast<int>(object.number(QStringLiteral("expected"), 0, maxRecords));
        object.finish();
    }
}

template <typename Device, typename Memory>
void adoptAll(QVector<Device>* devices, const QVector<Memory>& memories, Power power)
{
    for (int index = 0; index < devices->size(); ++index) {
        adopt(&(*devices)[index], memories.at(index));
        becomeIdle(&(*devices)[index], power);
    }
}

} // namespace

QByteArray scenarioToJson(const Scenario& scenario)
{
    return oneLine(
        {{QStringLiteral("name"), scenario.name},
         {QStringLiteral("scenario"), QJsonDocument::fromJson(scenario.source).object()}});
}

QByteArray systemIdentity(const QByteArray& scenario)
{
    return QCryptographicHash::hash(scenario, QCryptographicHash::Sha256).toHex();
}

QByteArray commandLine(const EquipmentCommand& command)
{
    switch (command.kind) {
    case Kind::StartMeasurement:
        return QByteArrayLiteral("measure on");
    case Kind::StopMeasurement:
        return QByteArrayLiteral("measure off");
    case Kind::PowerCycle:
        return QByteArrayLiteral("power-cycle");
    case Kind::PowerCycleCamera:
        return "power-cycle-camera " + cameraName(command.camera).toLatin1();
    case Kind::ArmFault:
        return "arm " + oneLine(faultToJson(command.fault));
    case Kind::DisarmFaults:
        break;
    }
    return QByteArrayLiteral("disarm");
}

QStringList commandWords()
{
    QStringList words;
    for (const Verb& verb : verbs)
        words += QLatin1String(verb.word);
    return words;
}

std::optional<EquipmentCommand> readCommandLine(const QByteArray& line, const Scenario& scenario,
                                                QString* error)
{
    QByteArray argument = line;
    const QByteArray word = takeWord(&argument);
    const auto* const verb = std::find_if(std::begin(verbs), std::end(verbs),
                                          [&](const Verb& it) { return word == it.word; });
    if (verb != std::end(verbs))
        return verb->read(argument, scenario, error);
    *error = QStringLiteral("%1 is expected").arg(commandWords().join(QStringLiteral(", ")));
    return std::nullopt;
}

QByteArray reportToJson(const EquipmentReport& report, const SystemMemory& memory)
{
    QJsonArray faults;
    for (const Fault& fault : report.state.faults.armed())
        faults.append(faultToJson(fault));
    return oneLine({{QStringLiteral("memory"), memoryToJson(memory)},
                    {QStringLiteral("msUntilReachable"), report.msUntilReachable},
                    {QStringLiteral("controllers"), activitiesOf(report.state.controllers)},
                    {QStringLiteral("cameras"), activitiesOf(report.state.cameras)},
                    {QStringLiteral("faults"), faults},
                    {QStringLiteral("updatedBy"), report.state.updatedBy}});
}

std::optional<EquipmentReport> reportFromJson(const QByteArray& json, const Scenario& scenario,
                                              QString* error)
{
    const QString name = QStringLiteral("state");
    const std::optional<QJsonObject> object = parseJsonObject(json, name, error);
    if (!object)
        return std::nullopt;

    CheckedObject root(*object, name, error);
    const std::optional<SystemMemory> memory =
        memoryFromJson(root.object(QStringLiteral("memory")), scenario);
    if (!memory)
        return std::nullopt;
    EquipmentReport report{untouchedEquipment(scenario), 0};
    EquipmentState& state = report.state;
    state.power = memory->power;
    state.measurement = memory->measurement;
    adoptAll(&state.controllers, memory->controllers, state.power);
    adoptAll(&state.cameras, memory->cameras, state.power);
    report.msUntilReachable = root.number(QStringLiteral("msUntilReachable"), -1, maxDurationMs);
    readActivities(&root, QStringLiteral("controllers"), &state.controllers);
    readActivities(&root, QStringLiteral("cameras"), &state.cameras);
    for (const CheckedObject& fault : root.objects(QStringLiteral("faults")))
        state.faults.add(faultFromJson(fault, scenario.deviceNames()));
    state.updatedBy = root.text(QStringLiteral("updatedBy"), QString());
    root.finish();
    if (!root.ok())
        return std::nullopt;
    return report;
}
