#include "blockreceiver.h"

#include <sixbitdecoder.h>

BlockReceiver::State BlockReceiver::take(PayloadComponent component, int count, int number,
                                         const QByteArray& text)
{
    if (count < 1 || count > maxRecords || number < 1 || number > count)
        return endWith(State::Refused, QStringLiteral("no such record in a block"));
    if (number == 1)
        begin(component, count);
    const QString reason = whyNotNext(component, count, number);
    if (!reason.isEmpty())
        return endWith(State::Refused, reason);
    return append(text);
}

void BlockReceiver::drop()
{
    m_state = State::Idle;
    m_received = 0;
    m_expected = 0;
    m_bytes.clear();
}

void BlockReceiver::begin(PayloadComponent component, int count)
{
    drop();
    m_state = State::Receiving;
    m_component = component;
    m_expected = count;
}

QString BlockReceiver::whyNotNext(PayloadComponent component, int count, int number) const
{
    if (m_state != State::Receiving)
        return QStringLiteral("record %1 without a record 1 before it").arg(number);
    if (component != m_component)
        return QStringLiteral("record %1 is of another kind than its block").arg(number);
    if (count != m_expected)
        return QStringLiteral("record count changed from %1 to %2").arg(m_expected).arg(count);
    if (number != m_received + 1)
        return QStringLiteral("record %1 expected, %2 received").arg(m_received + 1).arg(number);
    return QString();
}

BlockReceiver::State BlockReceiver::append(const QByteArray& text)
{
    const std::optional<QByteArray> data = decodeSixBit(text);
    if (!data)
        return endWith(State::Refused, QStringLiteral("record is not 6-bit text"));
    if (data->size() > maxRecordBytes)
        return endWith(State::Refused,
                       QStringLiteral("record exceeds %1 bytes").arg(maxRecordBytes));
    if (m_bytes.size() + data->size() > maxBlockBytes)
        return endWith(State::Refused, QStringLiteral("block exceeds %1 bytes").arg(maxBlockBytes));

    m_bytes += *data;
    ++m_received;
    return m_received == m_expected ? verify() : m_state;
}

BlockReceiver::State BlockReceiver::verify()
{
    QString damage;
    const std::optional<PayloadHead> head = readPayload(m_bytes, &damage);
    if (!head)
        return endWith(State::Damaged, damage);
    if (head->component != m_component)
        return endWith(State::Damaged, QStringLiteral("payload is for another component"));
    m_head = *head;
    return endWith(State::Complete);
}

BlockReceiver::State BlockReceiver::endWith(State state, const QString& reason)
{
    m_state = state;
    m_reason = reason;
    m_bytes = QByteArray();
    return state;
}
