#pragma once

#include <reply.h>

#include <QObject>
#include <QString>
#include <QTimer>

class SimulatedSystem;

/// Whose turn it is to update the system. One peer at a time has it, from its first record or
/// redirection on; what would disturb its update is refused to the others meanwhile.
///
/// The turn is over when its peer is gone, when it goes on to other texts, or when it says nothing
/// for longer than any reply is waited for. To be used from the thread of the system.
class UpdateTurn : public QObject
{
    Q_OBJECT

public:
    /// How long a turn lasts in which nothing more is sent.
    struct Patience
    {
        int behindRecordMs = 150000;  ///< longer than hosts wait for any reply
        int behindOtherTextMs = 3000; ///< hosts ask now and then whether the system is there
    };

    /// @param system is told who updates it; must outlive the turn
    explicit UpdateTurn(SimulatedSystem& system) : UpdateTurn(system, Patience()) {}
    /// The same with another patience.
    UpdateTurn(SimulatedSystem& system, const Patience& patience);

    /// To be asked before each text of @p peer, who gets the turn with the first text of an update
    /// if nobody has it.
    /// @param name of the peer, for people
    /// @return why the text must not be executed, one line; empty if it may
    QString whyNot(const QObject& peer, const QString& name, Operation operation,
                   const QByteArray& text);

    /// The peer is gone.
    void leave(const QObject& peer);

private:
    void end();

    SimulatedSystem& m_system;
    Patience m_patience;
    const QObject* m_peer = nullptr; // who has the turn; null: nobody
    QTimer m_end;
};
