#include "systemstate.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace {

// Stands in quotes in every file of a state, whatever the version of its format.
const QLatin1String formatFamily("simulated-system-state-");
const QLatin1String stateFormat("simulated-system-state-1");
constexpr qint64 farFutureMs = Q_INT64_C(1) << 50;

QJsonObject toJson(const ControllerMemory& controller)
{
    return {{QStringLiteral("hostName"), controller.hostName},
            {QStringLiteral("available"), controller.available},
            {QStringLiteral("pt"), controller.pt},
            {QStringLiteral("ct"), controller.ct},
            {QStringLiteral("stagedPt"), controller.stagedPt},
            {QStringLiteral("stagedCt"), controller.stagedCt}};
}

QJsonObject toJson(const CameraMemory& camera)
{
    return {{QStringLiteral("model"), camera.model},
            {QStringLiteral("serial"), camera.serial},
            {QStringLiteral("running"), camera.running},
            {QStringLiteral("found"), camera.found},
            {QStringLiteral("version"), camera.version},
            {QStringLiteral("stagedVersion"), camera.stagedVersion}};
}

template <typename Device>
QJsonArray toJson(const QVector<Device>& devices)
{
    QJsonArray array;
    for (const Device& device : devices)
        array.append(toJson(device));
    return array;
}

// A text that says which device or scenario the file is about, to be the same as here.
QString sameText(CheckedObject* object, const QString& key, const QString& here)
{
    QString text = object->text(key);
    if (text != here)
        object->fail(key, QStringLiteral("must be \"%1\" as in the scenario").arg(here));
    return text;
}

ControllerMemory readController(CheckedObject object, const ScenarioController& here)
{
    ControllerMemory controller;
    controller.hostName = sameText(&object, QStringLiteral("hostName"), here.hostName);
    controller.available = object.flag(QStringLiteral("available"), true);
    controller.pt = object.text(QStringLiteral("pt"));
    controller.ct = object.text(QStringLiteral("ct"));
    controller.stagedPt = object.text(QStringLiteral("stagedPt"));
    controller.stagedCt = object.text(QStringLiteral("stagedCt"));
    object.finish();
    return controller;
}

CameraMemory readCamera(CheckedObject object, const ScenarioCamera& here)
{
    CameraMemory camera;
    camera.model = sameText(&object, QStringLiteral("model"), here.model);
    camera.serial = sameText(&object, QStringLiteral("serial"), here.serial);
    camera.running = object.flag(QStringLiteral("running"), true);
    camera.found = object.flag(QStringLiteral("found"), true);
    camera.version = object.text(QStringLiteral("version"));
    camera.stagedVersion = object.text(QStringLiteral("stagedVersion"));
    object.finish();
    return camera;
}

template <typename Memory, typename Device>
QVector<Memory> readDevices(CheckedObject* root, const QString& key, const QVector<Device>& here,
                            Memory (*read)(CheckedObject, const Device&))
{
    const QVector<CheckedObject> objects = root->objects(key);
    if (objects.size() != here.size())
        root->fail(key, QStringLiteral("must have %1 entries as in the scenario").arg(here.size()));
    QVector<Memory> devices;
    for (int index = 0; index < qMin(objects.size(), here.size()); ++index)
        devices.append(read(objects.at(index), here.at(index)));
    return devices;
}

} // namespace

const EnumTexts<Power>& powerTexts()
{
    static const EnumTexts<Power> texts = {{Power::On, "on"},
                                           {Power::Restarting, "restarting"},
                                           {Power::Hung, "hung"},
                                           {Power::Off, "off"}};
    return texts;
}

QJsonObject memoryToJson(const SystemMemory& memory)
{
    return {{QStringLiteral("format"), QString(stateFormat)},
            {QStringLiteral("scenario"), memory.scenario},
            {QStringLiteral("power"), powerTexts().of(memory.power)},
            {QStringLiteral("restartEndsMs"), memory.restartEndsMs},
            {QStringLiteral("measurement"), measurementTexts().of(memory.measurement)},
            {QStringLiteral("controllers"), toJson(memory.controllers)},
            {QStringLiteral("cameras"), toJson(memory.cameras)}};
}

std::optional<SystemMemory> memoryFromJson(CheckedObject root, const Scenario& scenario)
{
    root.choice(QStringLiteral("format"), {stateFormat});
    SystemMemory memory;
    memory.scenario = sameText(&root, QStringLiteral("scenario"), scenario.name);
    memory.power = root.choice(QStringLiteral("power"), powerTexts());
    memory.restartEndsMs = root.number(QStringLiteral("restartEndsMs"), 0, farFutureMs);
    memory.measurement = root.choice(QStringLiteral("measurement"), measurementTexts());
    memory.controllers =
        readDevices(&root, QStringLiteral("controllers"), scenario.controllers, readController);
    memory.cameras = readDevices(&root, QStringLiteral("cameras"), scenario.cameras, readCamera);
    root.finish();
    if (!root.ok())
        return std::nullopt;
    return memory;
}

bool isStateText(const QByteArray& text)
{
    return text.isEmpty() || text.contains('"' + QByteArray(formatFamily.data()));
}

QByteArray stateToJson(const SystemMemory& memory)
{
    return QJsonDocument(memoryToJson(memory)).toJson();
}

std::optional<SystemMemory> stateFromJson(const QByteArray& json, const Scenario& scenario,
                                          const QString& fileName, QString* error)
{
    const std::optional<QJsonObject> object = parseJsonObject(json, fileName, error);
    if (!object)
        return std::nullopt;
    return memoryFromJson(CheckedObject(*object, fileName, error), scenario);
}
