#pragma once

#include "runstore.h"
#include "runwitness.h"

#include <ModuleInterface.h>

#include <QList>
#include <QPointer>
#include <QWidget>

/// Follows each run of the update dialog from its plan to what became of it: keeps the plan when
/// the operator starts the run, asks the devices when they can have changed, and tells the outcome.
///
/// It questions devices only in the calls that say so, which are for moments in which no module is
/// in the middle of something. To be used from the user interface thread.
class RunFollower : public QObject
{
    Q_OBJECT

public:
    /// @param channel must outlive this object
    /// @param folder where the runs are kept
    RunFollower(HostChannel& channel, const QString& folder);
    ~RunFollower() override;

    /// Reads the last run. Problems come as message().
    void load();

    /// The controllers answer. Asks what is not settled yet.
    void systemConnected();
    /// A module has come; in its windows the table of updates is looked for.
    void moduleEntered(const QList<GuiElement*>& elements);
    /// To be called again and again while no window of a module is open. Asks after a run.
    void moduleRests();
    /// The module leaves, with or without a loss of the controllers.
    void moduleLeaves(bool controllersAreGone);
    /// A search for hardware is about to begin. Asks, to know which cameras have lost power, and
    /// says nothing of it.
    void searchBegins();
    /// The search is over. Asks.
    void searchEnded();

    /// Whether there is a run to tell of, be it one that an earlier process left.
    bool hasRun() const { return m_run.has_value(); }
    /// The last run; only if hasRun().
    const PlannedRun& run() const { return *m_run; }
    /// Path of its log file; only if hasRun().
    QString logFile() const { return m_store.logFile(*m_run); }

signals:
    /// One line for the frontend's log.
    void message(const QString& text);
    /// run() is another one now, or none.
    void runChanged();
    /// Something has come out that was not known before.
    void resultChanged();

private:
    void beginRun();
    void noteRestart(bool isTaken);
    /// @return whether anything has changed
    bool askDevices();
    void judge();
    QString connectedSystem();
    void noteEnd();
    void note(const QString& text);
    void save();

    HostChannel& m_channel;
    RunStore m_store;
    RunWitness m_witness;
    QList<QPointer<QWidget>> m_windows;
    std::optional<PlannedRun> m_run;
    bool m_isAsking = false;
};
