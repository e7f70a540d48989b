#pragma once

#include "remotebench.h"
#include "systemaccess.h"
#include "tcplink.h"

#include <memory>

/// Access to a system that is simulated in another process.
class RemoteAccess final : public SystemAccess
{
public:
    /// Asks the process for its scenario; that takes some seconds at most.
    ///
    /// @param error must not be null; receives one line on failure
    /// @return null on failure
    static std::unique_ptr<RemoteAccess> connectTo(const Endpoint& peer, QString* error);

    CommandLink& link() override { return m_link; }
    TestBench& bench() override { return m_bench; }
    /// The other process keeps its state itself.
    QString keepState(const QString& /*stateDir*/, bool /*fresh*/) override { return QString(); }

private:
    RemoteAccess(const Endpoint& peer, const Scenario& scenario);

    RemoteBench m_bench;
    TcpLink m_link;
};
