#pragma once

#include "systemreport.h"

#include <hostchannel.h>

#include <QHash>
#include <QObject>

/// Follows what goes over the channel, to know when a run of updates begins and what the devices
/// answered last. Asks nothing itself.
class RunWitness : public QObject, public ChannelListener
{
    Q_OBJECT

public:
    void sending(Operation operation, const QByteArray& text) override;
    void answered(Operation operation, const QByteArray& text,
                  const std::optional<Reply>& reply) override;

    /// Whether a run has begun and endRun() was not called since.
    bool isRunning() const { return m_isRunning; }
    /// Takes the run for over; the next text of an update begins another one.
    void endRun() { m_isRunning = false; }

    /// What the devices said when they were asked last, by whomever.
    SystemReport lastAnswers() const;

signals:
    /// The first text of a run is about to be sent; the table of updates is still as it was when
    /// the operator started it.
    void runBegins();
    /// The controllers have taken the command to restart, or to shut down.
    void restartAccepted();
    /// The command got no answer: a restart may well cut off its own one, or nothing happens.
    void restartUnanswered();

private:
    bool m_isRunning = false;
    QHash<QByteArray, Reply> m_answers; // to queries
};
