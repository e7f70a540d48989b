#pragma once

#include <QtEndian>

#include <cstdio>
#include <cstring>
#include <initializer_list>

/// Reads little-endian fields, one after the other, from a stream of the caller.
///
/// It fetches the bytes in chunks of its own, since asking the stream for every field costs more
/// than all the rest. What it has fetched too much it gives back to the stream when it goes, so it
/// must be gone before the stream is closed. A read that comes out short returns false and leaves
/// its target as it was.
class LittleEndianReader
{
public:
    /// How much is fetched from the stream at a time, in bytes.
    enum Chunk
    {
        SmallChunk = 512,   ///< for the heads of files, whose content is not to be touched
        LargeChunk = 32768, ///< for streams of records
    };

    /// Starts at the stream's position. @p stream must outlive the reader, which does not close it.
    explicit LittleEndianReader(FILE* stream, Chunk chunk = SmallChunk)
        : m_stream(stream), m_chunk(chunk)
    {
    }
    ~LittleEndianReader()
    {
        if (m_next != m_end)
            (void)std::fseek(m_stream, static_cast<long>(m_next - m_end), SEEK_CUR);
    }
    LittleEndianReader(const LittleEndianReader&) = delete;
    LittleEndianReader& operator=(const LittleEndianReader&) = delete;

    /// The next bytes, valid until the next read; null if there are not so many.
    /// @param count at most SmallChunk
    const unsigned char* takeBytes(int count)
    {
        if (!isAtHand(count))
            return nullptr;
        m_next += count;
        return m_next - count;
    }

    /// Reads an unsigned 16-bit number, 0 to 65535.
    bool readU16(int* value)
    {
        if (!isAtHand(2))
            return false;
        *value = qFromLittleEndian<quint16>(m_next);
        m_next += 2;
        return true;
    }

    /// Reads an unsigned 32-bit number.
    bool readU32(quint32* value)
    {
        if (!isAtHand(4))
            return false;
        *value = qFromLittleEndian<quint32>(m_next);
        m_next += 4;
        return true;
    }

    /// Reads a signed 32-bit number.
    bool readS32(int* value)
    {
        quint32 bits = 0;
        if (!readU32(&bits))
            return false;
        *value = static_cast<int>(bits);
        return true;
    }

    /// A 16-bit field to read: where it goes (null: it is stepped over) and the failure code that
    /// stands for its absence.
    struct Word
    {
        int* target;       ///< null: stepped over
        int codeIfMissing; ///< what readWords() returns if the file ends before it
    };

    /// Reads the fields in order. @return 0, or the code of the first one that is missing
    int readWords(std::initializer_list<Word> words)
    {
        for (const Word& word : words) {
            int ignored = 0;
            if (!readU16(word.target ? word.target : &ignored))
                return word.codeIfMissing;
        }
        return 0;
    }

private:
    bool isAtHand(int count) { return m_end - m_next >= count || fetch(count); }

    bool fetch(int count)
    {
        const auto rest = static_cast<std::size_t>(m_end - m_next);
        std::memmove(m_bytes, m_next, rest);
        m_next = m_bytes;
        m_end = m_bytes + rest + std::fread(m_bytes + rest, 1, m_chunk - rest, m_stream);
        return m_end - m_next >= count;
    }

    FILE* m_stream;
    std::size_t m_chunk;
    unsigned char m_bytes[LargeChunk];
    const unsigned char* m_next = m_bytes;
    const unsigned char* m_end = m_bytes;
};
