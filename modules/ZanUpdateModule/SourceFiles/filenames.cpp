#include "filenames.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

// The version at the start of a text: its digits and dots up to the first letter.
static QString leadingVersion(const QString& text)
{
    QString version;
    for (const QChar character : text) {
        if (character.isLetter())
            break;
        if (character.isNumber() || character == QLatin1Char('.'))
            version += character;
    }
    return version;
}

QString preReleaseOfFileName(const QString& path)
{
    QString text = QFileInfo(path).completeBaseName();
    text = text.section(QLatin1Char('v'), 1, 1).section(QLatin1Char('_'), 0, 0);
    return text.remove(leadingVersion(text));
}

// Depth first, without a limit of depth. A directory that links lead to once more is passed over:
// it holds nothing that was not found the first time, and loops of links would never end.
static QString searchBelow(const QString& directory, const QString& name, QSet<QString>* visited)
{
    const QDir dir(directory);
    if (dir.exists(name))
        return directory + QDir::separator() + name + QDir::separator();
    const QString canonicalPath = dir.canonicalPath();
    if (visited->contains(canonicalPath))
        return QString();
    visited->insert(canonicalPath);

    for (const QString& entry : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString found = searchBelow(directory + QDir::separator() + entry, name, visited);
        // One more separator for each level, which the paths that operators read show.
        if (!found.isEmpty())
            return found + QDir::separator();
    }
    return QString();
}

QString searchDirectory(const QString& directory, const QString& name)
{
    QSet<QString> visited;
    return searchBelow(directory, name, &visited);
}
