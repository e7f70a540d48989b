#include "ownfolder.h"

#include "wholefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

const QLatin1String markName(".vornix3-state");
const char markText[] =
    "The programs of VORNIX3 keep their state in this folder. They may change and remove anything "
    "in it.\n";

std::filesystem::path nativePath(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

QString textOf(const std::error_code& code)
{
    return QString::fromLocal8Bit(code.message().c_str());
}

// Empty if it is there.
QString reasonNotMade(const QString& folder)
{
    std::error_code code;
    std::filesystem::create_directories(nativePath(folder), code);
    if (QFileInfo(folder).isDir())
        return QString();
    return QStringLiteral("the folder cannot be made: %1")
        .arg(code ? textOf(code) : textOf(std::make_error_code(std::errc::not_a_directory)));
}

// Writes a new file. Empty if it is there, maybe by another program at the same time.
QString reasonNotWritten(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return QFileInfo(file).isFile() ? QString() : file.errorString();
    if (writeAll(file, markText))
        return QString();
    const QString reason = file.errorString();
    file.remove();
    return reason;
}

bool isRootOrHome(const QString& folder)
{
    const QString real = QFileInfo(folder).canonicalFilePath();
    return real == QDir::rootPath() || real == QFileInfo(QDir::homePath()).canonicalFilePath();
}

bool holdsMore(const QString& folder, const QStringList& known)
{
    const QStringList names = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden |
                                                     QDir::System | QDir::NoDotAndDotDot);
    return std::any_of(names.begin(), names.end(), [&](const QString& name) {
        return name != FolderLock::fileName() && !known.contains(name);
    });
}

// A lock that cannot be written does not tell why.
QString reasonNotLocked(const QString& lock)
{
    const QString probe = lock + QLatin1String(".probe");
    const QString reason = reasonNotWritten(probe);
    if (!reason.isEmpty())
        return reason;
    QFile::remove(probe);
    return QStringLiteral("%1 cannot be made").arg(lock);
}

} // namespace

bool claimFolder(const QString& folder, const QStringList& known, QString* error)
{
    QString reason = reasonNotMade(folder);
    if (reason.isEmpty() && QFileInfo(folder + QLatin1Char('/') + markName).isFile())
        return true;
    if (reason.isEmpty() && (isRootOrHome(folder) || holdsMore(folder, known)))
        reason = QStringLiteral("the folder holds what is not of this program, so nothing in it is "
                                "touched; name a new or an empty folder");
    if (reason.isEmpty())
        reason = reasonNotWritten(folder + QLatin1Char('/') + markName);
    if (reason.isEmpty())
        return true;
    *error = QStringLiteral("%1: %2").arg(folder, reason);
    return false;
}

bool removeAll(const QString& path, QString* error)
{
    std::error_code code;
    std::filesystem::remove_all(nativePath(path), code);
    if (!code)
        return true;
    *error = QStringLiteral("%1: cannot be removed: %2").arg(path, textOf(code));
    return false;
}

FolderLock::FolderLock(const QString& folder)
    : m_folder(folder), m_file(folder + QLatin1Char('/') + fileName())
{
    // By its age the lock of a program that runs for long would count as left behind.
    m_file.setStaleLockTime(0);
}

bool FolderLock::take(int timeoutMs, QString* error)
{
    QString why = reasonNotMade(m_folder);
    if (why.isEmpty() && m_file.tryLock(timeoutMs))
        return true;
    *error = QStringLiteral("%1: %2").arg(m_folder, why.isEmpty() ? reason() : why);
    return false;
}

QString FolderLock::reason() const
{
    const QString path = m_folder + QLatin1Char('/') + fileName();
    if (m_file.error() != QLockFile::LockFailedError)
        return QStringLiteral("the folder cannot be written: %1").arg(reasonNotLocked(path));
    qint64 process = 0;
    QString host;
    QString program;
    if (!m_file.getLockInfo(&process, &host, &program))
        return QStringLiteral("%1 is no lock of this program; remove it if no other program uses "
                              "the folder")
            .arg(path);
    const QString text =
        QStringLiteral("%1 uses this folder, process %2").arg(program).arg(process);
    if (host == QSysInfo::machineHostName())
        return text + QStringLiteral("; end it first, or name another folder");
    // Nobody here can see whether it still lives.
    return text +
           QStringLiteral(" on %1; end it first, or remove %2 if it has ended").arg(host, path);
}
