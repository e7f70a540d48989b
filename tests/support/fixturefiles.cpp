#include "fixturefiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

// A test without its fixture proves nothing, so there is no going on.
static void require(bool done, const QString& path)
{
    if (!done)
        qFatal("cannot make the fixture %s", qPrintable(path));
}

QString writeFixture(const QString& path, const QByteArray& bytes)
{
    require(QDir().mkpath(QFileInfo(path).path()), path);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), path);
    return path;
}

FixtureFolder::FixtureFolder()
{
    require(m_folder.isValid(), m_folder.path());
}

QString FixtureFolder::path(const QString& relativePath) const
{
    return m_folder.filePath(relativePath);
}

QString FixtureFolder::write(const QString& relativePath, const QByteArray& bytes) const
{
    return writeFixture(path(relativePath), bytes);
}

QString FixtureFolder::makeFolder(const QString& relativePath) const
{
    QString target = path(relativePath);
    require(QDir().mkpath(target), target);
    return target;
}

QString FixtureFolder::link(const QString& relativePath, const QString& target) const
{
    QString link = path(relativePath);
    require(QDir().mkpath(QFileInfo(link).path()) && QFile::link(path(target), link), link);
    return link;
}
