#pragma once

#include <QLockFile>
#include <QString>
#include <QStringList>

/// @file
/// Folders that programs keep their things in. They change and remove nothing in a folder that was
/// not given to them: one that bears their mark, which they leave in new and empty ones.

/// Makes @p folder, if it is not there, and leaves the mark in it, if it is empty.
///
/// The user's home and the root of all folders are never taken. Symbolic links are followed.
/// @param known names of files that may stand in it without the mark
/// @param error must not be null; on failure "FOLDER: REASON"
/// @return false if the folder belongs to somebody else, or cannot be made or written
bool claimFolder(const QString& folder, const QStringList& known, QString* error);

/// Removes what stands at @p path, a folder with all that is in it as well. Of a symbolic link only
/// the link goes. To be used below a folder that was claimed.
/// @param error must not be null; on failure "PATH: REASON"
/// @return whether nothing is left; true as well if nothing was there
bool removeAll(const QString& path, QString* error);

/// Keeps other processes away from what is kept in a folder, by a file "lock" in it, as long as the
/// object lives. A lock that a dead process left behind does not count.
class FolderLock
{
public:
    /// @param folder made by take() if it is not there
    explicit FolderLock(const QString& folder);

    /// @param timeoutMs how long to wait for another process that is about to end
    /// @param error must not be null; on failure "FOLDER: REASON", which names the other process,
    ///        or why the lock cannot be written
    bool take(int timeoutMs, QString* error);

    /// Name of the file in the folder.
    static QString fileName() { return QStringLiteral("lock"); }

private:
    QString reason() const;

    QString m_folder;
    QLockFile m_file;
};
