#include "inputfile.h"

#include <failure.h>

#include <QFileInfo>
#include <QTemporaryFile>

namespace {

constexpr int copyBytes = 256 * 1024;
const QLatin1String standardInput("-");

bool copy(QIODevice& from, QFile& to, QString* error)
{
    while (true) {
        const QByteArray bytes = from.read(copyBytes);
        if (bytes.isEmpty())
            break;
        if (to.write(bytes) != bytes.size())
            return fail(QStringLiteral("%1: %2").arg(to.fileName(), to.errorString()), error);
    }
    return to.flush() || fail(QStringLiteral("%1: %2").arg(to.fileName(), to.errorString()), error);
}

std::unique_ptr<QFile> keepStandardInput(const VerbStreams& streams, QString* error)
{
    auto file = std::make_unique<QTemporaryFile>();
    if (!file->open()) {
        *error = QStringLiteral("%1: %2").arg(file->fileTemplate(), file->errorString());
        return nullptr;
    }
    if (streams.in && !copy(*streams.in, *file, error))
        return nullptr;
    file->seek(0);
    return file;
}

} // namespace

std::unique_ptr<QFile> openInput(const VerbRun& run, const QString& path, QString* error)
{
    if (path == standardInput)
        return keepStandardInput(run.streams(), error);
    const QFileInfo there(path);
    auto file = std::make_unique<QFile>(path);
    if (there.exists() && !there.isFile())
        *error = path + QStringLiteral(": is no regular file");
    else if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        *error = QStringLiteral("%1: %2").arg(path, file->errorString());
    else
        return file;
    return nullptr;
}

std::optional<ScannedFile> scanInput(VerbRun& run, const QString& path, QString* error)
{
    const std::unique_ptr<QFile> file = openInput(run, path, error);
    if (!file)
        return std::nullopt;
    ScanEvents events;
    events.progress = [&](qint64 done, qint64 total) {
        run.showProgress(path, done, total);
    };
    ScannedFile scanned = scanUpdateFile(*file, events);
    if (scanned.error.isEmpty())
        return scanned;
    *error = QStringLiteral("%1: %2").arg(path, scanned.error);
    return std::nullopt;
}

bool namesStandardInputOnce(const VerbRun& run, QString* error)
{
    return run.arguments().count(standardInput) <= 1 ||
           fail(QStringLiteral("- is the standard input, which can be read only once."), error);
}
