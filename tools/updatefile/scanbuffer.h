#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>

/// Reads a file from front to back through a buffer of fixed size.
class ScanBuffer
{
public:
    /// Starts at the front of @p device, which must be open, outlive this and be of use to nobody
    /// else.
    explicit ScanBuffer(QIODevice& device);

    qint64 size() const { return m_size; } ///< of the file
    /// Of the next byte to take, from the start of the file.
    qint64 offset() const { return m_start + m_position; }
    /// Goes on at @p offset from the start of the file; behind its end nothing can be taken.
    void seek(qint64 offset);

    /// The next @p count bytes, valid until the next call; null, and no step further, if the file
    /// ends before. At most 65535.
    const char* take(int count)
    {
        if (m_buffer.size() - m_position < count && !refill(count))
            return nullptr;
        const char* bytes = m_buffer.constData() + m_position;
        m_position += count;
        return bytes;
    }

    /// Why the file could not be read, in one line; empty if it could.
    QString error() const { return m_error; }

private:
    bool refill(int count);

    QIODevice& m_device;
    const qint64 m_size;
    QByteArray m_buffer; // the bytes from m_start on
    qint64 m_start = 0;
    int m_position = 0;
    QString m_error;
};
