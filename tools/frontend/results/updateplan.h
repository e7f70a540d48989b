#pragma once

#include "plannedrun.h"
#include "releasecatalogue.h"

class QAbstractItemModel;

/// @file
/// Reads what an operator plans from the table that the update dialog shows.

/// Whether @p table has the columns of that table.
bool isUpdateTable(const QAbstractItemModel& table);

/// What the run does that starts with a table.
struct UpdatePlan
{
    /// The ticked rows, and as skipped ones those that are not ticked or not possible. The steps of
    /// a chain are one update.
    QVector<PlannedUpdate> updates;
    /// What is sent for, step by step.
    QVector<PlannedUpdate> steps;
};

/// The plan of the run that starts with @p table as it is now.
///
/// The table tells the numbers of versions, and nothing of controller firmware that comes with
/// tracking software.
/// @param before what the devices said when the table was filled; adds their pre-release texts. A
///        controller that did not tell its firmware runs v0.0.0, as it does for the module.
/// @param releases adds what the images tell
UpdatePlan readPlan(const QAbstractItemModel& table, const SystemReport& before,
                    const ReleaseCatalogue& releases);
