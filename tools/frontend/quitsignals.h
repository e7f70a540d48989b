#pragma once

#include <QObject>

#include <array>
#include <memory>

#include <csignal>

class QSocketNotifier;

/// Turns the signals that ask a process to end (SIGTERM, SIGINT and SIGHUP) into an event. The
/// first one of each is told; a second one ends the process at once. One that the process was
/// started to ignore stays ignored.
///
/// There must be no more than one of these at a time. To be used from the user interface thread.
class QuitSignals : public QObject
{
    Q_OBJECT

public:
    /// From now on the signals are taken, until the object goes.
    QuitSignals();
    ~QuitSignals() override;

signals:
    /// Somebody wants the process to end.
    void wanted();

private:
    static constexpr std::array<int, 3> numbers = {SIGTERM, SIGINT, SIGHUP};

    std::array<struct sigaction, numbers.size()> m_before = {};
    std::unique_ptr<QSocketNotifier> m_notifier; // null if there is no pipe
};
