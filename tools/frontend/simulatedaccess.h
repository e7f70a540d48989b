#pragma once

#include "simulatorlink.h"
#include "systemaccess.h"

#include <simulatedsystem.h>

/// Access to a system that is simulated in this process.
class SimulatedAccess final : public SystemAccess
{
public:
    /// @param fast whether the devices take no time for what is sent to them
    SimulatedAccess(Scenario scenario, bool fast);

    CommandLink& link() override { return m_link; }
    TestBench& bench() override { return m_system; }
    QString keepState(const QString& stateDir, bool fresh) override;

private:
    SimulatedSystem m_system;
    SimulatorLink m_link;
};
