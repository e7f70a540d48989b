#include "benchlanguage.h"

#include "faultjson.h"
#include "wirelanguage.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <iterator>

namespace {

// More make no sense, and a line has to hold them all.
constexpr int maxArmedFaults = 100;

BenchReply done(const QByteArray& text = QByteArray())
{
    return {true, text, false};
}

BenchReply failed(const QString& reason)
{
    return {false, reason.toUtf8(), false};
}

QByteArray oneLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

BenchReply tellScenario(SimulatedSystem& system, const QByteArray& /*argument*/)
{
    const QJsonObject object{
        {QStringLiteral("name"), system.scenario().name},
        {QStringLiteral("scenario"), QJsonDocument::fromJson(system.scenario().source).object()}};
    return done(oneLine(object));
}

BenchReply tellState(SimulatedSystem& system, const QByteArray& /*argument*/)
{
    return done(benchStateToJson(system));
}

BenchReply tellPower(SimulatedSystem& system, const QByteArray& /*argument*/)
{
    return done(powerTexts().at(static_cast<int>(system.power())).toLatin1());
}

BenchReply watch(SimulatedSystem& system, const QByteArray& /*argument*/)
{
    return {true, benchStateToJson(system), true};
}

BenchReply powerCycle(SimulatedSystem& system, const QByteArray& /*argument*/)
{
    system.powerCycle();
    return done();
}

BenchReply powerCycleCamera(SimulatedSystem& system, const QByteArray& argument)
{
    for (int index = 0; index < system.cameras().size(); ++index) {
        if (cameraName(index).toLatin1() == argument) {
            system.powerCycleCamera(index);
            return done();
        }
    }
    return failed(QStringLiteral("no such camera"));
}

BenchReply measure(SimulatedSystem& system, const QByteArray& argument)
{
    if (argument != "on" && argument != "off")
        return failed(QStringLiteral("on or off is expected"));
    system.setMeasuring(argument == "on");
    return done();
}

BenchReply arm(SimulatedSystem& system, const QByteArray& argument)
{
    if (system.armedFaults().size() >= maxArmedFaults)
        return failed(QStringLiteral("%1 faults are armed already; disarm takes them back")
                          .arg(maxArmedFaults));
    const QString name = QStringLiteral("fault");
    QString error;
    const std::optional<QJsonObject> object = parseJsonObject(argument, name, &error);
    if (!object)
        return failed(error);
    const Fault fault =
        faultFromJson(CheckedObject(*object, name, &error), system.scenario().deviceNames());
    if (!error.isEmpty())
        return failed(error);
    system.armFault(fault);
    return done();
}

BenchReply disarm(SimulatedSystem& system, const QByteArray& /*argument*/)
{
    system.disarmFaults();
    return done();
}

/// One line that the bench understands, by its first word.
struct BenchVerb
{
    const char* word;
    BenchReply (*perform)(SimulatedSystem& system, const QByteArray& argument);
};

constexpr BenchVerb verbs[] = {
    {"scenario", tellScenario},  {"state", tellState},
    {"power", tellPower},        {"watch", watch},
    {"power-cycle", powerCycle}, {"power-cycle-camera", powerCycleCamera},
    {"measure", measure},        {"arm", arm},
    {"disarm", disarm},
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
        device.recordsReceived = static_cast<int>(
            object.number(QStringLiteral("received"), 0, BlockReceiver::maxRecords));
        device.recordsExpected = static_cast<int>(
            object.number(QStringLiteral("expected"), 0, BlockReceiver::maxRecords));
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

BenchReply performBench(SimulatedSystem& system, const QByteArray& text)
{
    system.settle();
    QByteArray argument = text;
    const QByteArray word = takeWord(&argument);
    const auto* const verb = std::find_if(std::begin(verbs), std::end(verbs),
                                          [&](const BenchVerb& it) { return word == it.word; });
    if (verb != std::end(verbs))
        return verb->perform(system, argument);
    QStringList words;
    for (const BenchVerb& it : verbs)
        words += QLatin1String(it.word);
    return failed(QStringLiteral("the bench knows: ") + words.join(QStringLiteral(", ")));
}

QByteArray benchMeasure(bool measuring)
{
    return measuring ? QByteArrayLiteral("measure on") : QByteArrayLiteral("measure off");
}

QByteArray benchPowerCycleCamera(int index)
{
    return "power-cycle-camera " + cameraName(index).toLatin1();
}

QByteArray benchArm(const Fault& fault)
{
    return "arm " + oneLine(faultToJson(fault));
}

QByteArray benchStateToJson(const SimulatedSystem& system)
{
    QJsonArray faults;
    for (const Fault& fault : system.armedFaults())
        faults.append(faultToJson(fault));
    return oneLine({{QStringLiteral("memory"), memoryToJson(system.memory())},
                    {QStringLiteral("msUntilReachable"), system.msUntilReachable()},
                    {QStringLiteral("controllers"), activitiesOf(system.controllers())},
                    {QStringLiteral("cameras"), activitiesOf(system.cameras())},
                    {QStringLiteral("faults"), faults}});
}

std::optional<BenchState> benchStateFromJson(const QByteArray& json, const Scenario& scenario,
                                             QString* error)
{
    const QString name = QStringLiteral("state");
    const std::optional<QJsonObject> object = parseJsonObject(json, name, error);
    if (!object)
        return std::nullopt;

    error->clear();
    CheckedObject root(*object, name, error);
    const std::optional<SystemMemory> memory =
        memoryFromJson(root.object(QStringLiteral("memory")), scenario);
    if (!memory)
        return std::nullopt;
    BenchState state = benchStateOf(scenario);
    state.power = memory->power;
    state.measurement = memory->measurement;
    adoptAll(&state.controllers, memory->controllers, state.power);
    adoptAll(&state.cameras, memory->cameras, state.power);
    state.msUntilReachable = root.number(QStringLiteral("msUntilReachable"), -1, maxDurationMs);
    readActivities(&root, QStringLiteral("controllers"), &state.controllers);
    readActivities(&root, QStringLiteral("cameras"), &state.cameras);
    for (const CheckedObject& fault : root.objects(QStringLiteral("faults")))
        state.faults.append(faultFromJson(fault, scenario.deviceNames()));
    root.finish();
    if (!root.ok())
        return std::nullopt;
    return state;
}

BenchState benchStateOf(const Scenario& scenario)
{
    BenchState state;
    for (const ScenarioController& origin : scenario.controllers)
        state.controllers.append(controllerFrom(origin, !state.controllers.isEmpty()));
    for (const ScenarioCamera& origin : scenario.cameras)
        state.cameras.append(cameraFrom(origin));
    return state;
}
