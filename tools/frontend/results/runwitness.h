#pragma once

#include "systemreport.h"

#include <hostchannel.h>

#include <QHash>
#include <QObject>

/// Follows what goes over the channel, to know when a run of updates begins and what the devices
/// answered last, and holds a run back that must not be. Asks nothing itself.
class RunWitness : public QObject, public ChannelListener
{
    Q_OBJECT

public:
    bool sending(Operation operation, const QByteArray& text) override;
    void answered(Operation operation, const QByteArray& text,
                  const std::optional<Reply>& reply) override;

    /// Whether a run has begun, was not refused, and endRun() was not called since.
    bool isRunning() const { return m_run == Run::UnderWay; }
    /// Takes the run for over; the next text of an update begins another one.
    void endRun() { m_run = Run::None; }
    /// Lets nothing of the run that has begun go over the channel until it is over.
    void refuseRun() { m_run = Run::Refused; }

    /// What the devices said when they were asked last, by whomever.
    SystemReport lastAnswers() const;
    /// The same, with the last answer that came where none came to the last question.
    SystemReport lastKnown() const;

signals:
    /// The first text of a run is about to be sent, unless refuseRun() is called now; the table of
    /// updates is still as it was when the operator started it.
    void runBegins();
    /// The controllers have taken the command to restart, or to shut down.
    void restartAccepted();
    /// The command got no answer: a restart may well cut off its own one, or nothing happens.
    void restartUnanswered();

private:
    enum class Run
    {
        None,
        UnderWay,
        Refused,
    };

    Run m_run = Run::None;
    QHash<QByteArray, Reply> m_answers; // to queries
    QHash<QByteArray, Reply> m_known;   // the same, and never forgotten
};
