#pragma once

#include <QByteArray>
#include <QString>

/// @file
/// Files that are written whole or not at all. Safe to use from any thread.

/// Writes @p bytes into the file @p path; one that stood there stays as it was if that fails.
/// @param error must not be null; on failure "FILE: REASON"
bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error);

/// Renames a file that is damaged to @p path + ".damaged", in the place of an earlier one.
void setDamagedFileAside(const QString& path);
