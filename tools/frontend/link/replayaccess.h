#pragma once

#include "systemaccess.h"

#include <transcript.h>

#include <memory>

/// No system at all: a transcript answers the module, and nobody answers the frontend.
class ReplayAccess final : public SystemAccess
{
public:
    /// @param transcript is copied
    explicit ReplayAccess(const Transcript& transcript);
    /// @param error must not be null; receives one line on failure
    /// @return null if @p fileName cannot be read or is damaged
    static std::unique_ptr<ReplayAccess> open(const QString& fileName, QString* error);

    CommandLink& link() override { return m_link; }
    Equipment& equipment() override { return m_equipment; }
    std::optional<QString> keepState(const QString& /*stateDir*/, bool /*fresh*/,
                                     QString* /*error*/) override
    {
        return QString();
    }
    const Transcript* transcript() const override { return &m_transcript; }

private:
    /// A line that is there and carries nothing.
    class Link final : public CommandLink
    {
    public:
        void send(Operation /*operation*/, const QByteArray& /*text*/) override {}
        std::optional<Reply> wait(int /*timeoutMs*/) override { return std::nullopt; }
        bool isReachable() const override { return true; }
        quint64 connection() const override { return 0; }
        QString address() const override { return QString(); }
    };

    /// Equipment without devices; hands do nothing.
    class NoEquipment final : public Equipment
    {
    public:
        explicit NoEquipment(const Transcript& transcript);
        const Scenario& scenario() const override { return m_scenario; }
        const EquipmentState& state() const override { return m_state; }
        qint64 msUntilReachable() const override { return 0; }
        void perform(const EquipmentCommand& /*command*/) override {}

    private:
        Scenario m_scenario;
        EquipmentState m_state;
    };

    Transcript m_transcript;
    Link m_link;
    NoEquipment m_equipment;
};
