#pragma once

#include "plannedrun.h"

#include <QStringList>

#include <optional>

/// Keeps the runs of the update dialog in a folder: of each a file RUN.json for programs and a log
/// file RUN.log for people. Neither is ever seen half written.
class RunStore
{
public:
    /// @param folder made when it is needed
    explicit RunStore(const QString& folder) : m_folder(folder) {}

    /// Writes both files of @p run anew.
    /// @param error must not be null; receives "FILE: REASON" on failure
    bool save(const PlannedRun& run, QString* error) const;

    /// The last run that can be read. Files that are damaged or of another kind are renamed to
    /// NAME.damaged.
    /// @param problems must not be null; receives one line for each of those
    std::optional<PlannedRun> latest(QStringList* problems) const;

    /// Full path of the log file of @p run.
    QString logFile(const PlannedRun& run) const;

private:
    QString fileBase(const PlannedRun& run) const;

    QString m_folder;
};
