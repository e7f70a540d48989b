#include "deliverylayout.h"

#include <scenario.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

namespace {

const QLatin1String modulesFolder("modules");
const QLatin1String updatesFolder("controller_update");

/// One of the two folders that a module looks into, and what a scenario wants of it.
struct Selection
{
    QString key; ///< of the scenario
    QString folder;
    const std::optional<QStringList>& wanted;
};

bool link(const QString& file, const QString& name, QString* error)
{
    if (QFile::link(file, name))
        return true;
    *error = QStringLiteral("%1 cannot be written").arg(name);
    return false;
}

bool renewFolder(const QString& folder, QString* error)
{
    // A link to a folder would have what it points to emptied.
    if (QFileInfo(folder).isSymLink())
        QFile::remove(folder);
    if (QDir(folder).removeRecursively() && QDir().mkpath(folder))
        return true;
    *error = QStringLiteral("%1 cannot be laid out anew").arg(folder);
    return false;
}

QStringList filesOf(const Selection& selection, const QDir& from, QString* error)
{
    const QStringList delivered = from.entryList(QDir::Files);
    const QStringList wanted = selection.wanted.value_or(delivered);
    for (const QString& name : wanted) {
        if (!delivered.contains(name)) {
            *error = QStringLiteral("%1: \"%2\" is not among the files in %3")
                         .arg(selection.key, name, from.path());
        }
    }
    return wanted;
}

bool layOut(const Selection& selection, const QString& delivered, const QString& target,
            QString* error)
{
    const QDir from(delivered + QLatin1Char('/') + selection.folder);
    const QString to = target + QLatin1Char('/') + selection.folder;
    error->clear();
    QStringList names = filesOf(selection, from, error);
    // The pictures that notes refer to stand in folders.
    names += from.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    if (!error->isEmpty() || !renewFolder(to, error))
        return false;
    for (const QString& name : qAsConst(names)) {
        if (!link(from.absoluteFilePath(name), to + QLatin1Char('/') + name, error))
            return false;
    }
    return true;
}

// The program must not be a symbolic link, since a running program is known by where it really is.
bool layOutProgram(const QString& programFile, const QString& copy, QString* error)
{
    const bool isLinked = ::link(QFile::encodeName(programFile).constData(),
                                 QFile::encodeName(copy).constData()) == 0;
    if (isLinked || QFile::copy(programFile, copy))
        return true;
    *error = QStringLiteral("%1 cannot be copied to %2").arg(programFile, copy);
    return false;
}

} // namespace

QString updateFolder(const QString& programDir)
{
    return programDir + QLatin1Char('/') + updatesFolder;
}

bool wantsOwnDelivery(const Scenario& scenario)
{
    return scenario.updateFiles || scenario.notes;
}

bool layOutFiles(const Scenario& scenario, const QString& delivered, const QString& target,
                 QString* error)
{
    const Selection updates = {QStringLiteral("updateFiles"), updatesFolder, scenario.updateFiles};
    const Selection notes = {QStringLiteral("notes"), QStringLiteral("whats_new"), scenario.notes};
    return layOut(updates, delivered, target, error) && layOut(notes, delivered, target, error);
}

QString layOutFrontend(const Scenario& scenario, const QString& programFile, const QString& target,
                       QString* error)
{
    const QFileInfo program(programFile);
    const QString copy = target + QLatin1Char('/') + program.fileName();
    const bool isDone = renewFolder(target, error) &&
                        layOutFiles(scenario, program.path(), target, error) &&
                        link(program.path() + QLatin1Char('/') + modulesFolder,
                             target + QLatin1Char('/') + modulesFolder, error) &&
                        layOutProgram(programFile, copy, error);
    return isDone ? copy : QString();
}
