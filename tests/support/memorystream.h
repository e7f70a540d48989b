#pragma once

#include <QByteArray>

#include <cstdio>

/// A buffered stream on bytes that a test has in memory.
class MemoryStream
{
public:
    explicit MemoryStream(const QByteArray& bytes) : m_stream(std::tmpfile())
    {
        if (!m_stream)
            qFatal("no temporary file for the test");
        std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), m_stream);
        std::rewind(m_stream);
    }
    ~MemoryStream() { std::fclose(m_stream); }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    FILE* get() const { return m_stream; }

private:
    FILE* m_stream;
};
