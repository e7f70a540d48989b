#include "output.h"

#include <failure.h>

#include <QTemporaryFile>

#include <algorithm>

namespace {

constexpr int copyBytes = 256 * 1024;

bool copy(QTemporaryFile& from, QIODevice& to, QString* error)
{
    from.seek(0);
    while (!from.atEnd()) {
        const QByteArray bytes = from.read(copyBytes);
        if (bytes.isEmpty())
            return fail(from.errorString(), error);
        if (to.write(bytes) != bytes.size())
            return fail(QStringLiteral("standard output: ") + to.errorString(), error);
    }
    return true;
}

// What is written has to be read again, which a pipe cannot do.
bool writeToStandardOutput(const VerbStreams& streams, const WriteContent& write, QString* error)
{
    QIODevice* out = streams.out.device();
    if (!out)
        return fail(QStringLiteral("there is no standard output"), error);
    QTemporaryFile file;
    if (!file.open())
        return fail(file.fileTemplate() + QStringLiteral(": ") + file.errorString(), error);
    if (!write(file, error))
        return false;
    file.flush();
    streams.out.flush();
    return copy(file, *out, error);
}

} // namespace

bool writeOutput(VerbRun& run, const QString& path, const QStringList& inputs,
                 const WriteContent& write, QString* error)
{
    if (path == QLatin1String("-"))
        return writeToStandardOutput(run.streams(), write, error);
    const bool isInput = std::any_of(inputs.begin(), inputs.end(),
                                     [&](const QString& input) { return isSameFile(input, path); });
    if (isInput)
        return fail(path +
                        QStringLiteral(": is what the output is made from, so it is left as it is"),
                    error);
    bool isOwnReason = false;
    const auto guarded = [&](QFileDevice& device, QString* reason) {
        const bool isWritten = write(device, reason);
        isOwnReason = !isWritten && device.error() == QFileDevice::NoError;
        return isWritten;
    };
    QString reason;
    if (writeWholeFile(path, guarded, &reason))
        return true;
    // What the writer says has its own file names; what the system says is about this one.
    return fail(isOwnReason ? reason.mid(path.size() + 2) : reason, error);
}
