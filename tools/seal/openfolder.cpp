#include "openfolder.h"

#include <QFile>

#include <sodium.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString systemError()
{
    return qt_error_string(errno);
}

OpenFolder::Entry::Kind kindOf(mode_t mode)
{
    using Kind = OpenFolder::Entry::Kind;
    if (S_ISREG(mode))
        return Kind::File;
    if (S_ISDIR(mode))
        return Kind::Folder;
    return S_ISLNK(mode) ? Kind::Link : Kind::Other;
}

bool isSame(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// One regular file that is read from its beginning to its end.
class RegularFile
{
public:
    RegularFile(int folder, const char* name)
        // Without O_NONBLOCK a pipe would be waited for.
        : m_descriptor(::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))
    {
        if (m_descriptor < 0)
            m_error = errno == ELOOP ? QStringLiteral("is a symbolic link") : systemError();
        else if (::fstat(m_descriptor, &m_status) != 0)
            m_error = systemError();
        else if (!S_ISREG(m_status.st_mode))
            m_error = QStringLiteral("is no regular file");
    }
    ~RegularFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    const QString& error() const { return m_error; }
    qint64 size() const { return m_status.st_size; }

    // Gives every piece of the content to @p take; false if that is not all that the file held when
    // it was opened.
    template <typename Take>
    bool readAll(Take take)
    {
        qint64 left = size();
        for (;;) {
            const ssize_t count = ::read(m_descriptor, m_buffer.data(), m_buffer.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                m_error = systemError();
            if (count <= 0 || count > left)
                break;
            take(m_buffer.data(), count);
            left -= count;
        }
        if (m_error.isEmpty() && (left != 0 || hasChanged()))
            m_error = QStringLiteral("was changed while it was read");
        return m_error.isEmpty();
    }

private:
    bool hasChanged() const
    {
        struct stat now = {};
        return ::fstat(m_descriptor, &now) != 0 || now.st_size != m_status.st_size ||
               !isSame(now.st_mtim, m_status.st_mtim);
    }

    int m_descriptor;
    struct stat m_status = {};
    QString m_error;
    std::array<char, 65536> m_buffer;
};

} // namespace

QString OpenFolder::Entry::kindText() const
{
    switch (kind) {
    case Kind::File:
        return QStringLiteral("is a file");
    case Kind::Folder:
        return QStringLiteral("is a folder");
    case Kind::Link:
        return QStringLiteral("is a symbolic link");
    case Kind::Other:
        break;
    }
    return QStringLiteral("is no regular file");
}

std::optional<OpenFolder> OpenFolder::open(const QString& path, QString* error)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0)
        return OpenFolder(descriptor);
    *error = systemError();
    return std::nullopt;
}

OpenFolder::OpenFolder(OpenFolder&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

OpenFolder::~OpenFolder()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

std::optional<QVector<OpenFolder::Entry>> OpenFolder::entries(QString* error) const
{
    // A descriptor of its own, as reading moves it.
    const int descriptor = ::openat(m_descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::fdopendir(descriptor), ::closedir);
    if (!stream) {
        *error = systemError();
        return std::nullopt;
    }
    QVector<Entry> entries;
    errno = 0;
    while (const dirent* found = ::readdir(stream.get())) {
        const QByteArray name(found->d_name);
        struct stat status = {};
        const bool isKnown =
            ::fstatat(m_descriptor, found->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0;
        // What is gone again by now does not stand in the folder.
        if (name != "." && name != ".." && (isKnown || errno != ENOENT))
            entries.append({name, kindOf(status.st_mode), status.st_size});
        errno = 0;
    }
    if (errno != 0) {
        *error = systemError();
        return std::nullopt;
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

std::optional<QByteArray> OpenFolder::read(const char* name, qint64 limit, QString* error) const
{
    RegularFile file(m_descriptor, name);
    QByteArray content;
    const auto take = [&](const char* bytes, ssize_t count) {
        content.append(bytes, static_cast<int>(count));
    };
    if (file.error().isEmpty() && file.size() > limit) {
        *error = QStringLiteral("is longer than %1 bytes").arg(limit);
        return std::nullopt;
    }
    if (file.error().isEmpty() && file.readAll(take))
        return content;
    *error = file.error();
    return std::nullopt;
}

std::optional<QByteArray> OpenFolder::sha256(const QByteArray& name, const Progress& progress,
                                             QString* error) const
{
    RegularFile file(m_descriptor, name.constData());
    crypto_hash_sha256_state state;
    crypto_hash_sha256_init(&state);
    const auto take = [&](const char* bytes, ssize_t count) {
        crypto_hash_sha256_update(&state, reinterpret_cast<const unsigned char*>(bytes),
                                  static_cast<unsigned long long>(count));
        if (progress)
            progress(count);
    };
    if (!file.error().isEmpty() || !file.readAll(take)) {
        *error = file.error();
        return std::nullopt;
    }
    QByteArray digest(crypto_hash_sha256_BYTES, '\0');
    crypto_hash_sha256_final(&state, reinterpret_cast<unsigned char*>(digest.data()));
    return digest;
}
