#include "stepsback.h"

#include "releasecatalogue.h"

#include <reportedversion.h>

#include <QCoreApplication>

#include <algorithm>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("StepsBack", text);
}

// A part that is not told counts as 0: 1.4 and 1.4.0 are one version to people.
DeliveredVersion versionOf(const QString& text)
{
    const VersionInfo version = reportedVersion(text);
    return {{qMax(0, version.ma), qMax(0, version.mi), qMax(0, version.pa)},
            reportedAppendix(text)};
}

bool isBelow(const QString& version, const QString& other)
{
    return versionOf(other).isNewerThan(versionOf(version));
}

// Of several devices of one name the one that is meant may be any, so nothing is said against the
// lowest.
QString lowestOf(QStringList versions)
{
    const auto lowest = std::min_element(versions.cbegin(), versions.cend(), isBelow);
    return lowest == versions.cend() ? QString() : *lowest;
}

} // namespace

QVector<StepBack> stepsBack(const QVector<PlannedUpdate>& steps, const SystemReport& now,
                            const SystemReport& known)
{
    QVector<StepBack> found;
    for (const PlannedUpdate& step : steps) {
        QString runs = lowestOf(now.versions(step.part, step.device));
        if (runs.isEmpty())
            runs = lowestOf(known.versions(step.part, step.device));
        if (!runs.isEmpty() && !isBelow(step.planned, runs))
            continue;
        const auto same = std::find_if(found.begin(), found.end(), [&](const StepBack& it) {
            return it.device == step.device && it.part == step.part;
        });
        if (same == found.end())
            found.append({step.device, step.part, runs, step.planned});
        else if (isBelow(step.planned, same->lowest))
            same->lowest = step.planned;
    }
    return found;
}

QString stepBackText(const StepBack& step)
{
    const QString device = step.device.isEmpty() ? tr("a device without a name") : step.device;
    const QString part = tr("%1 of %2").arg(partText(step.part), device);
    return step.runs.isEmpty()
               ? tr("%1: does not tell what it runs, would get %2").arg(part, step.lowest)
               : tr("%1: runs %2, would get %3").arg(part, step.runs, step.lowest);
}
