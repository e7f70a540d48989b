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

/// A row, or what comes along with it.
struct Step
{
    PlannedUpdate update;
    bool isPossible = true;
};

/// Goes through the rows in the order in which the run takes them.
class Planner
{
public:
    Planner(const SystemReport& before, const ReleaseCatalogue& releases)
        : m_before(before), m_releases(releases)
    {
    }

    void takeRow(const QAbstractItemModel& table, int row);
    UpdatePlan plan() const;

private:
    void addTrackingSoftware(Step step);
    void add(const Step& step);
    QString reportedBy(const PlannedUpdate& update) const;

    const SystemReport& m_before;
    const ReleaseCatalogue& m_releases;
    QVector<Step> m_chains;
    QVector<PlannedUpdate> m_steps;
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
    Step step;
    step.isPossible = text(PossibleColumn) == QLatin1String("yes");
    PlannedUpdate& update = step.update;
    update.device = target->device;
    update.part = target->part;
    update.from = text(FromColumn);
    update.planned = text(ToColumn);
    const bool isTicked =
        table.index(row, UpdateColumn).data(Qt::CheckStateRole).toInt() == Qt::Checked;
    if (!step.isPossible || !isTicked) {
        update.outcome = Outcome::Skipped;
        update.remark = step.isPossible ? tr("It was not ticked.")
                                        : tr("It was not possible from the version that ran.");
    } else {
        update.remark = tr("It has not been asked yet.");
    }
    const bool bringsMore =
        update.part == Part::TrackingSoftware && update.outcome != Outcome::Skipped;
    if (bringsMore)
        addTrackingSoftware(step);
    else
        add(step);
}

UpdatePlan Planner::plan() const
{
    UpdatePlan plan{{}, m_steps};
    for (const Step& chain : m_chains)
        plan.updates += chain.update;
    return plan;
}

void Planner::addTrackingSoftware(Step step)
{
    PlannedUpdate& update = step.update;
    const SystemReport::Controller* controller = m_before.controller(update.device);
    const std::optional<Release> release =
        m_releases.find(reportedVersion(update.planned), controller ? controller->model : 0);
    if (release && release->appendix) {
        update.planned += *release->appendix;
        update.isExact = true;
    }
    add(step);
    if (!release || !controller)
        return;
    const VersionInfo reported =
        controller->ct.isEmpty() ? VersionInfo(0, 0, 0) : reportedVersion(controller->ct);
    const VersionInfo ct = m_ct.value(update.device, reported);
    const VersionInfo newCt = release->ctAfter(ct);
    if (newCt == ct)
        return;
    update.part = Part::ControllerFirmware;
    update.from = ct.toString();
    update.planned = newCt.toString();
    update.isExact = false;
    add(step);
}

void Planner::add(const Step& step)
{
    const PlannedUpdate& update = step.update;
    if (update.outcome != Outcome::Skipped)
        m_steps += update;
    if (update.part == Part::ControllerFirmware && update.outcome != Outcome::Skipped)
        m_ct.insert(update.device, reportedVersion(update.planned));
    const auto chain = std::find_if(m_chains.begin(), m_chains.end(), [&](const Step& it) {
        return it.update.device == update.device && it.update.part == update.part &&
               it.update.outcome == update.outcome && it.isPossible == step.isPossible;
    });
    if (chain != m_chains.end()) {
        chain->update.planned = update.planned;
        chain->update.isExact = update.isExact;
        return;
    }
    m_chains += step;
    m_chains.last().update.from = reportedBy(update);
}

// In the words of the device, if it is the version that the table shows.
QString Planner::reportedBy(const PlannedUpdate& update) const
{
    const QStringList versions = m_before.versions(update.part, update.device);
    const bool isThatVersion =
        versions.size() == 1 && reportedVersion(versions.constFirst()).toString() == update.from;
    return isThatVersion ? versions.constFirst() : update.from;
}

} // namespace

bool isUpdateTable(const QAbstractItemModel& table)
{
    QStringList titles;
    for (int column = 0; column < table.columnCount(); ++column)
        titles += table.headerData(column, Qt::Horizontal).toString();
    return titles == columnTitles();
}

UpdatePlan readPlan(const QAbstractItemModel& table, const SystemReport& before,
                    const ReleaseCatalogue& releases)
{
    Planner planner(before, releases);
    for (int row = 0; row < table.rowCount(); ++row)
        planner.takeRow(table, row);
    return planner.plan();
}
