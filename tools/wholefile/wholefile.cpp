#include "wholefile.h"

#include "failure.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int maxSetAside = 1000;

QString systemReason()
{
    return qt_error_string(errno);
}

// The new name of a file is on the disk only when its folder is. Not every file system can tell.
void flushFolderOf(const QString& path)
{
    const int folder = ::open(QFile::encodeName(QFileInfo(path).path()).constData(),
                              O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    ::fsync(folder);
    ::close(folder);
}

// As writeWholeFile(), but *error is the reason alone.
bool replaceFile(const QString& path, const WriteContent& write, QString* error)
{
    const QFileInfo there(path);
    if (there.exists() && !there.isFile())
        return fail(QStringLiteral("is no regular file, so it is left as it is"), error);
    QSaveFile file(path);
    // A buffer would be flushed by commit(), which overlooks that this fails.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return fail(file.errorString(), error);
    if (!write(file, error))
        return false;
    if (::fsync(file.handle()) != 0)
        return fail(systemReason(), error);
    return file.commit() || fail(file.errorString(), error);
}

} // namespace

bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error)
{
    const auto write = [&](QFileDevice& file, QString* reason) {
        return writeAll(file, bytes) || fail(file.errorString(), reason);
    };
    return writeWholeFile(path, write, error);
}

bool writeWholeFile(const QString& path, const WriteContent& write, QString* error)
{
    QString reason;
    if (replaceFile(path, write, &reason)) {
        flushFolderOf(path);
        return true;
    }
    return fail(QStringLiteral("%1: %2").arg(path, reason), error);
}

bool writeAll(QFileDevice& file, const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 written = file.write(bytes.constData() + done, bytes.size() - done);
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

bool isSameFile(const QString& left, const QString& right)
{
    struct stat a = {};
    struct stat b = {};
    return ::stat(QFile::encodeName(left).constData(), &a) == 0 &&
           ::stat(QFile::encodeName(right).constData(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

std::optional<QString> setDamagedFileAside(const QString& path, QString* error)
{
    QFile file(path);
    QString reason = QStringLiteral("is no regular file, so it is left as it is");
    for (int number = 1; QFileInfo(path).isFile() && number <= maxSetAside; ++number) {
        QString aside = path + QLatin1String(".damaged") +
                        (number > 1 ? QStringLiteral("-%1").arg(number) : QString());
        // A link that leads nowhere is not seen as a file, and is no free name either.
        if (QFileInfo::exists(aside) || QFileInfo(aside).isSymLink())
            continue;
        if (file.rename(aside))
            return aside;
        reason = file.errorString();
        break;
    }
    *error = QStringLiteral("%1: cannot be set aside: %2").arg(path, reason);
    return std::nullopt;
}
