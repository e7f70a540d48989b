#pragma once

#include <patience.h>

#include <endpoint.h>

#include <QMutex>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <functional>
#include <future>
#include <memory>
#include <utility>
#include <vector>

/// The far end of one connection, for a script that plays it step by step. To be used from the
/// thread of the peer.
class PeerConnection
{
public:
    PeerConnection(QTcpSocket& socket, std::function<void(const QByteArray&)> note)
        : m_socket(socket), m_note(std::move(note))
    {
    }

    /// Waits for a line, without its end. @return nothing if the connection ends before
    QByteArray readLine()
    {
        while (!m_socket.canReadLine() && m_socket.waitForReadyRead(longWaitMs)) {
        }
        const QByteArray line = m_socket.readLine().trimmed();
        if (!line.isEmpty())
            m_note(line);
        return line;
    }

    void write(const QByteArray& bytes)
    {
        m_socket.write(bytes);
        while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(longWaitMs)) {
        }
    }

    /// Answers the question for the power of the system that TcpLink begins with.
    void tellPower(const QByteArray& power = "on")
    {
        readLine();
        write("#power ok " + power + '\n');
    }

    void waitUntilClosed()
    {
        while (m_socket.state() == QAbstractSocket::ConnectedState &&
               m_socket.waitForReadyRead(longWaitMs))
            m_socket.readAll();
    }

private:
    static constexpr int longWaitMs = patienceMs;

    QTcpSocket& m_socket;
    std::function<void(const QByteArray&)> m_note;
};

/// Plays the far end of connections in a thread of its own, as those that are tested block theirs.
///
/// There is one script for each connection, in order; a connection is closed when its script ends,
/// and nobody listens any more after the last one.
class ScriptedPeer : public QThread
{
public:
    using Script = std::function<void(PeerConnection&)>;

    explicit ScriptedPeer(std::vector<Script> scripts) : m_scripts(std::move(scripts))
    {
        std::future<quint16> port = m_port.get_future();
        start();
        m_endpoint.port = port.get();
    }

    ~ScriptedPeer() override
    {
        requestInterruption();
        wait();
    }

    const Endpoint& endpoint() const { return m_endpoint; }

    /// The lines of all connections up to now.
    QList<QByteArray> lines()
    {
        const QMutexLocker locker(&m_mutex);
        return m_lines;
    }

protected:
    void run() override
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        m_port.set_value(server.serverPort());
        for (const Script& script : m_scripts) {
            while (!server.hasPendingConnections() && !isInterruptionRequested())
                server.waitForNewConnection(20);
            const std::unique_ptr<QTcpSocket> socket(server.nextPendingConnection());
            if (!socket)
                return;
            PeerConnection connection(*socket, [this](const QByteArray& line) {
                const QMutexLocker locker(&m_mutex);
                m_lines.append(line);
            });
            script(connection);
        }
    }

private:
    std::vector<Script> m_scripts;
    std::promise<quint16> m_port;
    Endpoint m_endpoint;
    QMutex m_mutex;
    QList<QByteArray> m_lines;
};

/// An endpoint at which nobody listens.
inline Endpoint deadEndpoint()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return {QHostAddress(QHostAddress::LocalHost), server.serverPort()};
}
