#pragma once

#include <imagescan.h>
#include <verb.h>

#include <QFile>

#include <memory>

/// @file
/// Update files as verbs take them: a file, or the standard input by the name "-".

/// Opens @p path for scanUpdateFile(). What comes through the standard input is kept in a temporary
/// file, as it is not read from its beginning to its end alone.
/// @param error must not be null; on failure "FILE: REASON"
/// @return null on failure
std::unique_ptr<QFile> openInput(const VerbRun& run, const QString& path, QString* error);

/// Scans @p path, with its progress on a terminal.
/// @param error must not be null; on failure "FILE: REASON"
std::optional<ScannedFile> scanInput(VerbRun& run, const QString& path, QString* error);

/// Whether @p run names the standard input once at the most, as it can be read only once.
/// @param error must not be null; on failure one line
bool namesStandardInputOnce(const VerbRun& run, QString* error);
