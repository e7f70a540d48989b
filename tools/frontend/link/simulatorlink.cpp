#include "simulatorlink.h"

#include <QThread>

#include <utility>

SimulatorLink::SimulatorLink(SimulatedSystem& system, Pace pace)
    : m_system(system), m_interpreter(system), m_pace(pace)
{
}

void SimulatorLink::send(Operation operation, const QByteArray& text)
{
    m_reply = m_interpreter.execute(operation, text);
    if (m_pace == Pace::Device)
        m_devices.begin(m_reply->deviceMs);
    if (m_reply->delivery == Delivery::ConnectionLost)
        ++m_losses;
}

std::optional<Reply> SimulatorLink::wait(int timeoutMs)
{
    if (!m_reply || m_reply->delivery == Delivery::ConnectionLost)
        return std::nullopt;
    const qint64 neededMs = msUntilReply();
    const bool comes = m_reply->delivery == Delivery::Answered && neededMs <= qMax(0, timeoutMs);
    if (m_pace == Pace::Device)
        pass(comes ? neededMs : timeoutMs);
    if (!comes)
        return std::nullopt;
    return std::exchange(m_reply, std::nullopt);
}

bool SimulatorLink::isReachable() const
{
    return m_system.isReachable();
}

quint64 SimulatorLink::connection() const
{
    return m_losses + static_cast<quint64>(m_system.outages());
}

QString SimulatorLink::address() const
{
    return m_system.scenario().address();
}

qint64 SimulatorLink::msUntilReply() const
{
    return m_pace == Pace::Device ? qMax<qint64>(0, m_devices.dueMs() - m_devices.now())
                                  : m_reply->deviceMs;
}

void SimulatorLink::pass(qint64 ms)
{
    const qint64 endMs = m_devices.now() + ms;
    for (qint64 leftMs = ms; leftMs > 0; leftMs = endMs - m_devices.now()) {
        QThread::msleep(static_cast<unsigned long>(qMin(leftMs, idleSliceMs)));
        if (leftMs > idleSliceMs)
            doIdleWork();
    }
}
