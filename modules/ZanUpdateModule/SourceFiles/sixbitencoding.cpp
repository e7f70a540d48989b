#include "sixbitencoding.h"

#include <QtEndian>

#include <array>
#include <cstring>

static constexpr char ALPHABET[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct CharacterPair
{
    char first;
    char second;
};

static constexpr std::array<CharacterPair, 4096> makePairs()
{
    std::array<CharacterPair, 4096> pairs{};
    for (unsigned bits = 0; bits < pairs.size(); ++bits)
        pairs[bits] = {ALPHABET[bits & 0x3F], ALPHABET[bits >> 6]};
    return pairs;
}

// One look-up gives two characters; the first one stands for the low bits.
static constexpr std::array<CharacterPair, 4096> PAIRS = makePairs();

static void putPair(char* text, quint64 bits)
{
    std::memcpy(text, &PAIRS[bits & 0xFFF], 2);
}

void encodeSixBit(char* text, const unsigned char* data, int length)
{
    int done = 0;
    for (; length - done >= 6; done += 6, text += 8) {
        const quint64 bits = qFromLittleEndian<quint32>(data + done) |
                             quint64(qFromLittleEndian<quint16>(data + done + 4)) << 32;
        putPair(text, bits);
        putPair(text + 2, bits >> 12);
        putPair(text + 4, bits >> 24);
        putPair(text + 6, bits >> 36);
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
