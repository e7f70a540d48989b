#pragma once

#include "remoteequipment.h"
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
    Equipment& equipment() override { return m_equipment; }
    QByteArray identity() const override { return m_identity; }
    bool isExchanged() const override { return m_equipment.isExchanged(); }
    /// The other process keeps its state itself.
    std::optional<QString> keepState(const QString& /*stateDir*/, bool /*fresh*/,
                                     QString* /*error*/) override
    {
        return QString();
    }

private:
    RemoteAccess(const Endpoint& peer, const Scenario& scenario, const QByteArray& identity);

    QByteArray m_identity;
    RemoteEquipment m_equipment;
    TcpLink m_link;
};
