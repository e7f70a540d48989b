#include "deliverycheck.h"

#include "checksumlist.h"
#include "openfolder.h"
#include "updatefolder.h"

#include <QSet>

#include <algorithm>
#include <map>

namespace {

using State = CheckedFile::State;
using Verdict = DeliveryReport::Verdict;

constexpr qint64 longestList = 1 << 20; // some ten thousand files
constexpr qint64 longestSignature = 65536;

/// One check of one folder.
class Checker
{
public:
    Checker(const OpenFolder& folder, const std::optional<MinisignPublicKey>& publicKey,
            const DeliveryCheck::Progress& progress, DeliveryReport* report)
        : m_folder(folder), m_publicKey(publicKey), m_progress(progress), m_report(*report)
    {
    }

    void run();

private:
    bool readFolder();
    void checkSignature(const QByteArray& list);
    void checkListed(const QVector<SealedFile>& files);
    void checkListed(const SealedFile& file);
    void checkContent(const SealedFile& file);
    void checkNotListed();
    void countBytes(const QVector<SealedFile>& files);
    void note(const QByteArray& name, State state, const QString& reason = QString());
    void complain(const char* name, const QString& reason);

    const OpenFolder& m_folder;
    const std::optional<MinisignPublicKey>& m_publicKey;
    const DeliveryCheck::Progress& m_progress;
    DeliveryReport& m_report;
    std::map<QByteArray, OpenFolder::Entry> m_entries;
    std::map<QByteArray, CheckedFile> m_files;
    qint64 m_doneBytes = 0;
    qint64 m_allBytes = 0;
};

void Checker::run()
{
    if (!readFolder())
        return;
    if (m_entries.count(checksumListName) == 0) {
        m_report.verdict = Verdict::NotSealed;
        complain(checksumListName, QStringLiteral("is missing"));
        return;
    }
    QString error;
    const std::optional<QByteArray> text = m_folder.read(checksumListName, longestList, &error);
    if (!text) {
        m_report.verdict = Verdict::Departs;
        complain(checksumListName, error);
        return;
    }
    checkSignature(*text);
    const ChecksumList list = readChecksumList(*text);
    for (const QString& problem : list.problems)
        complain(checksumListName, problem);
    if (list.files.isEmpty() && list.problems.isEmpty())
        complain(checksumListName, QStringLiteral("lists no file"));
    checkListed(list.files);
    // Seen last, so that what came meanwhile is seen as well.
    if (!readFolder())
        return;
    checkNotListed();

    for (const auto& [name, file] : m_files)
        m_report.files.append(file);
    if (!m_report.problems().isEmpty())
        m_report.verdict = Verdict::Departs;
    else
        m_report.verdict = m_publicKey ? Verdict::Proven : Verdict::Complete;
}

bool Checker::readFolder()
{
    QString error;
    const std::optional<QVector<OpenFolder::Entry>> entries = m_folder.entries(&error);
    m_entries.clear();
    for (const OpenFolder::Entry& entry : entries.value_or(QVector<OpenFolder::Entry>()))
        m_entries.emplace(entry.name, entry);
    if (!entries) {
        m_report.verdict = Verdict::CannotRead;
        m_report.sealProblems += QStringLiteral("%1: %2").arg(m_report.folder, error);
    }
    return entries.has_value();
}

void Checker::checkSignature(const QByteArray& list)
{
    if (m_entries.count(signatureName) == 0) {
        if (m_publicKey)
            complain(signatureName, QStringLiteral("is missing"));
        return;
    }
    QString error;
    const std::optional<QByteArray> signature =
        m_folder.read(signatureName, longestSignature, &error);
    if (signature && m_publicKey)
        m_report.comment = m_publicKey->verify(list, *signature, &error);
    // Without a key too, since the plug-in takes an image under any name.
    else if (signature && !isMinisignSignature(*signature))
        error = QStringLiteral("is no minisign signature");
    if (!error.isEmpty())
        complain(signatureName, error);
}

void Checker::checkListed(const QVector<SealedFile>& files)
{
    countBytes(files);
    for (const SealedFile& file : files)
        checkListed(file);
}

// Names are looked up among those of the folder, not opened at once: some file systems find a file
// under a name in other letters.
void Checker::checkListed(const SealedFile& file)
{
    const auto entry = m_entries.find(file.name);
    if (entry == m_entries.end())
        note(file.name, State::Missing, QStringLiteral("is missing"));
    else if (entry->second.kind != OpenFolder::Entry::Kind::File)
        note(file.name, State::NotAFile, entry->second.kindText());
    else
        checkContent(file);
}

void Checker::checkContent(const SealedFile& file)
{
    const QString name = shownName(file.name);
    const auto tell = [&](qint64 bytes) {
        m_doneBytes += bytes;
        if (m_progress)
            m_progress(name, m_doneBytes, m_allBytes);
    };
    QString error;
    const std::optional<QByteArray> sha256 = m_folder.sha256(file.name, tell, &error);
    if (!sha256)
        note(file.name, State::Unreadable, error);
    else if (*sha256 != file.sha256)
        note(file.name, State::Altered, QStringLiteral("is not what was sealed"));
    else
        note(file.name, State::AsSealed);
}

void Checker::checkNotListed()
{
    for (const auto& [name, entry] : m_entries) {
        if (isPartOfSeal(name) || m_files.count(name) != 0)
            continue;
        if (entry.kind != OpenFolder::Entry::Kind::File)
            note(name, State::NotAFile, entry.kindText());
        else
            note(name, State::NotListed, QStringLiteral("is not listed in SHA256SUMS"));
    }
}

void Checker::countBytes(const QVector<SealedFile>& files)
{
    for (const SealedFile& file : files) {
        const auto entry = m_entries.find(file.name);
        if (entry != m_entries.end())
            m_allBytes += entry->second.size;
    }
}

void Checker::note(const QByteArray& name, State state, const QString& reason)
{
    m_files[name] = {shownName(name), state, reason};
}

void Checker::complain(const char* name, const QString& reason)
{
    m_report.sealProblems += QStringLiteral("%1: %2").arg(QLatin1String(name), reason);
}

} // namespace

QStringList DeliveryReport::problems() const
{
    QStringList problems = sealProblems;
    for (const CheckedFile& file : files) {
        if (file.state != State::AsSealed)
            problems += QStringLiteral("%1: %2").arg(file.name, file.reason);
    }
    return problems;
}

QString DeliveryReport::summary() const
{
    switch (verdict) {
    case Verdict::NothingDelivered:
        return QStringLiteral("No update files are delivered.");
    case Verdict::CannotRead:
        return QStringLiteral("The update files in %1 cannot be read.").arg(folder);
    case Verdict::NotSealed:
        return QStringLiteral("The update files in %1 are not sealed.").arg(folder);
    case Verdict::Departs:
        return QStringLiteral("The update files in %1 are not as they were sealed.").arg(folder);
    case Verdict::Complete:
        return QStringLiteral("The update files in %1 are as they were sealed (%2 in all); there "
                              "was no public key to tell by whom.")
            .arg(folder)
            .arg(files.size());
    case Verdict::Proven:
        return QStringLiteral("The update files in %1 are as they were sealed and signed "
                              "(%2 in all).")
            .arg(folder)
            .arg(files.size());
    }
    return QString();
}

bool DeliveryCheck::setPublicKey(const QString& keyOrFile, QString* error)
{
    const std::optional<MinisignPublicKey> key = MinisignPublicKey::read(keyOrFile, error);
    if (key)
        m_publicKey = key;
    return key.has_value();
}

DeliveryReport DeliveryCheck::checkBeside(const QString& applicationDir) const
{
    const QString folder = findUpdateFolder(applicationDir);
    if (!folder.isEmpty())
        return check(folder);
    return {Verdict::NothingDelivered, QString(), {}, {}, std::nullopt};
}

DeliveryReport DeliveryCheck::check(const QString& folder) const
{
    DeliveryReport report = {Verdict::CannotRead, folder, {}, {}, std::nullopt};
    QString error;
    const std::optional<OpenFolder> opened = OpenFolder::open(folder, &error);
    if (opened)
        Checker(*opened, m_publicKey, m_progress, &report).run();
    else
        report.sealProblems += QStringLiteral("%1: %2").arg(folder, error);
    return report;
}

bool DeliveryCheck::allowsLoading(const DeliveryReport& report) const
{
    return !m_publicKey || report.verdict == Verdict::Proven ||
           report.verdict == Verdict::NothingDelivered;
}
