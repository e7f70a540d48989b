#pragma once

#include "minisign.h"

#include <QString>

#include <functional>
#include <optional>

/// Seals a folder of update files: writes SHA256SUMS, and its signature where there is a key.
///
/// Nothing is written unless all of the folder can be sealed, and neither file is ever seen half
/// written. One thread at a time for each folder.
class DeliverySealing
{
public:
    /// What came of it, or what stood in the way.
    enum class Outcome
    {
        Done,
        CannotRead,  ///< the folder or a file in it
        CannotSeal,  ///< what the folder holds, or its earlier signature
        CannotWrite, ///< the seal
    };

    /// Told while files are read, often; see DeliveryCheck::Progress.
    using Progress = std::function<void(const QString& name, qint64 doneBytes, qint64 allBytes)>;

    /// @param key signs the list; without one, an earlier signature must still fit
    /// @param comment trusted comment of the signature: one line that minisign shows
    explicit DeliverySealing(const std::optional<MinisignSecretKey>& key = std::nullopt,
                             const QString& comment = QString())
        : m_key(key), m_comment(comment)
    {
    }

    /// Called in the thread of seal(), while it goes on.
    void setProgress(const Progress& progress) { m_progress = progress; }

    /// Seals @p folder, which must hold regular files alone.
    /// @param files must not be null; receives how many files were sealed
    /// @param error must not be null; on failure one line for each obstacle, "PATH: REASON"
    Outcome seal(const QString& folder, int* files, QString* error) const;

private:
    Outcome makeList(const QString& folder, QByteArray* list, QString* error) const;

    std::optional<MinisignSecretKey> m_key;
    QString m_comment;
    Progress m_progress;
};
