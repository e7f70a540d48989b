#pragma once

#include "systemaccess.h"

#include <transcript.h>

#include <memory>

/// No system at all: a transcript answers the module, and nobody answers the frontend.
class ReplayAccess final : public SystemAccess
{
public:
    explicit ReplayAccess(const Transcript& transcript);
    /// @param error must not be null; receives one line on failure
    /// @return null if @p fileName cannot be read or is damaged
    static std::unique_ptr<ReplayAccess> open(const QString& fileName, QString* error);

    CommandLink& link() override { return m_link; }
    TestBench& bench() override { return m_bench; }
    QString keepState(const QString& /*stateDir*/, bool /*fresh*/) override { return QString(); }
    const Transcript* transcript() const override { return &m_transcript; }

private:
    /// A line that is there and carries nothing.
    class Link final : public CommandLink
    {
    public:
        void send(Operation /*operation*/, const QByteArray& /*text*/) override {}
        std::optional<Reply> wait(int /*timeoutMs*/) override { return std::nullopt; }
        bool isReachable() const override { return true; }
        QString address() const override { return QString(); }
    };

    /// A bench without devices; hands do nothing.
    class Bench final : public TestBench
    {
    public:
        explicit Bench(const Transcript& transcript);

        const Scenario& scenario() const override { return m_scenario; }
        const QVector<ControllerState>& controllers() const override { return m_controllers; }
        const QVector<CameraState>& cameras() const override { return m_cameras; }
        Measurement measurement() const override { return Measurement::Off; }
        const QVector<Fault>& armedFaults() const override { return m_scenario.faults; }
        qint64 msUntilReachable() const override { return 0; }
        bool isReachable() const override { return true; }
        void setMeasuring(bool /*measuring*/) override {}
        void powerCycleCamera(int /*index*/) override {}
        void powerCycle() override {}
        void armFault(const Fault& /*fault*/) override {}
        void disarmFaults() override {}

    private:
        Scenario m_scenario;
        QVector<ControllerState> m_controllers;
        QVector<CameraState> m_cameras;
    };

    Transcript m_transcript;
    Link m_link;
    Bench m_bench;
};
