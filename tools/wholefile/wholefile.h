#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

class QFileDevice;

/// @file
/// Files that are written whole or not at all, and that take nothing from anybody. Safe to use from
/// any thread.

/// Writes @p bytes into the file @p path and waits until they are on the disk; one that stood there
/// stays as it was if that fails. Through a symbolic link the file that it leads to is written.
///
/// Only regular files are replaced: devices, pipes and folders are left as they are.
/// @param error must not be null; on failure "FILE: REASON"
bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error);

/// Writes the content of a file into the device, or tells by false and @p error, which is not null,
/// why the file that stood there has to stay.
using WriteContent = std::function<bool(QFileDevice& device, QString* error)>;

/// The same of what @p write writes into the device, which has no buffer and whose handle() can be
/// read as well.
bool writeWholeFile(const QString& path, const WriteContent& write, QString* error);

/// Writes all of @p bytes into a file that was opened without a buffer. Where the room ends a part
/// is written first, and only the next attempt tells why; then errorString() of @p file has it.
bool writeAll(QFileDevice& file, const QByteArray& bytes);

/// Whether both paths lead to the same file that exists, by whatever name or link.
bool isSameFile(const QString& left, const QString& right);

/// Renames a regular file that is damaged to @p path + ".damaged", or with a number behind it
/// where such a file stands already.
/// @param error must not be null; on failure "FILE: REASON"
/// @return the new path
std::optional<QString> setDamagedFileAside(const QString& path, QString* error);
