#pragma once

#include "hostchannel.h"
#include "mainwindow.h"
#include "modulesession.h"
#include "options.h"
#include "resultdialog.h"
#include "runfollower.h"
#include "systemaccess.h"
#include "textreceiver.h"

#include <replaychannel.h>

#include <QLockFile>
#include <QTimer>

#include <memory>

/// The frontend as a whole: the access to the system, the channel to it, the window and the module
/// that takes part as long as the controllers answer.
///
/// To be made after the application object, and with HOME set to homeFolder().
class Frontend : public QObject
{
    Q_OBJECT

public:
    /// The folder below @p stateDir that stands in for the user's home.
    static QString homeFolder(const QString& stateDir);

    /// The file below @p stateDir that says that a frontend uses it.
    static QString lockFile(const QString& stateDir);

    Frontend(std::unique_ptr<SystemAccess> access, const Options& options);
    /// For a system that is simulated here.
    Frontend(Scenario scenario, const Options& options);
    ~Frontend() override;

    /// Takes the state folder and loads the module. A state that is damaged is no failure: it is
    /// reported in the log, and the system stands as the scenario tells.
    /// @return false if that is not possible; @p error, not null, says why.
    bool prepare(QString* error);

    /// Shows the window and serves events until the application quits, then has the module leave.
    void run();

    MainWindow& window() { return m_window; }
    TestBench& bench() const { return m_bench; }
    /// The replay of a transcript; null without one, and before the module takes part.
    const ReplayChannel* replay() const { return m_replay.get(); }

private:
    void forgetEarlierStarts();
    void log(const QString& text);
    void followSystem();
    void enterModule();
    void leaveModule();
    IOManager& moduleChannel();
    IOManager& recordedChannel();
    BackendVersions versions();
    BackendVersions askVersions();
    VersionInfo askVersion(const char* key);
    void searchForHardware();
    void showResults();
    void tellTheme(bool dark);
    void tellModule(const char* text);

    Options m_options;
    std::unique_ptr<SystemAccess> m_access;
    TestBench& m_bench;
    CommandLink& m_link;
    bool m_observer;
    HostChannel m_channel;
    MainWindow m_window;
    RunFollower m_runs;
    ResultDialog m_results;
    TextReceiver m_logReceiver;
    TextReceiver m_windowReceiver;
    QLockFile m_lock;
    QTimer m_follow;
    bool m_wasUnreachable = false;
    bool m_isWaiting = false; // for a reply
    ModuleInterface* m_module = nullptr;
    std::unique_ptr<BackendVersions> m_versions;
    std::unique_ptr<RecordingChannel> m_recorder;
    std::unique_ptr<ReplayChannel> m_replay;
    std::unique_ptr<ModuleSession> m_session; // last: it uses all the others
};
