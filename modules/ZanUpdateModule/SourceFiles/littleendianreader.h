#pragma once

#include <QtEndian>

#include <cstdio>
#include <initializer_list>

/// Reads little-endian fields, one after the other, from a buffered stream of the caller.
///
/// It holds the stream's lock for its whole life instead of taking it for every field, so it must
/// be gone before the stream is closed. A read that comes out short returns false and leaves its
/// target as it was, except for the bytes of readBytes().
class LittleEndianReader
{
public:
    explicit LittleEndianReader(FILE* stream) : m_stream(stream) { flockfile(m_stream); }
    ~LittleEndianReader() { funlockfile(m_stream); }
    LittleEndianReader(const LittleEndianReader&) = delete;
    LittleEndianReader& operator=(const LittleEndianReader&) = delete;

    bool readBytes(void* target, int count)
    {
        const auto size = static_cast<std::size_t>(count);
        return fread_unlocked(target, 1, size, m_stream) == size;
    }

    bool readU16(int* value)
    {
        const int low = getc_unlocked(m_stream);
        const int high = getc_unlocked(m_stream);
        if (high == EOF)
            return false;
        *value = low | high << 8;
        return true;
    }

    bool readU32(quint32* value)
    {
        unsigned char bytes[4];
        if (!readBytes(bytes, 4))
            return false;
        *value = qFromLittleEndian<quint32>(bytes);
        return true;
    }

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
        int* target;
        int codeIfMissing;
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
    FILE* m_stream;
};
