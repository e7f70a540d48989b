#include "updateplan.h"

#include <reportedversion.h>

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QHash>

#include <algorithm>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("UpdatePlan", text);
}

enum Column
{
    UpdateColumn,
    TypeColumn,
    FromColumn,
    ToColumn,
    PossibleColumn,
};

const QStringList& columnTitles()
{
    static const QStringList titles = {"Update", "Type", "From", "To", "Possible?", "Reboot?"};
    return titles;
}

/// What a row of the table is about.
struct Target
{
    Part part;
    QString device;
};

// The types read "Firmware update (zan-master)"; a camera without a name has no parentheses.
std::optional<Target> targetOf(const QString& type)
{
    static const struct
    {
        QString words;
        Part part;
    } kinds[] = {{"Firmware update", Part::TrackingSoftware},
                 {"System update", Part::ControllerFirmware},
                 {"Camera firmware update", Part::CameraFirmware}};
    for (const auto& kind : kinds) {
        if (type == kind.words)
            return Target{kind.part, QString()};
        const int start = kind.words.size() + 2;
        if (type.startsWith(kind.words + QLatin1String(" (")) && type.endsWith(QLatin1Char(')')))
            return Target{kind.part, type.mid(start, type.size() - start - 1)};
    }
    return std::nullopt;
}

/// Goes through the rows in the order in which the run takes them.
class Planner
{
public:
    Planner(const SystemReport& before, const ReleaseCatalogue& releases)
        : m_before(before), m_releases(releases)
    {
    }

    void takeRow(const QAbstractItemModel& table, int row);
    const QVector<PlannedUpdate>& updates() const { return m_updates; }

private:
    void addTrackingSoftware(PlannedUpdate step);
    void add(const PlannedUpdate& step);
    QString reportedBy(const PlannedUpdate& step) const;

    const SystemReport& m_before;
    const ReleaseCatalogue& m_releases;
    QVector<PlannedUpdate> m_updates;
    QHash<QString, VersionInfo> m_ct; // by host name, as far as the run has come
};

void Planner::takeRow(const QAbstractItemModel& table, int row)
{
    const auto text = [&](int column) {
        return table.index(row, column).data().toString();
    };
    const std::optional<Target> target = targetOf(text(TypeColumn));
    if (!target)
        return;
    PlannedUpdate step;
    step.device = target->device;
    step.part = target->part;
    step.from = text(FromColumn);
    step.planned = text(ToColumn);
    const bool isTicked =
        table.index(row, UpdateColumn).data(Qt::CheckStateRole).toInt() == Qt::Checked;
    const bool isPossible = text(PossibleColumn) == QLatin1String("yes");
    if (!isPossible || !isTicked) {
        step.outcome = Outcome::Skipped;
        step.remark = isPossible ? tr("It was not ticked.")
                                 : tr("It was not possible from the version that ran.");
    } else {
        step.remark = tr("It has not been asked yet.");
    }
    const bool bringsMore = step.part == Part::TrackingSoftware && step.outcome != Outcome::Skipped;
    if (bringsMore)
        addTrackingSoftware(step);
    else
        add(step);
}

void Planner::addTrackingSoftware(PlannedUpdate step)
{
    const SystemReport::Controller* controller = m_before.controller(step.device);
    const std::optional<Release> release =
        m_releases.find(reportedVersion(step.planned), controller ? controller->model : 0);
    if (release && release->appendix) {
        step.planned += *release->appendix;
        step.isExact = true;
    }
    add(step);
    if (!release || !controller || controller->ct.isEmpty())
        return;
    const VersionInfo ct = m_ct.value(step.device, reportedVersion(controller->ct));
    const VersionInfo newCt = release->ctAfter(ct);
    if (newCt == ct)
        return;
    step.part = Part::ControllerFirmware;
    step.from = ct.toString();
    step.planned = newCt.toString();
    step.isExact = false;
    add(step);
}

void Planner::add(const PlannedUpdate& step)
{
    if (step.part == Part::ControllerFirmware && step.outcome != Outcome::Skipped)
        m_ct.insert(step.device, reportedVersion(step.planned));
    const auto chain =
        std::find_if(m_updates.begin(), m_updates.end(), [&](const PlannedUpdate& it) {
            return it.device == step.device && it.part == step.part && it.remark == step.remark;
        });
    if (chain != m_updates.end()) {
        chain->planned = step.planned;
        chain->isExact = step.isExact;
        return;
    }
    m_updates += step;
    m_updates.last().from = reportedBy(step);
}

// In the words of the device, if it is the version that the table shows.
QString Planner::reportedBy(const PlannedUpdate& step) const
{
    const QStringList versions = m_before.versions(step.part, step.device);
    const bool isThatVersion =
        versions.size() == 1 && reportedVersion(versions.constFirst()).toString() == step.from;
    return isThatVersion ? versions.constFirst() : step.from;
}

} // namespace

bool isUpdateTable(const QAbstractItemModel& table)
{
    QStringList titles;
    for (int column = 0; column < table.columnCount(); ++column)
        titles += table.headerData(column, Qt::Horizontal).toString();
    return titles == columnTitles();
}

QVector<PlannedUpdate> plannedUpdates(const QAbstractItemModel& table, const SystemReport& before,
                                      const ReleaseCatalogue& releases)
{
    Planner planner(before, releases);
    for (int row = 0; row < table.rowCount(); ++row)
        planner.takeRow(table, row);
    return planner.updates();
}
