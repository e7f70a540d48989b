#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// Writes a file at a full path, making the folders above it; ends the test program if that fails.
/// @return @p path
QString writeFixture(const QString& path, const QByteArray& bytes);

/// A folder of files for one test, which goes with this object.
class FixtureFolder
{
public:
    FixtureFolder();

    QString path() const { return m_folder.path(); }
    /// Full path of @p relativePath below the folder, whether there is such a file or not.
    QString path(const QString& relativePath) const;
    /// Writes a file, making the folders above it. @return its full path
    QString write(const QString& relativePath, const QByteArray& bytes) const;
    /// Makes a folder and those above it. @return its full path
    QString makeFolder(const QString& relativePath) const;
    /// Makes a symbolic link @p relativePath to @p target, a path below the folder.
    QString link(const QString& relativePath, const QString& target) const;

private:
    QTemporaryDir m_folder;
};
