#pragma once

#include <commandinterpreter.h>
#include <devicepace.h>
#include <linebuffer.h>
#include <wirelanguage.h>

#include <QObject>
#include <QTimer>

#include <deque>

class QTcpSocket;
class UpdateTurn;

/// The system's end of one connection: answers its lines, each when the devices are done with it.
///
/// Whatever the peer sends, or does not read, the memory that it takes is bounded. The object
/// deletes itself when the connection is closed.
class ServedConnection : public QObject
{
    Q_OBJECT

public:
    /// @param socket connected; the object takes it over
    /// @param system,turn must outlive the connection
    ServedConnection(QTcpSocket* socket, SimulatedSystem& system, UpdateTurn& turn,
                     QObject* parent);

private:
    /// A line that waits until it is due; one without bytes closes the connection.
    struct DueLine
    {
        qint64 dueMs;
        QByteArray bytes;
    };

    void retire();
    void serveLines();
    void serve(const WireRequest& request);
    void command(const WireRequest& request);
    Reply replyTo(const WireRequest& request);
    void attend(const WireRequest& request);
    void queue(const QByteArray& bytes);
    void hangUp();
    void sendDue();
    bool isBacklogged() const;
    void followSystem();
    void tellState();

    SimulatedSystem& m_system;
    UpdateTurn& m_turn;
    CommandInterpreter m_interpreter;
    QTcpSocket* m_socket;
    QString m_name; // of the peer
    LineBuffer m_lines;
    DevicePace m_devices;
    std::deque<DueLine> m_due;
    QTimer m_dueTimer;
    QTimer m_stateTimer;
    bool m_carriesCommands = false;
    bool m_watches = false;
};
