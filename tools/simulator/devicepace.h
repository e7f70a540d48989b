#pragma once

#include <QElapsedTimer>

/// Tells when the replies of a device are due that takes its time for each, one after the other.
class DevicePace
{
public:
    DevicePace() { m_clock.start(); }

    /// Takes note of a request that costs the device @p deviceMs milliseconds from now on, or from
    /// the end of what it does already.
    void begin(int deviceMs) { m_dueMs = qMax(m_dueMs, m_clock.elapsed() - slackMs) + deviceMs; }

    /// When the reply to the latest request is due, in milliseconds of now().
    qint64 dueMs() const { return m_dueMs; }
    /// Milliseconds since the object was made.
    qint64 now() const { return m_clock.elapsed(); }

private:
    // How far the schedule may be behind before it starts anew: the time that the sender itself
    // needs does not slow a stream of records down.
    static constexpr qint64 slackMs = 50;

    QElapsedTimer m_clock;
    qint64 m_dueMs = 0;
};
