#pragma once

#include "commandlink.h"

#include <QElapsedTimer>

#include <functional>

/// The line to a system that is simulated in this process.
class SimulatorLink : public CommandLink
{
public:
    enum class Pace
    {
        Device, ///< replies take the time that the devices take
        Fast,   ///< replies are there at once; what takes longer than the time-out still fails
    };

    /// @param system must outlive the link
    SimulatorLink(SimulatedSystem& system, Pace pace);

    void send(Operation operation, const QByteArray& text) override;
    std::optional<Reply> wait(int timeoutMs) override;
    QString address() const override;

    /// Sets what is done now and then during waits of more than a moment, so that windows are not
    /// left unpainted. It must not send anything.
    void setIdleWork(const std::function<void()>& work) { m_idleWork = work; }

private:
    qint64 msUntilReply() const;
    void pass(qint64 ms) const;

    SimulatedSystem& m_system;
    CommandInterpreter m_interpreter;
    Pace m_pace;
    QElapsedTimer m_clock;
    std::optional<Reply> m_reply;
    qint64 m_replyAtMs = 0;
    std::function<void()> m_idleWork;
};
