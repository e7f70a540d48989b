#pragma once

#include "linesocket.h"

#include <commandlink.h>

#include <QDeadlineTimer>

/// The line to a system in another process, over TCP.
///
/// A connection that is lost is made anew by itself. A text that was under way then is lost, and is
/// never sent a second time. Nothing is sent to another system than the one that was there first.
/// A peer that is silent when it is asked which system it is, and whether that has power, is given
/// up and tried again.
class TcpLink final : public QObject, public CommandLink
{
    Q_OBJECT

public:
    /// @param controllerAddress what address() tells, as the peer only stands in for a controller
    /// @param identity of the system, as its bench tells; empty: whatever answers will do
    /// @param name by which the system knows this host, see nameOfThisHost(); empty: by none
    TcpLink(const Endpoint& peer, QString controllerAddress, QByteArray identity = QByteArray(),
            QString name = QString());

    /// Waits until it is known whether the controllers answer, or until the time has run out.
    void catchUp(int timeoutMs);

    void send(Operation operation, const QByteArray& text) override;
    std::optional<Reply> wait(int timeoutMs) override;
    bool isReachable() const override { return m_isReachable; }
    bool isOpen() const override { return m_isKnown; }
    quint64 connection() const override { return m_connection; }
    QString address() const override { return m_controllerAddress; }
    void hangUp() override { m_socket.hangUp(); }

private:
    void waitForActivity(const QDeadlineTimer& deadline, const QDeadlineTimer& slice);
    void handleOpened();
    void handleLine(const QByteArray& line);
    void handleClosed(bool wasOfUse);
    void begin();
    void probe();
    void question(const QByteArray& tag, const QByteArray& text);

    QString m_controllerAddress;
    QByteArray m_identity;
    QString m_name;
    LineSocket m_socket;
    QTimer m_probeTimer;
    quint64 m_number = 0;
    QByteArray m_tag; // of the text whose reply is awaited; empty: none
    Operation m_operation = Operation::GetString;
    QByteArray m_unsent; // its line, as long as there is no connection
    std::optional<Reply> m_reply;
    quint64 m_connection = 0;
    bool m_wasOpened = false;
    bool m_isKnown = false; // it leads to the right system
    bool m_isReachable = false;
    bool m_isProbed = false;
};
