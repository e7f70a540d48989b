#pragma once

#include "updateturn.h"

#include <endpoint.h>

#include <QTcpServer>

class SimulatedSystem;

/// Serves one simulated system over TCP, to any number of peers up to a limit.
///
/// To be used from the thread of the system.
class SystemServer : public QObject
{
    Q_OBJECT

public:
    /// Further peers are turned away at once.
    static constexpr int maxConnections = 32;

    /// @param system must outlive the server
    explicit SystemServer(SimulatedSystem& system, QObject* parent = nullptr);

    /// @param endpoint port 0: any that is free
    /// @param error must not be null; receives one line on failure
    bool listen(const Endpoint& endpoint, QString* error);

    /// Where it listens, with the port that it took.
    Endpoint endpoint() const { return {m_server.serverAddress(), m_server.serverPort()}; }

private:
    void accept();

    SimulatedSystem& m_system;
    UpdateTurn m_turn;
    QTcpServer m_server;
    int m_connections = 0;
};
