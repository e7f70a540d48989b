#include "payload.h"

#include <QtEndian>

#include <algorithm>

namespace {

constexpr char magic[] = "VXPL";
constexpr int componentOffset = 4;
constexpr int versionOffset = 6;
constexpr int appendixOffset = 12;
constexpr int bodySizeOffset = appendixOffset + payloadAppendixLength;
constexpr int bodyOffset = bodySizeOffset + 4;
constexpr int checksumBytes = 4;
static_assert(bodyOffset + checksumBytes == payloadOverhead);

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

QByteArray headBytes(const PayloadHead& head, qint64 bodySize)
{
    QByteArray bytes(magic);
    appendLittleEndian(&bytes, static_cast<quint16>(head.component));
    for (const int part : {head.version.ma, head.version.mi, head.version.pa})
        appendLittleEndian(&bytes, static_cast<quint16>(part));
    bytes.append(head.appendix.toLatin1().leftJustified(payloadAppendixLength, '\0', true));
    appendLittleEndian(&bytes, static_cast<quint32>(bodySize));
    return bytes;
}

} // namespace

PayloadStream::PayloadStream(const PayloadHead& head, qint64 bodySize, quint32 seed)
    : m_head(headBytes(head, bodySize)), m_bodySize(bodySize), m_state(seed ? seed : 0x9E3779B9U)
{
    m_crc.add(m_head.constData(), m_head.size());
}

void PayloadStream::read(char* to, int size)
{
    char* const end = to + size;
    for (; to < end && m_position < bodyOffset; ++m_position)
        *to++ = m_head.at(static_cast<int>(m_position));

    const char* const bodyStart = to;
    for (; to < end && m_position < bodyOffset + m_bodySize; ++m_position)
        *to++ = next();
    m_crc.add(bodyStart, to - bodyStart);

    if (to < end && m_checksum.isEmpty())
        appendLittleEndian(&m_checksum, m_crc.value());
    for (; to < end; ++m_position)
        *to++ = m_checksum.at(static_cast<int>(m_position - bodyOffset - m_bodySize));
}

// Marsaglia's xorshift, which never leaves zero: a seed of zero stands for another one.
char PayloadStream::next()
{
    m_state ^= m_state << 13U;
    m_state ^= m_state >> 17U;
    m_state ^= m_state << 5U;
    return static_cast<char>(m_state >> 24U);
}

QByteArray makePayload(const PayloadHead& head, int bodySize, quint32 seed)
{
    QByteArray payload(payloadOverhead + bodySize, Qt::Uninitialized);
    PayloadStream(head, bodySize, seed).read(payload.data(), payload.size());
    return payload;
}

void PayloadVerifier::add(const char* data, int size)
{
    if (m_head.size() < bodyOffset)
        m_head.append(data, std::min(size, bodyOffset - m_head.size()));
    m_size += size;
    if (m_isForeign)
        return; // nobody asks for the checksum
    m_isForeign = !QByteArray(magic).startsWith(m_head.left(componentOffset));
    const int kept = std::min(size, checksumBytes);
    const int passed = std::max(0, m_tail.size() + kept - checksumBytes);
    m_crc.add(m_tail.constData(), passed);
    m_crc.add(data, size - kept);
    m_tail = m_tail.mid(passed) + QByteArray(data + size - kept, kept);
}

bool PayloadVerifier::isPayload() const
{
    return ::isPayload(m_head);
}

QString PayloadVerifier::damage() const
{
    if (m_size < payloadOverhead)
        return QStringLiteral("payload has %1 bytes, fewer than its head and checksum (%2)")
            .arg(m_size)
            .arg(payloadOverhead);
    if (!isPayload())
        return QStringLiteral("payload does not begin with %1").arg(QLatin1String(magic));

    const auto bodySize = littleEndianAt<quint32>(m_head, bodySizeOffset);
    const qint64 bodyPresent = m_size - payloadOverhead;
    if (bodySize != bodyPresent)
        return QStringLiteral("payload announces %1 bytes of body and has %2")
            .arg(bodySize)
            .arg(bodyPresent);
    if (littleEndianAt<quint32>(m_tail, 0) != m_crc.value())
        return QStringLiteral("payload checksum is wrong");

    const auto component = littleEndianAt<quint16>(m_head, componentOffset);
    if (component < 1 || component > 3)
        return QStringLiteral("payload is for an unknown component (%1)").arg(component);
    return {};
}

std::optional<PayloadHead> PayloadVerifier::finish(QString* error) const
{
    const QString text = damage();
    if (!text.isEmpty()) {
        if (error)
            *error = text;
        return std::nullopt;
    }

    PayloadHead head;
    head.component =
        static_cast<PayloadComponent>(littleEndianAt<quint16>(m_head, componentOffset));
    head.version =
        VersionInfo(versionPartAt(m_head, versionOffset), versionPartAt(m_head, versionOffset + 2),
                    versionPartAt(m_head, versionOffset + 4));
    const QByteArray appendix = m_head.mid(appendixOffset, payloadAppendixLength);
    head.appendix = QString::fromLatin1(
        appendix.constData(), static_cast<int>(qstrnlen(appendix, payloadAppendixLength)));
    return head;
}

bool isPayload(const QByteArray& bytes)
{
    return bytes.startsWith(magic);
}

std::optional<PayloadHead> readPayload(const QByteArray& payload, QString* error)
{
    PayloadVerifier verifier;
    verifier.add(payload.constData(), payload.size());
    return verifier.finish(error);
}
