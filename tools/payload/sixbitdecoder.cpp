#include "sixbitdecoder.h"

#include <array>

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr quint8 foreign = 0xFF;

constexpr std::array<quint8, 256> makeTable()
{
    std::array<quint8, 256> table{};
    for (quint8& value : table)
        value = foreign;
    for (quint8 value = 0; value < 64; ++value)
        table[static_cast<uchar>(alphabet[value])] = value;
    return table;
}

constexpr std::array<quint8, 256> table = makeTable();

} // namespace

std::optional<QByteArray> decodeSixBit(const QByteArray& text)
{
    if (text.size() % 4 == 1)
        return std::nullopt;

    QByteArray data;
    data.reserve(text.size() * 6 / 8);
    unsigned pendingBits = 0;
    int pendingCount = 0;
    for (const char character : text) {
        const quint8 word = table[static_cast<uchar>(character)];
        if (word == foreign)
            return std::nullopt;
        // The earliest bit of the stream is the lowest one, so new words go on top.
        pendingBits |= static_cast<unsigned>(word) << pendingCount;
        pendingCount += 6;
        if (pendingCount < 8)
            continue;
        data.append(static_cast<char>(pendingBits & 0xFFU));
        pendingBits >>= 8U;
        pendingCount -= 8;
    }
    if (pendingBits != 0)
        return std::nullopt;
    return data;
}
