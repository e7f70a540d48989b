#include "tcplink.h"

#include <wirelanguage.h>

#include <utility>

namespace {

constexpr int maxReplyLine = 1024;
constexpr int probeIntervalMs = 500;
constexpr char probeTag[] = "#power";
constexpr char identityTag[] = "#identity";
constexpr char nameTag[] = "#name";

Reply replyFrom(const WireReply& line, Operation operation)
{
    Reply reply;
    bool isNumber = false;
    reply.text = line.text;
    reply.integer = line.text.toInt(&isNumber);
    reply.ok = line.ok && (isNumber || operation != Operation::GetInt);
    return reply;
}

} // namespace

TcpLink::TcpLink(const Endpoint& peer, QString controllerAddress, QByteArray identity, QString name)
    : m_controllerAddress(std::move(controllerAddress)), m_identity(std::move(identity)),
      m_name(std::move(name)), m_socket(peer, maxReplyLine)
{
    connect(&m_socket, &LineSocket::opened, this, &TcpLink::handleOpened);
    connect(&m_socket, &LineSocket::lineReceived, this, &TcpLink::handleLine);
    connect(&m_socket, &LineSocket::closed, this, &TcpLink::handleClosed);
    m_probeTimer.setInterval(probeIntervalMs);
    m_probeTimer.setSingleShot(true);
    connect(&m_probeTimer, &QTimer::timeout, this, &TcpLink::probe);
    m_socket.open();
}

void TcpLink::send(Operation operation, const QByteArray& text)
{
    m_reply.reset();
    m_tag.clear();
    m_unsent.clear();
    const QByteArray tag = '#' + QByteArray::number(++m_number);
    const std::optional<QByteArray> line = requestLine(tag, operation, text);
    if (!line)
        return;
    m_tag = tag;
    m_operation = operation;
    if (m_isKnown) {
        m_socket.write(*line);
    } else {
        m_unsent = *line;
        m_socket.open();
    }
}

std::optional<Reply> TcpLink::wait(int timeoutMs)
{
    const QDeadlineTimer deadline(qMax(0, timeoutMs));
    QDeadlineTimer slice(idleSliceMs);
    while (!m_tag.isEmpty()) {
        waitForActivity(deadline, slice);
        if (deadline.hasExpired())
            break;
        if (slice.hasExpired()) {
            doIdleWork();
            slice.setRemainingTime(idleSliceMs);
        }
    }
    return std::exchange(m_reply, std::nullopt);
}

// An attempt to connect is not cut into slices, as it would be given up after each.
void TcpLink::waitForActivity(const QDeadlineTimer& deadline, const QDeadlineTimer& slice)
{
    const qint64 leftMs = deadline.remainingTime();
    m_socket.waitForActivity(
        static_cast<int>(m_socket.isOpen() ? qMin(leftMs, slice.remainingTime()) : leftMs));
}

void TcpLink::catchUp(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!m_isProbed && !deadline.hasExpired())
        m_socket.waitForActivity(static_cast<int>(deadline.remainingTime()));
}

// Only those beside the equipment tell whether the controllers behind it are up.
void TcpLink::probe()
{
    question(probeTag, "power");
}

void TcpLink::question(const QByteArray& tag, const QByteArray& text)
{
    m_socket.write(equipmentLine(tag, text));
    m_socket.expectLine();
}

void TcpLink::handleOpened()
{
    m_wasOpened = true;
    if (m_identity.isEmpty())
        begin();
    else
        question(identityTag, "identity");
}

void TcpLink::begin()
{
    m_isKnown = true;
    if (!m_name.isEmpty())
        m_socket.write(equipmentLine(nameTag, "introduce " + m_name.toUtf8()));
    probe();
    m_socket.write(std::exchange(m_unsent, QByteArray()));
}

void TcpLink::handleLine(const QByteArray& line)
{
    const std::optional<WireReply> reply = readReply(line);
    if (!reply)
        return;
    if (reply->tag == identityTag) {
        if (reply->text == m_identity) {
            begin();
        } else {
            m_isProbed = true;
            m_isReachable = false;
        }
    } else if (reply->tag == probeTag) {
        m_isProbed = true;
        m_isReachable = reply->text == "on";
        if (!m_isReachable)
            m_probeTimer.start();
    } else if (!m_tag.isEmpty() && reply->tag == m_tag) {
        m_tag.clear();
        m_reply = replyFrom(*reply, m_operation);
        m_isReachable = true;
    }
}

// After a short loss the controllers count as reachable, if the next connection is good again.
void TcpLink::handleClosed(bool wasOfUse)
{
    if (std::exchange(m_wasOpened, false))
        ++m_connection;
    wasOfUse = std::exchange(m_isKnown, false) && wasOfUse;
    m_tag.clear();
    m_unsent.clear();
    m_isReachable = m_isReachable && wasOfUse;
}
