#pragma once

#include <QByteArray>

/// The CRC-32 of IEEE 802.3, taken piece by piece. Not thread-safe, but each thread may have its
/// own.
class Crc32
{
public:
    /// Takes the next @p size bytes.
    void add(const char* data, qint64 size);
    quint32 value() const { return ~m_state; } ///< of all bytes so far

private:
    quint32 m_state = 0xFFFFFFFFU;
};

/// The CRC-32 of IEEE 802.3 of @p data. Safe to call from any thread.
quint32 crc32(const QByteArray& data);
