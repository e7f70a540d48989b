#pragma once

#include "plannedrun.h"
#include "releasecatalogue.h"

class QAbstractItemModel;

/// @file
/// Reads what an operator plans from the table that the update dialog shows.

/// Whether @p table has the columns of that table.
bool isUpdateTable(const QAbstractItemModel& table);

/// The updates of the run that starts with @p table as it is now: the ticked rows, and as skipped
/// ones those that are not ticked or not possible.
///
/// The table tells the numbers of versions, and nothing of controller firmware that comes with
/// tracking software.
/// @param before what the devices said when the table was filled; adds their pre-release texts
/// @param releases adds what the images tell
QVector<PlannedUpdate> plannedUpdates(const QAbstractItemModel& table, const SystemReport& before,
                                      const ReleaseCatalogue& releases);
