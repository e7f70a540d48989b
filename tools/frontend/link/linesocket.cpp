#include "linesocket.h"

#include <QThread>

#include <utility>

namespace {

constexpr int retryMs = 500;
constexpr int readBufferBytes = 64 * 1024;

} // namespace

LineSocket::LineSocket(const Endpoint& peer, int maxLineBytes, QObject* parent)
    : QObject(parent), m_peer(peer), m_lines(maxLineBytes)
{
    m_socket.setReadBufferSize(readBufferBytes);
    connect(&m_socket, &QTcpSocket::readyRead, this, &LineSocket::read);
    connect(&m_socket, &QTcpSocket::stateChanged, this, &LineSocket::handleState);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &LineSocket::open);
    m_silence.setSingleShot(true);
    m_silence.setInterval(answerMs);
    connect(&m_silence, &QTimer::timeout, this, &LineSocket::endSilence);
}

LineSocket::~LineSocket()
{
    m_socket.disconnect(this);
}

void LineSocket::open()
{
    if (m_socket.state() != QAbstractSocket::UnconnectedState)
        return;
    m_retry.stop();
    m_socket.connectToHost(m_peer.address, m_peer.port);
}

void LineSocket::write(const QByteArray& bytes)
{
    if (isOpen())
        m_socket.write(bytes);
}

void LineSocket::hangUp()
{
    if (isOpen())
        m_socket.abort();
}

void LineSocket::expectLine()
{
    m_isLineDue = true;
    if (!m_silence.isActive())
        m_silence.start();
}

// What came while no event was served counts as well.
void LineSocket::endSilence()
{
    waitForActivity(0);
    if (m_isLineDue)
        hangUp();
}

void LineSocket::waitForActivity(int timeoutMs)
{
    if (m_socket.state() == QAbstractSocket::UnconnectedState)
        waitForRetry(timeoutMs);
    else if (isOpen() && m_socket.bytesAvailable() > 0)
        read();
    else if (isOpen())
        m_socket.waitForReadyRead(timeoutMs);
    else if (timeoutMs > 0)
        m_socket.waitForConnected(timeoutMs);
}

// The timer itself comes to nothing as long as no event loop runs.
void LineSocket::waitForRetry(int timeoutMs)
{
    const int leftMs = qMax(0, m_retry.remainingTime());
    QThread::msleep(static_cast<unsigned long>(qBound(0, leftMs, timeoutMs)));
    if (leftMs <= timeoutMs)
        open();
}

void LineSocket::read()
{
    while (m_socket.bytesAvailable() > 0) {
        m_lines.append(m_socket.read(readBufferBytes));
        while (const std::optional<QByteArray> line = m_lines.takeLine()) {
            m_isOfUse = true;
            m_isLineDue = false;
            m_silence.stop();
            emit lineReceived(*line);
        }
    }
}

void LineSocket::handleState(QAbstractSocket::SocketState state)
{
    if (state == QAbstractSocket::ConnectedState) {
        m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_lines.clear();
        m_isOfUse = false;
        emit opened();
    } else if (state == QAbstractSocket::UnconnectedState) {
        m_silence.stop();
        const bool wasOfUse = std::exchange(m_isOfUse, false);
        // At once after a connection that was good for something, else the peer gets some rest.
        m_retry.start(wasOfUse ? 0 : retryMs);
        emit closed(wasOfUse);
    }
}
