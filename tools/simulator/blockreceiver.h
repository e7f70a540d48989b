#pragma once

#include <payload.h>

#include <QByteArray>
#include <QString>

#include <optional>

/// Receives one controller block or one camera image, record by record.
///
/// It trusts nothing: the records must come in sequence from 1, each with the same count, within
/// the limits below, in valid 6-bit text; together they must be an undamaged payload for the
/// expected component. Record 1 always starts a block anew. A record that is refused ends the
/// reception, and nothing but a record 1 is taken after that.
class BlockReceiver
{
public:
    /// Where the reception of a block stands.
    enum class State
    {
        Idle,      ///< waits for a record 1
        Receiving, ///< the record was taken, others must follow
        Complete,  ///< the record was the last one and the payload is verified: see head()
        Refused,   ///< the record was not taken: see reason()
        Damaged,   ///< the record was the last one, but the payload is no good: see reason()
    };

    /// Takes record @p number of @p count, both from 1.
    State take(PayloadComponent component, int count, int number, const QByteArray& text);

    /// Ends the reception without a result.
    void drop();

    /// What became of the latest record, or Idle after drop().
    State state() const { return m_state; }
    /// Whether the latest record ended the reception without a result.
    bool refused() const { return m_state == State::Refused || m_state == State::Damaged; }
    int received() const { return m_received; }        ///< records taken of the block
    int expected() const { return m_expected; }        ///< records of the block
    const QString& reason() const { return m_reason; } ///< one line of ASCII
    const PayloadHead& head() const { return m_head; } ///< valid in State::Complete

private:
    void begin(PayloadComponent component, int count);
    QString whyNotNext(PayloadComponent component, int count, int number) const;
    State append(const QByteArray& text);
    State verify();
    State endWith(State state, const QString& reason = QString());

    State m_state = State::Idle;
    PayloadComponent m_component = PayloadComponent::TrackingSoftware;
    int m_received = 0;
    int m_expected = 0;
    QByteArray m_bytes;
    PayloadHead m_head;
    QString m_reason;
};
