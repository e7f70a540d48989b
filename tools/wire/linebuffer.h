#pragma once

#include <QByteArray>

#include <deque>
#include <optional>

/// Makes lines out of the bytes of a connection, whatever the peer sends: what exceeds the longest
/// line is dropped as it comes, so the memory is bounded.
class LineBuffer
{
public:
    /// @param maxBytes length at which a line is cut
    explicit LineBuffer(int maxBytes) : m_maxBytes(maxBytes) {}

    /// Takes what came, of any size; lines may begin and end anywhere in it.
    void append(const QByteArray& bytes);

    /// The oldest line that is complete, without its line end ("\n" or "\r\n").
    /// @return nullopt if there is none
    std::optional<QByteArray> takeLine();

    /// Forgets everything, for a new connection.
    void clear();

private:
    void appendPart(const char* bytes, int size);

    int m_maxBytes;
    QByteArray m_part;
    std::deque<QByteArray> m_lines;
};
