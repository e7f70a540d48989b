#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <functional>
#include <optional>

/// A folder whose files are reached through the folder itself and not by its path, so that it stays
/// the same one whatever becomes of the path. Symbolic links in it are seen, never followed, and
/// nothing in it can make a reader wait. One thread at a time.
class OpenFolder
{
public:
    /// What stands in a folder under a name.
    struct Entry
    {
        /// What an entry is, symbolic links not followed.
        enum class Kind
        {
            File, ///< a regular file
            Folder,
            Link, ///< a symbolic link, whatever it leads to
            Other ///< a pipe, a device, ...
        };
        QByteArray name; ///< without a folder
        Kind kind;       ///< as it was when the folder was read
        qint64 size;     ///< in bytes, of a regular file

        /// "is a folder" and the like, for people.
        QString kindText() const;
    };

    /// Told while a file is read, with the bytes read since the last time.
    using Progress = std::function<void(qint64 bytes)>;

    /// @param error must not be null
    /// @return null and the reason if @p path is no folder or may not be read
    static std::optional<OpenFolder> open(const QString& path, QString* error);
    /// Takes the folder over; @p other may only be destroyed.
    OpenFolder(OpenFolder&& other) noexcept;
    ~OpenFolder();
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    OpenFolder& operator=(OpenFolder&&) = delete;

    /// Everything in the folder, hidden or not, in the order of the names' bytes.
    /// @param error must not be null
    /// @return nullopt and the reason if it cannot be read
    std::optional<QVector<Entry>> entries(QString* error) const;

    /// The whole content of the regular file @p name, if it has up to @p limit bytes.
    /// @param error must not be null
    /// @return nullopt and the reason otherwise
    std::optional<QByteArray> read(const char* name, qint64 limit, QString* error) const;

    /// The SHA-256 checksum, 32 bytes, of the regular file @p name, which may have any size: it
    /// passes through a small buffer. A file that changes meanwhile is a failure.
    /// @param error must not be null
    /// @return nullopt and the reason if it cannot be read to its end
    std::optional<QByteArray> sha256(const QByteArray& name, const Progress& progress,
                                     QString* error) const;

private:
    explicit OpenFolder(int descriptor) : m_descriptor(descriptor) {}

    int m_descriptor;
};
