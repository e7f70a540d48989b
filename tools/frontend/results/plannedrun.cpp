#include "plannedrun.h"

#include "timestamp.h"

#include <reportedversion.h>

#include <QCoreApplication>

#include <algorithm>
#include <tuple>

namespace {

// A line has no room for the names of forty cameras.
constexpr int maxNames = 4;

QString tr(const char* text)
{
    return QCoreApplication::translate("PlannedRun", text);
}

// A part that is not told counts as 0: 1.4 and 1.4.0 are one version to people.
bool haveSameNumbers(const QString& left, const QString& right)
{
    const VersionInfo a = reportedVersion(left);
    const VersionInfo b = reportedVersion(right);
    const auto part = [](int number) {
        return qMax(0, number);
    };
    return part(a.ma) == part(b.ma) && part(a.mi) == part(b.mi) && part(a.pa) == part(b.pa);
}

bool isSameVersion(const QString& left, const QString& right)
{
    return haveSameNumbers(left, right) && reportedAppendix(left) == reportedAppendix(right);
}

bool isAsPlanned(const PlannedUpdate& update, const QString& found)
{
    if (update.isExact)
        return isSameVersion(found, update.planned);
    if (!haveSameNumbers(found, update.planned))
        return false;
    // A pre-release that was there before is no proof of an update to these numbers.
    return reportedAppendix(found).isEmpty() || !isSameVersion(found, update.from);
}

// Cameras without a description and a serial number have none.
QString nameOf(const PlannedUpdate& update)
{
    return update.device.isEmpty() ? tr("Camera without a name") : update.device;
}

QString waitingText(Part part)
{
    return part == Part::CameraFirmware
               ? tr("It runs a new version only after a power cycle and a search for hardware.")
               : tr("It runs a new version only after a restart, and none is known of.");
}

void conclude(PlannedUpdate* update, Outcome outcome, const QString& remark)
{
    update->outcome = outcome;
    update->remark = remark;
}

void judgeAnswer(PlannedUpdate* update, const PlannedRun& run)
{
    const bool isController = update->part != Part::CameraFirmware;
    const bool hasComeBack = update->wasAway || (isController && run.hasRestarted);
    const bool isUnchanged = isSameVersion(update->found, update->from);
    if (isAsPlanned(*update, update->found)) {
        const bool isGuess = !update->isExact && !reportedAppendix(update->found).isEmpty();
        conclude(update, Outcome::Done,
                 isGuess ? tr("Only the numbers could be compared.") : QString());
    } else if (!isUnchanged) {
        conclude(update, Outcome::Failed, tr("It runs another version than planned."));
    } else if (hasComeBack) {
        conclude(update, Outcome::Failed, tr("It came back with the version from before."));
    } else {
        conclude(update, Outcome::Unconfirmed,
                 run.hasEnded ? waitingText(update->part)
                              : tr("The run was broken off.") + QLatin1Char(' ') +
                                    waitingText(update->part));
    }
}

void judgeUpdate(PlannedUpdate* update, const PlannedRun& run, const SystemReport& report)
{
    const QStringList versions = report.versions(update->part, update->device);
    update->found = versions.join(QStringLiteral(", "));
    update->wasAway = update->wasAway || (report.isReachable && versions.isEmpty());
    if (versions.isEmpty())
        conclude(update, Outcome::Unconfirmed, tr("It does not answer."));
    else if (versions.size() > 1)
        conclude(update, Outcome::Unconfirmed, tr("Several devices have this name."));
    else
        judgeAnswer(update, run);
}

/// The updates of one kind of device, device by device.
struct Count
{
    QStringList devices;
    QStringList notDone;

    void add(const PlannedUpdate& update)
    {
        if (!devices.contains(update.device))
            devices += update.device;
        if (update.outcome != Outcome::Done && !notDone.contains(update.device))
            notDone += update.device;
    }
};

QString countText(const Count& count, const char* one, const char* many)
{
    const int total = count.devices.size();
    if (total == 0)
        return QString();
    return (total == 1 ? tr(one) : tr(many)).arg(total - count.notDone.size()).arg(total);
}

QString namesText(const QVector<PlannedUpdate>& updates, Outcome outcome, const QString& text)
{
    QStringList names;
    for (const PlannedUpdate& update : updates) {
        if (update.outcome == outcome)
            names += nameOf(update);
    }
    names.removeDuplicates();
    const int more = names.size() - maxNames;
    if (more > 0)
        names = names.mid(0, maxNames) << tr("%1 more").arg(more);
    return names.isEmpty() ? QString() : text.arg(names.join(QStringLiteral(", ")));
}

QString alignedText(const QVector<QStringList>& rows)
{
    QVector<int> widths(rows.constFirst().size());
    for (const QStringList& row : rows) {
        for (int column = 0; column < row.size(); ++column)
            widths[column] = qMax(widths.at(column), row.at(column).size());
    }
    QString text;
    for (const QStringList& row : rows) {
        QString line;
        for (int column = 0; column < row.size(); ++column)
            line += row.at(column).leftJustified(widths.at(column) + 2);
        text += line.trimmed() + QLatin1Char('\n');
    }
    return text;
}

} // namespace

QString outcomeText(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Done:
        return tr("done");
    case Outcome::Failed:
        return tr("failed");
    case Outcome::Unconfirmed:
        return tr("unconfirmed");
    case Outcome::Skipped:
        break;
    }
    return tr("skipped");
}

QString partText(Part part)
{
    switch (part) {
    case Part::TrackingSoftware:
        return tr("Tracking software");
    case Part::ControllerFirmware:
        return tr("Controller firmware");
    case Part::CameraFirmware:
        break;
    }
    return tr("Camera firmware");
}

bool operator==(const PlannedUpdate& left, const PlannedUpdate& right)
{
    const auto members = [](const PlannedUpdate& it) {
        return std::tie(it.device, it.part, it.from, it.planned, it.isExact, it.outcome, it.found,
                        it.remark, it.wasAway);
    };
    return members(left) == members(right);
}

bool PlannedRun::isSettled() const
{
    return std::none_of(updates.begin(), updates.end(), [](const PlannedUpdate& update) {
        return update.outcome == Outcome::Unconfirmed;
    });
}

bool PlannedRun::judge(const SystemReport& report)
{
    const QVector<PlannedUpdate> before = updates;
    for (PlannedUpdate& update : updates) {
        if (update.outcome == Outcome::Unconfirmed)
            judgeUpdate(&update, *this, report);
    }
    return updates != before;
}

QString PlannedRun::summary() const
{
    Count controllers;
    Count cameras;
    for (const PlannedUpdate& update : updates) {
        if (update.outcome != Outcome::Skipped)
            (update.part == Part::CameraFirmware ? cameras : controllers).add(update);
    }
    QStringList texts{countText(controllers, "%1 of %2 controller runs what was planned.",
                                "%1 of %2 controllers run what was planned."),
                      countText(cameras, "%1 of %2 camera runs what was planned.",
                                "%1 of %2 cameras run what was planned."),
                      namesText(updates, Outcome::Failed, tr("Failed: %1.")),
                      namesText(updates, Outcome::Unconfirmed, tr("Unconfirmed: %1."))};
    texts.removeAll(QString());
    return texts.isEmpty() ? tr("Nothing was planned.") : texts.join(QLatin1Char(' '));
}

QVector<ResultColumn> resultColumns()
{
    using Update = const PlannedUpdate&;
    return {
        {ResultField::Device, tr("Device"), nameOf},
        {ResultField::Part, tr("Part"),
         [](Update it) {
             return partText(it.part);
         }},
        {ResultField::From, tr("From"),
         [](Update it) {
             return it.from;
         }},
        {ResultField::Planned, tr("Planned"),
         [](Update it) {
             return it.planned;
         }},
        {ResultField::Found, tr("Found"),
         [](Update it) {
             return it.found.isEmpty() ? QStringLiteral("-") : it.found;
         }},
        {ResultField::Outcome, tr("Outcome"),
         [](Update it) {
             return outcomeText(it.outcome);
         }},
        {ResultField::Remark, tr("Remark"),
         [](Update it) {
             return it.remark;
         }},
    };
}

QStringList resultTexts(const PlannedUpdate& update)
{
    QStringList texts;
    for (const ResultColumn& column : resultColumns())
        texts += column.text(update);
    return texts;
}

QString PlannedRun::logText() const
{
    QVector<QStringList> rows(1);
    for (const ResultColumn& column : resultColumns())
        rows.first() += column.title;
    for (const PlannedUpdate& update : updates)
        rows += resultTexts(update);
    QString text = tr("Update of %1, system at %2").arg(timestamp(started), system);
    text += QStringLiteral("\n\n%1\n\n%2\n").arg(summary(), alignedText(rows));
    for (const Event& event : events)
        text += QStringLiteral("%1  %2\n").arg(timestamp(event.time), event.text);
    return text;
}
