#pragma once

#include <QString>
#include <QStringList>

#include <optional>

struct Scenario;

/// @file
/// A module looks for update files and notes beside the program. Where a scenario wants only some
/// of those that are delivered, the frontend runs from a folder of its own that has just these.

/// What keeps a module from reading the update files in @p folder because of their path: one line
/// for each, with what to do about it. Empty if nothing does, or if there is no such folder.
QStringList unreadableUpdateFiles(const QString& folder);

/// Whether @p scenario wants a selection of the delivered files.
bool wantsOwnDelivery(const Scenario& scenario);

/// Lays out "controller_update" and "whats_new" in @p target, anew if they are there already, with
/// the files below @p delivered that @p scenario wants: hard links or copies, so that a whole
/// delivery stays as it was sealed. The folder that @p target stands in was claimed.
/// @param error must not be null; says on failure what is missing or cannot be written
bool layOutFiles(const Scenario& scenario, const QString& delivered, const QString& target,
                 QString* error);

/// Lays out a whole frontend in @p target: the program @p programFile, the modules beside it, and
/// files as layOutFiles() does. What was in @p target is gone then.
/// @param error must not be null; on failure one line as of layOutFiles()
/// @return the program to start instead; nullopt on failure
std::optional<QString> layOutFrontend(const Scenario& scenario, const QString& programFile,
                                      const QString& target, QString* error);
