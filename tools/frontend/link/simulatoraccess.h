#pragma once

#include "systemaccess.h"

#include <QStringList>

#include <functional>
#include <memory>

class SimulatedSystem;
class SimulatorLink;

/// Access to a system that is simulated in this process.
class SimulatorAccess final : public SystemAccess
{
public:
    /// Tells the milliseconds since 1970.
    using Clock = std::function<qint64()>;

    /// @param fast whether the devices take no time for what is sent to them
    /// @param nowMs milliseconds since 1970; the machine's clock if none is given
    SimulatorAccess(Scenario scenario, bool fast, Clock nowMs = {});
    ~SimulatorAccess() override;

    /// Names of the files in the folder @p stateDir that keep a system, and of no other ones.
    static QStringList stateFiles(const QString& stateDir);

    CommandLink& link() override;
    Equipment& equipment() override;
    QByteArray identity() const override;
    std::optional<QString> keepState(const QString& stateDir, bool fresh, QString* error) override;

private:
    std::unique_ptr<SimulatedSystem> m_system;
    std::unique_ptr<SimulatorLink> m_link;
};
