#include "payload.h"

#include "crc32.h"

#include <QtEndian>

namespace {

constexpr char magic[] = "VXPL";
constexpr int componentOffset = 4;
constexpr int versionOffset = 6;
constexpr int appendixOffset = 12;
constexpr int bodySizeOffset = appendixOffset + payloadAppendixLength;
constexpr int bodyOffset = bodySizeOffset + 4;
static_assert(bodyOffset + 4 == payloadOverhead);

template <typename Integer>
void appendLittleEndian(QByteArray* bytes, Integer value)
{
    char field[sizeof(Integer)];
    qToLittleEndian(value, field);
    bytes->append(field, sizeof field);
}

template <typename Integer>
Integer littleEndianAt(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<Integer>(bytes.constData() + offset);
}

int versionPartAt(const QByteArray& bytes, int offset)
{
    const auto part = littleEndianAt<quint16>(bytes, offset);
    return part == 0xFFFF ? -1 : part;
}

// Marsaglia's xorshift, which never leaves zero: a seed of zero stands for another one.
void appendBody(QByteArray* bytes, int size, quint32 seed)
{
    quint32 state = seed ? seed : 0x9E3779B9U;
    for (int index = 0; index < size; ++index) {
        state ^= state << 13U;
        state ^= state >> 17U;
        state ^= state << 5U;
        bytes->append(static_cast<char>(state >> 24U));
    }
}

QString whatIsDamaged(const QByteArray& payload)
{
    if (payload.size() < payloadOverhead)
        return QStringLiteral("payload has %1 bytes, fewer than its head and checksum (%2)")
            .arg(payload.size())
            .arg(payloadOverhead);
    if (!isPayload(payload))
        return QStringLiteral("payload does not begin with %1").arg(QLatin1String(magic));

    const auto bodySize = littleEndianAt<quint32>(payload, bodySizeOffset);
    const int bodyPresent = payload.size() - payloadOverhead;
    if (bodySize != static_cast<quint32>(bodyPresent))
        return QStringLiteral("payload announces %1 bytes of body and has %2")
            .arg(bodySize)
            .arg(bodyPresent);

    const int checksumOffset = payload.size() - 4;
    if (littleEndianAt<quint32>(payload, checksumOffset) != crc32(payload.left(checksumOffset)))
        return QStringLiteral("payload checksum is wrong");

    const auto component = littleEndianAt<quint16>(payload, componentOffset);
    if (component < 1 || component > 3)
        return QStringLiteral("payload is for an unknown component (%1)").arg(component);
    return {};
}

} // namespace

QByteArray makePayload(const PayloadHead& head, int bodySize, quint32 seed)
{
    QByteArray payload;
    payload.reserve(payloadOverhead + bodySize);
    payload.append(magic);
    appendLittleEndian(&payload, static_cast<quint16>(head.component));
    for (const int part : {head.version.ma, head.version.mi, head.version.pa})
        appendLittleEndian(&payload, static_cast<quint16>(part));
    payload.append(head.appendix.toLatin1().leftJustified(payloadAppendixLength, '\0', true));
    appendLittleEndian(&payload, static_cast<quint32>(bodySize));
    appendBody(&payload, bodySize, seed);
    appendLittleEndian(&payload, crc32(payload));
    return payload;
}

bool isPayload(const QByteArray& bytes)
{
    return bytes.startsWith(magic);
}

std::optional<PayloadHead> readPayload(const QByteArray& payload, QString* error)
{
    const QString damage = whatIsDamaged(payload);
    if (error)
        *error = damage;
    if (!damage.isEmpty())
        return std::nullopt;

    PayloadHead head;
    head.component =
        static_cast<PayloadComponent>(littleEndianAt<quint16>(payload, componentOffset));
    head.version = VersionInfo(versionPartAt(payload, versionOffset),
                               versionPartAt(payload, versionOffset + 2),
                               versionPartAt(payload, versionOffset + 4));
    const QByteArray appendix = payload.mid(appendixOffset, payloadAppendixLength);
    head.appendix = QString::fromLatin1(
        appendix.constData(), static_cast<int>(qstrnlen(appendix, payloadAppendixLength)));
    return head;
}
