#pragma once

#include "options.h"

#include <desktopinhibitor.h>
#include <hostchannel.h>
#include <linewatch.h>
#include <logkeeper.h>
#include <mainwindow.h>
#include <modulehost.h>
#include <ownfolder.h>
#include <resultdialog.h>
#include <runfollower.h>
#include <runmonitor.h>
#include <systemaccess.h>

#include <QTimer>

#include <memory>

/// The frontend as a whole: the access to the system, the channel to it, the window, and the host
/// of the module that takes part as long as the controllers answer.
///
/// To be made after the application object, and with HOME set to homeFolder().
class Frontend : public QObject
{
    Q_OBJECT

public:
    /// The folder below @p stateDir that stands in for the user's home.
    static QString homeFolder(const QString& stateDir);

    /// Makes @p stateDir if it is not there, and makes sure that it was made for a frontend. To be
    /// done before anything is written there.
    /// @param error must not be null; on failure "FOLDER: REASON"
    static bool claimStateFolder(const QString& stateDir, QString* error);

    /// For the system that @p access leads to; not null.
    Frontend(std::unique_ptr<SystemAccess> access, const Options& options);
    /// For a system that is simulated here.
    Frontend(Scenario scenario, const Options& options);
    ~Frontend() override;

    /// Takes the state folder and loads the module, unless its delivery must be proven first, which
    /// is done when the controllers answer. A state that is damaged is no failure: it is
    /// reported in the log, and the system stands as the scenario tells.
    /// @return false if that is not possible; @p error, not null, says why.
    bool prepare(QString* error);

    /// Shows the window and serves events until the application quits, then has the module leave.
    /// @return false if another system stands in the place of the one it was made for, so that a
    ///         frontend has to be made for that one
    bool run();

    /// Quits; if a run of updates is under way, as soon as it is over.
    void quit();

    /// The window, shown by run(); owned by the frontend.
    MainWindow& window() { return m_window; }
    /// The equipment of the system; owned by the access.
    Equipment& equipment() const { return m_access->equipment(); }
    /// Whether the module was kept out, as its delivery is not proven or it cannot be loaded.
    bool isModuleRefused() const { return m_isConnected && m_module.isRefused(); }
    /// The replay of a transcript; null without one, and before the module takes part.
    const ReplayChannel* replay() const { return m_module.replay(); }

private:
    void watchModule();
    void watchRuns();
    bool forgetEarlierStarts(QString* error);
    void goOnFromEarlierStarts();
    void keepLook();
    void log(const QString& text);
    void watchWindow();
    void look();
    void followLine();
    void followModule();
    void beginAnew();
    void systemFound();
    void followOtherHost();
    bool allowsRun(const QVector<StepBack>& stepsBack);
    void systemLost();
    BackendVersions askVersions();
    bool answers() const;
    bool mayUseLine();
    void searchForHardware();
    void showResults();
    void tellTheme(bool dark);

    Options m_options;
    std::unique_ptr<SystemAccess> m_access;
    LineWatch m_watch;
    HostChannel m_channel;
    RunMonitor m_monitor;
    DesktopInhibitor m_inhibitor;
    MainWindow m_window;
    LogKeeper m_logKeeper;
    RunFollower m_runs;
    ResultDialog m_results;
    FolderLock m_lock;
    QTimer m_follow;
    bool m_hasToBeginAnew = false;
    bool m_wasUnreachable = false;
    bool m_isLookingOn = false; // as another host updates the system
    QString m_details;          // of the system, as its heading tells them
    bool m_isShownLost = false;
    bool m_isShuttingDown = false;
    bool m_isConnected = false; // the module was asked in, whether or not it was let in
    bool m_isWaiting = false;   // for a reply, or for the module to come in
    ModuleHost m_module;        // last: it uses all the others
};
