#include "deliverylayout.h"

#include <ownfolder.h>
#include <releasecatalogue.h>
#include <scenario.h>
#include <updatefolder.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace {

const QLatin1String modulesFolder("modules");

/// One of the two folders that a module looks into, and what a scenario wants of it.
struct Selection
{
    QString key; ///< of the scenario
    QString folder;
    QString from; ///< full path of the folder that the files are in
    const std::optional<QStringList>& wanted;
};

bool link(const QString& file, const QString& name, QString* error)
{
    if (QFile::link(file, name))
        return true;
    *error = QStringLiteral("%1 cannot be written").arg(name);
    return false;
}

// For what must not be a symbolic link: a running program is known by where it really is, and no
// sealed folder holds links.
bool linkHard(const QString& file, const QString& copy, QString* error)
{
    const bool isLinked = ::linkat(AT_FDCWD, QFile::encodeName(file).constData(), AT_FDCWD,
                                   QFile::encodeName(copy).constData(), AT_SYMLINK_FOLLOW) == 0;
    if (isLinked || QFile::copy(file, copy))
        return true;
    *error = QStringLiteral("%1 cannot be copied to %2").arg(file, copy);
    return false;
}

bool renewFolder(const QString& folder, QString* error)
{
    const QFileInfo there(folder);
    // Of a link to a folder, only the link goes.
    if (there.exists() && !there.isDir()) {
        *error = QStringLiteral("%1: is no folder, so it is left as it is").arg(folder);
        return false;
    }
    if (!removeAll(folder, error))
        return false;
    if (QDir().mkpath(folder))
        return true;
    *error = QStringLiteral("%1: the folder cannot be made").arg(folder);
    return false;
}

std::optional<QStringList> filesOf(const Selection& selection, const QDir& from, QString* error)
{
    const QStringList delivered = from.entryList(QDir::Files);
    QStringList wanted = selection.wanted.value_or(delivered);
    for (const QString& name : qAsConst(wanted)) {
        if (delivered.contains(name))
            continue;
        *error = QStringLiteral("%1: \"%2\" is not among the files in %3")
                     .arg(selection.key, name, from.path());
        return std::nullopt;
    }
    return wanted;
}

bool layOut(const Selection& selection, const QString& target, QString* error)
{
    const QDir from(selection.from);
    const QString to = target + QLatin1Char('/') + selection.folder;
    const std::optional<QStringList> files = filesOf(selection, from, error);
    // The pictures that notes refer to stand in folders.
    const QStringList folders = from.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    if (!files || !renewFolder(to, error))
        return false;
    const auto place = [&](const QString& name, auto how) {
        return how(from.absoluteFilePath(name), to + QLatin1Char('/') + name, error);
    };
    return std::all_of(files->begin(), files->end(),
                       [&](const QString& name) { return place(name, linkHard); }) &&
           std::all_of(folders.begin(), folders.end(),
                       [&](const QString& name) { return place(name, link); });
}

// Each once, in quotes, as a message lists them; empty if there are none.
QString lettersBeyondAscii(const QString& path)
{
    QStringList letters;
    for (const uint letter : path.toUcs4()) {
        if (letter > 0x7F)
            letters += QStringLiteral("\"%1\"").arg(QString::fromUcs4(&letter, 1));
    }
    letters.removeDuplicates();
    return letters.join(QStringLiteral(", "));
}

// Whether a module, which opens files by the Latin-1 form of their path, finds this one.
bool isFoundByModules(const QString& path)
{
    return lettersBeyondAscii(path).isEmpty() || ::access(path.toLatin1().constData(), F_OK) == 0;
}

} // namespace

QStringList unreadableUpdateFiles(const QString& folder)
{
    const QStringList names = QDir(folder).entryList(QDir::Files);
    if (!names.isEmpty() && !isFoundByModules(folder)) {
        return {QStringLiteral("The module cannot read the update files in %1 because of %2 in "
                               "the path. Move the frontend to a folder whose path has no such "
                               "letters.")
                    .arg(folder, lettersBeyondAscii(folder))};
    }
    QStringList lines;
    for (const QString& name : names) {
        const QString path = folder + QLatin1Char('/') + name;
        if (!isFoundByModules(path)) {
            lines += QStringLiteral("The module cannot read the update file %1 because of %2 in "
                                    "its name. Give it a name without such letters.")
                         .arg(path, lettersBeyondAscii(name));
        }
    }
    return lines;
}

bool wantsOwnDelivery(const Scenario& scenario)
{
    return scenario.updateFiles || scenario.notes || !scenario.updateFolder.isEmpty();
}

bool layOutFiles(const Scenario& scenario, const QString& delivered, const QString& target,
                 QString* error)
{
    const QString notesFolder = QStringLiteral("whats_new");
    const QString updatesFrom =
        scenario.updateFolder.isEmpty() ? updateFolder(delivered) : scenario.updateFolder;
    if (!QDir(updatesFrom).exists() && !scenario.updateFolder.isEmpty()) {
        *error = QStringLiteral("updateFolder: there is no folder %1").arg(updatesFrom);
        return false;
    }
    const Selection updates = {QStringLiteral("updateFiles"), updateFolderName, updatesFrom,
                               scenario.updateFiles};
    const Selection notes = {QStringLiteral("notes"), notesFolder,
                             delivered + QLatin1Char('/') + notesFolder, scenario.notes};
    return layOut(updates, target, error) && layOut(notes, target, error);
}

std::optional<QString> layOutFrontend(const Scenario& scenario, const QString& programFile,
                                      const QString& target, QString* error)
{
    const QFileInfo program(programFile);
    const QString copy = target + QLatin1Char('/') + program.fileName();
    const bool isDone = renewFolder(target, error) &&
                        layOutFiles(scenario, program.path(), target, error) &&
                        link(program.path() + QLatin1Char('/') + modulesFolder,
                             target + QLatin1Char('/') + modulesFolder, error) &&
                        linkHard(programFile, copy, error);
    return isDone ? std::make_optional(copy) : std::nullopt;
}
