#include "updatefolder.h"

#include <QDir>
#include <QSet>

namespace {

// In the plug-in's order. What links lead to once more holds nothing that was not found the first
// time, and loops of links would never end.
QString searchBelow(const QString& directory, QSet<QString>* visited)
{
    const QDir dir(directory);
    if (dir.exists(updateFolderName))
        return dir.filePath(updateFolderName);
    const QString canonicalPath = dir.canonicalPath();
    if (visited->contains(canonicalPath))
        return QString();
    visited->insert(canonicalPath);

    for (const QString& entry : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QString found = searchBelow(dir.filePath(entry), visited);
        if (!found.isEmpty())
            return found;
    }
    return QString();
}

} // namespace

QString findUpdateFolder(const QString& applicationDir)
{
    QSet<QString> visited;
    return searchBelow(applicationDir, &visited);
}
