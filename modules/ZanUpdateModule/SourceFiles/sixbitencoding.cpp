#include "sixbitencoding.h"

#include <QtEndian>

#include <array>

static constexpr char ALPHABET[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two characters for 12 bits; the first one, for the low bits, stands in the low byte.
static constexpr std::array<quint16, 4096> makePairs()
{
    std::array<quint16, 4096> pairs{};
    for (unsigned bits = 0; bits < pairs.size(); ++bits)
        pairs[bits] = static_cast<quint16>(ALPHABET[bits & 0x3F] | ALPHABET[bits >> 6] << 8);
    return pairs;
}

static constexpr std::array<quint16, 4096> PAIRS = makePairs();

static quint64 pair(quint64 bits)
{
    return PAIRS[bits & 0xFFF];
}

void encodeSixBit(char* text, const unsigned char* data, int length)
{
    int done = 0;
    // One wide store: the text is read again at once, and would have to wait for narrow ones.
    for (; length - done >= 6; done += 6, text += 8) {
        const quint64 bits = qFromLittleEndian<quint32>(data + done) |
                             quint64(qFromLittleEndian<quint16>(data + done + 4)) << 32;
        qToLittleEndian<quint64>(pair(bits) | pair(bits >> 12) << 16 | pair(bits >> 24) << 32 |
                                     pair(bits >> 36) << 48,
                                 text);
    }
    for (int bitOffset = 8 * done; bitOffset < 8 * length; bitOffset += 6)
        *text++ = ALPHABET[sixBitWord(data, length, bitOffset)];
    *text = '\0';
}

unsigned char sixBitWord(const unsigned char* data, int length, int bitOffset)
{
    const int index = bitOffset / 8;
    const unsigned byte = index < length ? data[index] : 0;
    const unsigned next = index + 1 < length ? data[index + 1] : 0;
    switch (bitOffset % 8) {
    case 0:
        return static_cast<unsigned char>(byte & 0x3F);
    case 2:
        return static_cast<unsigned char>(byte >> 2);
    case 4:
        return static_cast<unsigned char>(byte >> 4 | (next & 0x03) << 4);
    case 6:
        return static_cast<unsigned char>(byte >> 6 | (next & 0x0F) << 2);
    default:
        return 0;
    }
}
