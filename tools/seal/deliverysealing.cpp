#include "deliverysealing.h"

#include "checksumlist.h"
#include "openfolder.h"

#include <wholefile.h>

#include <QFile>
#include <QStringList>

#include <algorithm>

namespace {

using Outcome = DeliverySealing::Outcome;
using Entries = QVector<OpenFolder::Entry>;

QString pathOf(const QString& folder, const QByteArray& name)
{
    return QStringLiteral("%1/%2").arg(folder, shownName(name));
}

// What keeps a folder from being sealed, one line each.
QStringList obstaclesIn(const QString& folder, const Entries& entries)
{
    QStringList obstacles;
    for (const OpenFolder::Entry& entry : entries) {
        if (entry.kind != OpenFolder::Entry::Kind::File)
            obstacles += QStringLiteral("%1: %2; only files can be sealed")
                             .arg(pathOf(folder, entry.name), entry.kindText());
    }
    const bool isEmpty = std::all_of(entries.begin(), entries.end(),
                                     [](const auto& entry) { return isPartOfSeal(entry.name); });
    if (isEmpty)
        obstacles += QStringLiteral("%1: holds no file to be sealed").arg(folder);
    return obstacles;
}

qint64 bytesOf(const Entries& entries)
{
    qint64 bytes = 0;
    for (const OpenFolder::Entry& entry : entries)
        bytes += isPartOfSeal(entry.name) ? 0 : entry.size;
    return bytes;
}

// A signature that stays behind must not sign another list than the one beside it.
bool wouldOrphanSignature(const QString& folder, const QByteArray& newList)
{
    QFile list(folder + QLatin1Char('/') + QLatin1String(checksumListName));
    if (!QFile::exists(folder + QLatin1Char('/') + QLatin1String(signatureName)))
        return false;
    return !list.open(QIODevice::ReadOnly) || list.read(newList.size() + 1) != newList;
}

} // namespace

Outcome DeliverySealing::seal(const QString& folder, int* files, QString* error) const
{
    QByteArray list;
    const Outcome outcome = makeList(folder, &list, error);
    if (outcome != Outcome::Done)
        return outcome;
    *files = list.count('\n');
    if (!m_key && wouldOrphanSignature(folder, list)) {
        *error = QStringLiteral("%1/%2: signs an earlier SHA256SUMS; seal with a key, or remove it")
                     .arg(folder, QLatin1String(signatureName));
        return Outcome::CannotSeal;
    }
    const auto write = [&](const char* name, const QByteArray& bytes) {
        return writeWholeFile(folder + QLatin1Char('/') + QLatin1String(name), bytes, error);
    };
    if (!write(checksumListName, list))
        return Outcome::CannotWrite;
    if (m_key && !write(signatureName, m_key->sign(list, m_comment.toUtf8())))
        return Outcome::CannotWrite;
    return Outcome::Done;
}

Outcome DeliverySealing::makeList(const QString& folder, QByteArray* list, QString* error) const
{
    QString reason;
    const std::optional<OpenFolder> opened = OpenFolder::open(folder, &reason);
    const std::optional<Entries> entries = opened ? opened->entries(&reason) : std::nullopt;
    if (!entries) {
        *error = QStringLiteral("%1: %2").arg(folder, reason);
        return Outcome::CannotRead;
    }
    const QStringList obstacles = obstaclesIn(folder, *entries);
    if (!obstacles.isEmpty()) {
        *error = obstacles.join(QLatin1Char('\n'));
        return Outcome::CannotSeal;
    }

    QVector<SealedFile> files;
    const qint64 allBytes = bytesOf(*entries);
    qint64 doneBytes = 0;
    for (const OpenFolder::Entry& entry : *entries) {
        if (isPartOfSeal(entry.name))
            continue;
        const auto tell = [&](qint64 bytes) {
            doneBytes += bytes;
            if (m_progress)
                m_progress(shownName(entry.name), doneBytes, allBytes);
        };
        const std::optional<QByteArray> sha256 = opened->sha256(entry.name, tell, &reason);
        if (!sha256) {
            *error = QStringLiteral("%1: %2").arg(pathOf(folder, entry.name), reason);
            return Outcome::CannotRead;
        }
        files.append({entry.name, *sha256});
    }
    *list = checksumListText(files);
    return Outcome::Done;
}
