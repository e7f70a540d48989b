#include "crc32.h"

#include <array>

namespace {

constexpr std::array<quint32, 256> makeTable()
{
    std::array<quint32, 256> table{};
    for (quint32 index = 0; index < table.size(); ++index) {
        quint32 value = index;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1U) ? (value >> 1U) ^ 0xEDB88320U : value >> 1U;
        table[index] = value;
    }
    return table;
}

constexpr std::array<quint32, 256> table = makeTable();

} // namespace

quint32 crc32(const QByteArray& data)
{
    quint32 value = 0xFFFFFFFFU;
    for (const char byte : data)
        value = table[(value ^ static_cast<uchar>(byte)) & 0xFFU] ^ (value >> 8U);
    return ~value;
}
