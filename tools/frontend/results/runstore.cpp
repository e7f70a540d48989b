#include "runstore.h"

#include <checkedjson.h>
#include <wholefile.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

namespace {

const QLatin1String formatName("update-run-1");

const EnumTexts<Part>& partNames()
{
    static const EnumTexts<Part> names = {{Part::TrackingSoftware, "tracking-software"},
                                          {Part::ControllerFirmware, "controller-firmware"},
                                          {Part::CameraFirmware, "camera-firmware"}};
    return names;
}

const EnumTexts<Outcome>& outcomeNames()
{
    static const EnumTexts<Outcome> names = {{Outcome::Done, "done"},
                                             {Outcome::Failed, "failed"},
                                             {Outcome::Unconfirmed, "unconfirmed"},
                                             {Outcome::Skipped, "skipped"}};
    return names;
}

QJsonObject toJson(const PlannedUpdate& update)
{
    return {{"device", update.device},   {"part", partNames().of(update.part)},
            {"from", update.from},       {"planned", update.planned},
            {"isExact", update.isExact}, {"outcome", outcomeNames().of(update.outcome)},
            {"found", update.found},     {"remark", update.remark},
            {"wasAway", update.wasAway}};
}

QString toText(const QDateTime& time)
{
    return time.toUTC().toString(Qt::ISODateWithMs);
}

QByteArray toJson(const PlannedRun& run)
{
    QJsonArray updates;
    for (const PlannedUpdate& update : run.updates)
        updates += toJson(update);
    QJsonArray events;
    for (const PlannedRun::Event& event : run.events)
        events += QJsonObject{{"time", toText(event.time)}, {"text", event.text}};
    const QJsonObject object{{"format", formatName},     {"started", toText(run.started)},
                             {"system", run.system},     {"identity", run.identity},
                             {"hasEnded", run.hasEnded}, {"updates", updates},
                             {"events", events},         {"hasRestarted", run.hasRestarted}};
    return QJsonDocument(object).toJson();
}

QDateTime readTime(CheckedObject* object, const QString& key)
{
    const QDateTime time = QDateTime::fromString(object->text(key), Qt::ISODateWithMs);
    if (!time.isValid())
        object->fail(key, QStringLiteral("must be a moment such as \"2026-03-01T12:00:00.000Z\""));
    return time.toLocalTime();
}

PlannedUpdate readUpdate(CheckedObject object)
{
    PlannedUpdate update;
    update.device = object.text("device");
    update.part = object.choice("part", partNames());
    update.from = object.text("from");
    update.planned = object.text("planned");
    update.isExact = object.flag("isExact", false);
    update.outcome = object.choice("outcome", outcomeNames());
    update.found = object.text("found");
    update.remark = object.text("remark");
    update.wasAway = object.flag("wasAway", false);
    object.finish();
    return update;
}

std::optional<PlannedRun> readRun(const QByteArray& json, const QString& fileName, QString* error)
{
    const std::optional<QJsonObject> root = parseJsonObject(json, fileName, error);
    if (!root)
        return std::nullopt;
    CheckedObject object(*root, fileName, error);
    object.choice("format", {formatName});
    PlannedRun run;
    run.started = readTime(&object, "started");
    run.system = object.text("system");
    run.identity = object.text("identity", QString());
    run.hasEnded = object.flag("hasEnded", false);
    run.hasRestarted = object.flag("hasRestarted", false);
    for (const CheckedObject& update : object.objects("updates"))
        run.updates += readUpdate(update);
    for (CheckedObject& event : object.objects("events"))
        run.events.append({readTime(&event, "time"), event.text("text")});
    object.finish();
    return object.ok() ? std::make_optional(run) : std::nullopt;
}

} // namespace

bool RunStore::save(const PlannedRun& run, QString* error) const
{
    if (!QDir().mkpath(m_folder)) {
        *error = QStringLiteral("%1: the folder cannot be made").arg(m_folder);
        return false;
    }
    return writeWholeFile(fileBase(run) + QLatin1String(".json"), toJson(run), error) &&
           writeWholeFile(logFile(run), run.logText().toUtf8(), error);
}

std::optional<PlannedRun> RunStore::latest(QStringList* problems) const
{
    // The names begin with the time, in a zone that never goes back.
    const QFileInfoList files =
        QDir(m_folder).entryInfoList({"run-*.json"}, QDir::Files, QDir::Name | QDir::Reversed);
    for (const QFileInfo& entry : files) {
        const QString path = entry.filePath();
        QFile file(path);
        QString error;
        if (!file.open(QIODevice::ReadOnly))
            error = QStringLiteral("%1: %2").arg(path, file.errorString());
        const QByteArray json = file.readAll();
        file.close();
        if (error.isEmpty()) {
            if (std::optional<PlannedRun> run = readRun(json, path, &error))
                return run;
        }
        QString reason;
        if (!setDamagedFileAside(path, &reason))
            error = reason;
        *problems += error;
    }
    return std::nullopt;
}

QString RunStore::logFile(const PlannedRun& run) const
{
    return fileBase(run) + QLatin1String(".log");
}

QString RunStore::fileBase(const PlannedRun& run) const
{
    return m_folder + QLatin1String("/run-") +
           QLocale::c().toString(run.started.toUTC(), QStringLiteral("yyyyMMdd-HHmmss-zzz"));
}
