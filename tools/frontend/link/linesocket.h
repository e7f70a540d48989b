#pragma once

#include <endpoint.h>
#include <linebuffer.h>

#include <QTcpSocket>
#include <QTimer>

/// A connection that carries lines, and is made anew as long as the object lives whenever it is
/// lost. To be used from the thread it lives in.
class LineSocket : public QObject
{
    Q_OBJECT

public:
    /// How long a peer may take to say something that it is bound to say at once.
    static constexpr int answerMs = 5000;

    /// @param maxLineBytes length at which a line of the peer is cut
    LineSocket(const Endpoint& peer, int maxLineBytes, QObject* parent = nullptr);
    ~LineSocket() override;

    /// Begins to connect, unless that is under way or done.
    void open();
    /// Whether there is a connection now.
    bool isOpen() const { return m_socket.state() == QAbstractSocket::ConnectedState; }

    /// Sends bytes; they are dropped if there is no connection.
    void write(const QByteArray& bytes);

    /// Gives the connection up, if there is one; the next one is made by itself.
    void hangUp();
    /// Gives it up unless a line comes within answerMs.
    void expectLine();

    /// Waits until the connection comes or goes or something arrives on it. An attempt to connect
    /// that takes longer than the wait is given up.
    /// @param timeoutMs 0: does what is due without waiting
    void waitForActivity(int timeoutMs);

    /// What went wrong last, for people.
    QString errorText() const { return m_socket.errorString(); }

signals:
    /// There is a connection, be it the first or one after a loss.
    void opened();
    /// @param line without its line end
    void lineReceived(const QByteArray& line);
    /// The connection is lost, or there was none to be had.
    /// @param wasOfUse whether a line came over it
    void closed(bool wasOfUse);

private:
    void waitForRetry(int timeoutMs);
    void read();
    void endSilence();
    void handleState(QAbstractSocket::SocketState state);

    Endpoint m_peer;
    LineBuffer m_lines;
    QTcpSocket m_socket;
    QTimer m_retry;
    QTimer m_silence;
    bool m_isLineDue = false;
    bool m_isOfUse = false;
};
