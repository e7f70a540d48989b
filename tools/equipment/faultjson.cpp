#include "faultjson.h"

#include "scenario.h"

#include <payload.h>

namespace {

QStringList modeNames()
{
    QStringList names;
    for (const FaultModeInfo& info : faultModes())
        names.append(info.name);
    return names;
}

} // namespace

Fault faultFromJson(CheckedObject object, const QStringList& devices)
{
    Fault fault;
    fault.mode = faultModes().at(object.choice(QStringLiteral("mode"), modeNames())).mode;
    fault.device = object.text(QStringLiteral("device"), QString());
    if (!fault.device.isEmpty() && !devices.contains(fault.device))
        object.fail(QStringLiteral("device"), QStringLiteral("no such controller or camera"));
    fault.request = object.text(QStringLiteral("request"), QString()).toUtf8();
    fault.record = static_cast<int>(object.number(QStringLiteral("record"), 1, maxRecords, 0));
    if (object.contains(QStringLiteral("seed")))
        fault.seed =
            static_cast<quint32>(object.number(QStringLiteral("seed"), 0, Q_INT64_C(0xFFFFFFFF)));
    fault.times = static_cast<int>(object.number(QStringLiteral("times"), 0, 1000000, fault.times));
    fault.delayMs =
        static_cast<int>(object.number(QStringLiteral("delayMs"), 0, maxDurationMs, fault.delayMs));
    object.finish();
    return fault;
}

QJsonObject faultToJson(const Fault& fault)
{
    QJsonObject object{{QStringLiteral("mode"), faultModeInfo(fault.mode).name},
                       {QStringLiteral("device"), fault.device},
                       {QStringLiteral("request"), QString::fromUtf8(fault.request)},
                       {QStringLiteral("times"), fault.times},
                       {QStringLiteral("delayMs"), fault.delayMs}};
    if (fault.record > 0)
        object.insert(QStringLiteral("record"), fault.record);
    if (fault.seed)
        object.insert(QStringLiteral("seed"), static_cast<qint64>(*fault.seed));
    return object;
}
