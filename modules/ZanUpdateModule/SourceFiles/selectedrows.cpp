#include "selectedrows.h"

#include "ZanController.h"
#include "ZanData.h"
#include "ZanDisplay.h"
#include "globaldefines.h"
#include "supportedcontrollers.h"

#include <algorithm>

static void add(const ZanDisplay& row, SelectedVersions* versions)
{
    if (row.controller()) {
        versions->lowestInstalled =
            std::min(versions->lowestInstalled, row.controller()->getVersionLumasolver());
        ++versions->controllerRows;
    }
    if (!row.update())
        return;
    // Measured against the lowest version seen so far, so the order of the rows counts.
    const VersionInfo offered = row.update()->newPtVersion();
    if (versions->lowestInstalled.major() < offered.major())
        versions->highestOffered = std::max(versions->highestOffered, offered);
}

SelectedVersions SelectedVersions::of(const QList<ZanDisplay*>& rows)
{
    SelectedVersions versions;
    for (const ZanDisplay* row : rows) {
        if (row->toBeUpdated() && row->type() != CAMERA_UPDATE)
            add(*row, &versions);
    }
    return versions;
}

static bool isCounted(const ZanDisplay& row, const BackendVersions* beVers)
{
    if (!row.toBeUpdated() || !row.updatePossible())
        return false;
    const ZanController* controller = row.controller();
    if (!controller || !controller->isSlave())
        return true;
    return protocolAtLeast(beVers, PROTOCOL_CASCADE) && !controller->ip().isEmpty();
}

int countedBlocks(const QList<ZanDisplay*>& rows, const BackendVersions* beVers)
{
    int blocks = 0;
    for (const ZanDisplay* row : rows) {
        if (isCounted(*row, beVers))
            blocks += row->updateIndexes().size();
    }
    return blocks;
}

// Looks at the rows, greyed ones included, and not at the list of controllers.
bool isPartOfCascade(const QList<ZanDisplay*>& rows)
{
    const bool hasSlaves = std::any_of(rows.begin(), rows.end(), [](const ZanDisplay* row) {
        return row->controller() && row->controller()->isSlave();
    });
    const auto selected = std::count_if(rows.begin(), rows.end(),
                                        [](const ZanDisplay* row) { return row->toBeUpdated(); });
    return hasSlaves && selected > 0 && selected < rows.size();
}

QList<ZanController*> discontinuedControllers(const QList<ZanDisplay*>& rows)
{
    QList<ZanController*> controllers;
    for (const ZanDisplay* row : rows) {
        if (!row->toBeUpdated() || row->type() == CAMERA_UPDATE)
            continue;
        if (row->controller() && isDiscontinued(*row->controller()))
            controllers.append(row->controller());
    }
    return controllers;
}
