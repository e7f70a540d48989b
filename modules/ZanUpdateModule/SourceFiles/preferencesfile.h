#pragma once

#include <QDomDocument>
#include <QString>

/// @file
/// The preferences file of the update dialog; docs/formats.md describes it.

/// Full path of the preferences file in the folder @p directory.
QString preferencesFile(const QString& directory);

/// Reads the file @p fileName. However it is built, the memory that this takes is bounded.
/// @param complaint must not be null; on failure the line for the host's log, empty otherwise
/// @return the root, and below it the last what's-new setting if there is one: nothing else in the
///         file has a meaning. Not to be used after a failure.
QDomDocument readPreferences(const QString& fileName, QString* complaint);

/// Whether the element @p element is the what's-new setting.
bool isWhatsNewSetting(const QDomElement& element);

/// Whether the what's-new setting @p element asks for the release notes at the next start.
bool isShownAtStart(const QDomElement& element);

/// Replaces the preferences file in the folder @p directory, which is made if it is missing.
/// @return the line for the host's log on failure, empty otherwise
QString writePreferences(const QString& directory, bool showAtStart);
