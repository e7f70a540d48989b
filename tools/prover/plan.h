#pragma once

#include "deliveredfiles.h"

#include <scenario.h>

#include <QJsonObject>
#include <QString>
#include <QVector>

#include <optional>

/// @file
/// What the update dialog would show on a system with a delivery beside the frontend.

/// One row of the update table.
struct PlannedRow
{
    QString device;        ///< host name of a controller; "c01" for the first camera
    QString file;          ///< name of the update file; empty for the row that offers nothing
    QString type;          ///< the texts of the table's columns
    QString from;          ///< version before the run
    QString to;            ///< version after the run
    QString possible;      ///< yes, no or nothing
    QString reboot;        ///< yes, no or nothing
    bool isTicked = false; ///< in the table as it is first shown
    QVector<int> blocks;   ///< indexes into the image's block table, in the order of sending
    int commands = 0;      ///< texts that go to the controllers: records and redirections
    int seconds = 0;       ///< the plug-in's estimate for the row
};

/// An update file without a row for a device, or for any.
struct FileWithoutRow
{
    QString device; ///< empty: it gives no device a row
    QString file;   ///< name of the update file
    QString reason; ///< one sentence
};

/// The update table, and what is not in it.
struct UpdatePlan
{
    bool asksForUpdate = false;         ///< the dialog opens by itself because of the controllers
    QVector<PlannedRow> rows;           ///< as in the table
    QVector<FileWithoutRow> withoutRow; ///< by device, where one is concerned
    int commands = 0;                   ///< of the rows that are ticked
    int seconds = 0; ///< what the dialog says at the start of a run with them; 0 for none
};

/// Plans for the system of @p scenario, before anything has been sent to it.
UpdatePlan planUpdates(const DeliveredFiles& delivery, const Scenario& scenario);

/// The model number of the family BRIARSCOPE3; 0, 2 and 20 are of the family ZAN.
constexpr int briarscopeModel = 21;

/// A system of one controller with the texts that it reports: "v3.1.0-beta.2", "v1.2".
Scenario singleController(const QString& pt, const QString& ct, int model);

/// The plan for people.
QString planText(const UpdatePlan& plan);
/// The plan for programs.
QJsonObject planJson(const UpdatePlan& plan);
