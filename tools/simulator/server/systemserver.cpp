#include "systemserver.h"

#include "servedconnection.h"

#include <QTcpSocket>

SystemServer::SystemServer(SimulatedSystem& system, QObject* parent)
    : QObject(parent), m_system(system), m_turn(system)
{
    connect(&m_server, &QTcpServer::newConnection, this, &SystemServer::accept);
}

bool SystemServer::listen(const Endpoint& endpoint, QString* error)
{
    if (m_server.listen(endpoint.address, endpoint.port))
        return true;
    *error = QStringLiteral("%1: %2").arg(endpoint.text(), m_server.errorString());
    return false;
}

void SystemServer::accept()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        if (m_connections == maxConnections) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        ++m_connections;
        auto* connection = new ServedConnection(socket, m_system, m_turn, this);
        connect(connection, &QObject::destroyed, this, [this] { --m_connections; });
    }
}
