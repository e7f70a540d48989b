#pragma once

#include <QString>

#include <cstring>

/// Size of the reply buffers of the host contract, in bytes.
inline constexpr int REPLY_BYTES = 200;

/// Size of the text buffers for an encoded record and for the replies before a run, in bytes.
inline constexpr int LONG_TEXT_BYTES = 1024;

/// Text buffer for one reply of the host. It is terminated whatever the host writes into its
/// @p Size bytes.
template <int Size = REPLY_BYTES>
class ReplyBuffer
{
public:
    /// The buffer to hand to the host, emptied, so that no earlier reply can pass for a new one.
    char* forReply()
    {
        m_text[0] = '\0';
        return m_text;
    }

    /// Replaces the content, cut to the buffer's size.
    void set(const char* text) { std::strncpy(m_text, text, Size); }

    /// The content, terminated; good until the buffer changes.
    const char* text() const { return m_text; }
    /// Whether the content is @p text, to the byte.
    bool equals(const char* text) const { return std::strcmp(m_text, text) == 0; }
    /// Whether the content begins with @p prefix.
    bool startsWith(const char* prefix) const
    {
        return std::strncmp(m_text, prefix, std::strlen(prefix)) == 0;
    }
    /// The content, read as Latin-1.
    QString latin1() const { return QString::fromLatin1(m_text); }
    /// The content, read as UTF-8.
    QString utf8() const { return QString::fromUtf8(m_text); }

private:
    char m_text[Size + 1] = {};
};

/// A free text of a controller as it is shown: UTF-8 without its double quotes.
template <int Size>
QString unquotedUtf8(const ReplyBuffer<Size>& reply)
{
    return reply.utf8().remove(QLatin1Char('"'));
}
