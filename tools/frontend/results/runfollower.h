#pragma once

#include "runstore.h"
#include "runwitness.h"
#include "stepsback.h"
#include "updateplan.h"

#include <ModuleInterface.h>

#include <QList>
#include <QPointer>
#include <QWidget>

#include <functional>

/// Follows each run of the update dialog from its plan to what became of it: keeps the plan when
/// the operator starts the run, asks the devices when they can have changed, and tells the outcome.
///
/// Before the first text of a run it asks the devices what they run, and lets go a run that would
/// take one of them back only with permission. Otherwise it questions devices only in the calls
/// that say so, which are for moments in which no module is in the middle of something. To be used
/// from the user interface thread.
class RunFollower : public QObject
{
    Q_OBJECT

public:
    /// Says whether a run may go that takes these devices back, or none. Called before the first
    /// text of each run, in the middle of the module's call, which waits for it.
    using Permission = std::function<bool(const QVector<StepBack>&)>;

    /// @param channel must outlive this object
    /// @param folder where the runs are kept
    /// @param identity tells the system from others at the same address; empty: nothing does
    RunFollower(HostChannel& channel, const QString& folder, QString identity = QString());
    ~RunFollower() override;

    /// Who is asked for permission. Without anybody a run that takes a device back is stopped.
    void setPermission(const Permission& permission) { m_permission = permission; }

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
    bool mayRun(const UpdatePlan& plan);
    void noteRestart(bool isTaken);
    /// @return whether anything has changed
    bool askDevices();
    void judge();
    bool isOfConnectedSystem(const PlannedRun& run);
    QString connectedSystem();
    void noteEnd();
    void note(const QString& text);
    void save();

    HostChannel& m_channel;
    RunStore m_store;
    RunWitness m_witness;
    QList<QPointer<QWidget>> m_windows;
    QString m_identity;
    Permission m_permission;
    std::optional<PlannedRun> m_run;
    bool m_isAsking = false;
};
