#pragma once

#include <commandinterpreter.h>
#include <commandlink.h>
#include <devicepace.h>

/// The line to a system that is simulated in this process.
class SimulatorLink : public CommandLink
{
public:
    /// How long replies take.
    enum class Pace
    {
        Device, ///< replies take the time that the devices take
        Fast,   ///< replies are there at once; what takes longer than the time-out still fails
    };

    /// @param system must outlive the link
    SimulatorLink(SimulatedSystem& system, Pace pace);

    void send(Operation operation, const QByteArray& text) override;
    std::optional<Reply> wait(int timeoutMs) override;
    bool isReachable() const override;
    quint64 connection() const override;
    QString address() const override;

private:
    qint64 msUntilReply() const;
    void pass(qint64 ms);

    SimulatedSystem& m_system;
    CommandInterpreter m_interpreter;
    Pace m_pace;
    quint64 m_losses = 0; // of the connection alone
    DevicePace m_devices;
    std::optional<Reply> m_reply;
};
