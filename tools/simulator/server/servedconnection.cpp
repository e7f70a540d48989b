#include "servedconnection.h"

#include "equipmentlines.h"
#include "updateturn.h"

#include <endpoint.h>
#include <errorreply.h>

#include <QTcpSocket>

namespace {

constexpr int readBufferBytes = 64 * 1024;
// As long as that much waits to be read by the peer, nothing more is read from it.
constexpr int maxBacklogBytes = 64 * 1024;
constexpr int maxBacklogLines = 1000;
// A stream of records changes the state more often than anybody wants to know.
constexpr int stateIntervalMs = 50;

} // namespace

ServedConnection::ServedConnection(QTcpSocket* socket, SimulatedSystem& system, UpdateTurn& turn,
                                   QObject* parent)
    : QObject(parent), m_system(system), m_turn(turn), m_interpreter(system), m_socket(socket),
      m_name(Endpoint{socket->peerAddress(), socket->peerPort()}.text()), m_lines(maxRequestLine)
{
    socket->setParent(this);
    socket->setReadBufferSize(readBufferBytes);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket, &QTcpSocket::readyRead, this, &ServedConnection::serveLines);
    connect(socket, &QTcpSocket::bytesWritten, this, &ServedConnection::serveLines);
    connect(socket, &QTcpSocket::disconnected, this, &ServedConnection::retire);
    connect(&system, &SimulatedSystem::changed, this, &ServedConnection::followSystem);

    m_dueTimer.setSingleShot(true);
    m_dueTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_dueTimer, &QTimer::timeout, this, &ServedConnection::sendDue);
    m_stateTimer.setInterval(stateIntervalMs);
    m_stateTimer.setSingleShot(true);
    connect(&m_stateTimer, &QTimer::timeout, this, &ServedConnection::tellState);
}

// Until the object is deleted a timer may still run out, or the system change.
void ServedConnection::retire()
{
    m_system.disconnect(this);
    m_dueTimer.stop();
    m_stateTimer.stop();
    m_turn.leave(*this);
    deleteLater();
}

void ServedConnection::serveLines()
{
    while (!isBacklogged()) {
        if (const std::optional<QByteArray> line = m_lines.takeLine())
            serve(readRequest(*line));
        else if (m_socket->bytesAvailable() > 0)
            m_lines.append(m_socket->read(readBufferBytes));
        else
            break;
    }
    // What waits here is lost when the peer closes its end, if only for sending. With a backlog the
    // socket has to tell later that it was written, so that serving goes on.
    if (!isBacklogged())
        m_socket->flush();
}

void ServedConnection::serve(const WireRequest& request)
{
    switch (request.kind) {
    case WireRequest::Kind::Command:
        command(request);
        break;
    case WireRequest::Kind::Equipment:
        attend(request);
        break;
    case WireRequest::Kind::Unknown:
        queue(replyLine(request.tag, false,
                        errorReply(ErrorCode::UnknownText, QStringLiteral("unknown text"))));
        break;
    }
}

void ServedConnection::command(const WireRequest& request)
{
    m_carriesCommands = true;
    const Reply reply = replyTo(request);
    m_devices.begin(reply.deviceMs);
    if (reply.delivery == Delivery::ConnectionLost)
        queue(QByteArray());
    else if (reply.delivery == Delivery::Answered)
        queue(replyLine(request.tag, reply.ok, reply.text));
}

Reply ServedConnection::replyTo(const WireRequest& request)
{
    const QString whyNot = m_turn.whyNot(*this, m_name, request.operation, request.text);
    if (whyNot.isEmpty())
        return m_interpreter.execute(request.operation, request.text);
    Reply refusal;
    refusal.ok = request.operation == Operation::Command;
    refusal.text = errorReply(ErrorCode::NotNow, whyNot);
    return refusal;
}

void ServedConnection::attend(const WireRequest& request)
{
    const EquipmentAnswer reply = answerEquipmentLine(m_system, request.text);
    // What people see does not wait for the devices.
    m_socket->write(replyLine(request.tag, reply.ok, reply.text));
    if (reply.watches)
        m_watches = true;
    if (!reply.name.isEmpty())
        m_name = reply.name;
}

void ServedConnection::queue(const QByteArray& bytes)
{
    m_due.push_back({m_devices.dueMs(), bytes});
    sendDue();
}

void ServedConnection::hangUp()
{
    m_due.clear();
    m_socket->disconnectFromHost();
}

void ServedConnection::sendDue()
{
    while (!m_due.empty() && m_due.front().dueMs <= m_devices.now()) {
        const QByteArray bytes = m_due.front().bytes;
        m_due.pop_front();
        if (bytes.isEmpty()) {
            hangUp();
            return;
        }
        m_socket->write(bytes);
    }
    if (!m_due.empty())
        m_dueTimer.start(static_cast<int>(
            qBound<qint64>(0, m_due.front().dueMs - m_devices.now(), maxDurationMs)));
}

bool ServedConnection::isBacklogged() const
{
    return m_socket->state() != QAbstractSocket::ConnectedState ||
           m_socket->bytesToWrite() > maxBacklogBytes || m_due.size() > maxBacklogLines;
}

// Controllers that restart know of no connection any more, nor of what they still had to answer;
// only the reply to the text that has just made them restart may still go out. Those who stand
// beside the system stay connected.
void ServedConnection::followSystem()
{
    if (m_carriesCommands && !m_system.isReachable())
        QMetaObject::invokeMethod(this, &ServedConnection::hangUp, Qt::QueuedConnection);
    if (m_watches && !m_stateTimer.isActive())
        m_stateTimer.start();
}

void ServedConnection::tellState()
{
    if (m_socket->bytesToWrite() > 0) // the peer is slow; it gets the state later
        m_stateTimer.start();
    else
        m_socket->write("state " + equipmentToJson(m_system) + '\n');
}
