#pragma once

#include "minisign.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

/// What DeliveryCheck found out about one name in a delivered folder or in its list.
struct CheckedFile
{
    /// How what is there compares with the seal.
    enum class State
    {
        AsSealed,
        Altered,    ///< has another content
        Missing,    ///< is listed and not there
        NotListed,  ///< is there and not listed
        NotAFile,   ///< a folder, a symbolic link or anything else that is no regular file
        Unreadable, ///< could not be read to its end, or changed meanwhile
    };

    QString name;   ///< with what cannot be shown escaped; see shownName()
    State state;    ///< AsSealed if there is nothing to tell
    QString reason; ///< one clause for people, such as "is missing"; empty if it is as sealed
};

/// The outcome of one check.
struct DeliveryReport
{
    /// What a host has to know before it goes on.
    enum class Verdict
    {
        NothingDelivered, ///< there is no folder of update files, so none is read
        CannotRead,       ///< the folder cannot be read
        NotSealed,        ///< there is no SHA256SUMS in it
        Departs,          ///< not all is as sealed, or the signature is missing or wrong
        Complete,         ///< everything is as listed; no public key was there to tell by whom
        Proven,           ///< everything is as listed, and the list is signed with the public key
    };

    Verdict verdict;                ///< what allowsLoading() goes by
    QString folder;                 ///< the path that was checked; empty if nothing is delivered
    QVector<CheckedFile> files;     ///< in the order of their names' bytes
    QStringList sealProblems;       ///< of the folder, the list and the signature: "NAME: REASON"
    std::optional<QString> comment; ///< trusted comment of a signature that was verified

    /// Everything that is not as sealed, as "NAME: REASON"; empty if all is well.
    QStringList problems() const;

    /// One sentence for a log: what was checked and what came of it.
    QString summary() const;
};

/// Checks a delivered folder of update files against the seal in it, before the plug-in reads them.
///
/// The seal is the list SHA256SUMS, which `sha256sum --check` reads as well, and, for hosts that
/// have a public key, its signature SHA256SUMS.minisig, which `minisign -V` verifies as well. In a
/// delivery as sealed every listed file has the listed content, and nothing else stands in the
/// folder but the two files of the seal: the plug-in would read it.
///
///     DeliveryCheck check;
///     QString error;
///     if (!check.setPublicKey("RWQ...", &error))
///         ...;
///     const DeliveryReport report = check.checkBeside(QCoreApplication::applicationDirPath());
///     for (const QString& problem : report.problems())
///         log(problem);
///     if (check.allowsLoading(report))
///         loadModule();
///
/// A report tells how the folder was when it was read. What is changed afterwards, by somebody who
/// may write there, is not noticed: the plug-in reads the files again when it builds its dialogs,
/// and once more when it updates a device. docs/sealing.md tells what a host can do about that.
///
/// Nothing is written. Files of any size are read with a few kilobytes of memory. Each object may
/// be used in one thread at a time, which need not be that of the user interface.
class DeliveryCheck
{
public:
    /// Told while files are read, often: the name of the file, the bytes read of all files so far,
    /// and the bytes that there are.
    using Progress = std::function<void(const QString& name, qint64 doneBytes, qint64 allBytes)>;

    /// From now on deliveries must be signed with this key.
    /// @param keyOrFile the key itself ("RW...") or a file with it, as `minisign -G` writes it
    /// @param error must not be null; on failure "FILE: REASON"
    /// @return false if it is no key, in which case a key that was set before stays
    bool setPublicKey(const QString& keyOrFile, QString* error);
    /// Whether deliveries must be signed.
    bool hasPublicKey() const { return m_publicKey.has_value(); }

    /// Called in the thread of the check, while it goes on.
    void setProgress(const Progress& progress) { m_progress = progress; }

    /// Checks the folder that the plug-in will find from the folder of the program on
    /// (QCoreApplication::applicationDirPath() in a host).
    DeliveryReport checkBeside(const QString& applicationDir) const;

    /// Checks @p folder itself.
    DeliveryReport check(const QString& folder) const;

    /// Whether the module may be loaded: always without a public key, since then nothing is asked
    /// for but a report; with one if the delivery is proven, or if there is none at all.
    bool allowsLoading(const DeliveryReport& report) const;

private:
    std::optional<MinisignPublicKey> m_publicKey;
    Progress m_progress;
};
