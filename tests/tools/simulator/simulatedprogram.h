#pragma once

#include <childprocess.h>

#include <endpoint.h>

#include <QTcpSocket>

#include <functional>
#include <optional>

/// @file
/// The programs as they are built, in processes of their own. Who includes this defines
/// SIMULATED_SYSTEM, the path of that program.

/// `simulated-system`, as it was started.
class SimulatedProgram
{
public:
    explicit SimulatedProgram(const QStringList& arguments,
                              const std::function<void()>& inChild = nullptr)
    {
        m_process.setInChild(inChild);
        m_process.start(QStringLiteral(SIMULATED_SYSTEM), arguments);
    }

    /// The first line of its output, without the line end.
    QByteArray firstLine()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(patienceMs)) {
        }
        return m_process.readLine().trimmed();
    }

    /// Where it says that it listens.
    std::optional<Endpoint> endpoint()
    {
        const QByteArray words = "Listening on ";
        const QByteArray line = firstLine();
        return line.startsWith(words) ? Endpoint::read(QString::fromLatin1(line.mid(words.size())))
                                      : std::nullopt;
    }

    /// Waits for its end. @return exit code, output and error output
    QStringList result()
    {
        m_process.waitForEnd();
        return {QString::number(m_process.exitCode()),
                QString::fromLocal8Bit(m_process.readAllStandardOutput()),
                QString::fromLocal8Bit(m_process.readAllStandardError())};
    }

    bool runs() const { return m_process.state() == QProcess::Running; }
    QByteArray errorOutput() { return m_process.readAllStandardError(); }
    void kill() { m_process.end(); }

private:
    ChildProcess m_process;
};

/// The reply to one line, over a connection of its own.
inline QByteArray ask(const Endpoint& endpoint, const QByteArray& line)
{
    QTcpSocket socket;
    socket.connectToHost(endpoint.address, endpoint.port);
    if (!socket.waitForConnected(patienceMs))
        return socket.errorString().toLocal8Bit();
    socket.write(line + '\n');
    while (!socket.canReadLine() && socket.waitForReadyRead(patienceMs)) {
    }
    return socket.readLine().trimmed();
}
