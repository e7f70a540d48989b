#include "frontend.h"

#include "connectionpanel.h"
#include "logview.h"
#include "simulatedaccess.h"
#include "theme.h"
#include "version.h"

#include <reportedversion.h>
#include <searchhardwaredlg.h>

#include <QApplication>
#include <QDir>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QThread>

#include <utility>

static const char* const UPDATE_MODULE = "UpdateModule";
static const char* const MAIN_WINDOW = "Main_Window";

// Outside every namespace, where the resources of a library have to be initialised.
static void initPictures()
{
    Q_INIT_RESOURCE(frontend);
}

QString Frontend::homeFolder(const QString& stateDir)
{
    return stateDir + QLatin1String("/frontend-home");
}

QString Frontend::lockFile(const QString& stateDir)
{
    return stateDir + QLatin1String("/lock");
}

static QString runFolder(const Options& options)
{
    return options.stateDir + QLatin1String("/runs");
}

Frontend::Frontend(Scenario scenario, const Options& options)
    : Frontend(std::make_unique<SimulatedAccess>(std::move(scenario), options.fast), options)
{
}

Frontend::Frontend(std::unique_ptr<SystemAccess> access, const Options& options)
    : m_options(options), m_access(std::move(access)), m_bench(m_access->bench()),
      m_link(m_access->link()), m_observer(options.observer || m_bench.scenario().observer),
      m_channel(m_link), m_window(m_bench, m_observer), m_runs(m_channel, runFolder(options)),
      m_results(&m_window), m_logReceiver([this](const QString& sender, const QString& text) {
          m_window.log().add(sender, text);
      }),
      m_windowReceiver([this](const QString& /*sender*/, const QString& text) {
          if (text != QLatin1String("AppReadyToShutdown"))
              return;
          log(tr("The module has ended its work; the frontend shuts down."));
          m_window.statusBar()->showMessage(tr("Shutting down..."));
      }),
      m_lock(lockFile(options.stateDir))
{
    initPictures();
    m_channel.register_receiver("standard", &m_logReceiver);
    m_channel.register_receiver(MAIN_WINDOW, &m_windowReceiver);
    // Windows stay painted during long waits, but nothing can be clicked.
    m_link.setIdleWork([this] {
        const QScopedValueRollback<bool> waiting(m_isWaiting, true);
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    });
    connect(&m_window, &MainWindow::themeChanged, this, &Frontend::tellTheme);
    connect(&m_window, &MainWindow::hardwareSearchWanted, this, &Frontend::searchForHardware);
    connect(&m_bench, &TestBench::trouble, this, &Frontend::log);
    connect(&m_window, &MainWindow::resultsWanted, this, &Frontend::showResults);
    connect(&m_runs, &RunFollower::message, this, &Frontend::log);
    connect(&m_runs, &RunFollower::runChanged, this,
            [this] { m_window.setHasResults(m_runs.hasRun()); });
    connect(&m_runs, &RunFollower::resultChanged, this, &Frontend::showResults);
    m_window.setSaveFolder(options.userHome);
    applyTheme(options.dark);
    m_window.setDarkTheme(options.dark);

    m_follow.setInterval(100);
    connect(&m_follow, &QTimer::timeout, this, &Frontend::followSystem);
}

Frontend::~Frontend()
{
    leaveModule();
}

bool Frontend::prepare(QString* error)
{
    if (!QDir().mkpath(homeFolder(m_options.stateDir))) {
        *error = tr("%1: the state folder cannot be made").arg(m_options.stateDir);
        return false;
    }
    if (!m_lock.tryLock()) {
        *error = tr("%1: another frontend uses this state folder").arg(m_options.stateDir);
        return false;
    }
    if (m_options.fresh)
        forgetEarlierStarts();
    const QString damage = m_access->keepState(m_options.stateDir, m_options.fresh);
    if (!damage.isEmpty())
        log(tr("The state was set aside: %1").arg(damage));
    // A replay has no devices that could be asked what they run.
    if (!m_access->transcript())
        m_runs.load();

    m_module = loadModule(m_options.pluginFile, error);
    return m_module != nullptr;
}

void Frontend::forgetEarlierStarts()
{
    QDir(runFolder(m_options)).removeRecursively();
    QDir(homeFolder(m_options.stateDir)).removeRecursively();
    QDir().mkpath(homeFolder(m_options.stateDir));
}

void Frontend::log(const QString& text)
{
    m_window.log().add(QStringLiteral("Frontend"), text);
}

void Frontend::run()
{
    if (!m_link.isReachable())
        m_window.connection().showWaiting();
    m_window.show();
    const QString title = m_bench.scenario().title;
    log(m_access->transcript() ? title : tr("Simulated system: %1").arg(title));
    m_follow.start();
    QApplication::exec();
    m_follow.stop();
    leaveModule();
}

// The module takes part from when the controllers answer until they no longer do. It cannot leave
// while it waits for a reply or a window of its own runs an event loop, so that has to end first.
void Frontend::followSystem()
{
    const bool isReachable = m_link.isReachable();
    m_wasUnreachable = m_wasUnreachable || !isReachable;
    if (m_isWaiting || QThread::currentThread()->loopLevel() > 1)
        return;
    if (m_session && m_wasUnreachable) {
        log(tr("The controllers do not answer any more."));
        leaveModule();
        m_window.connection().showWaiting();
    }
    m_wasUnreachable = !isReachable;
    if (m_session)
        m_runs.moduleRests();
    else if (isReachable && m_module)
        enterModule();
}

void Frontend::enterModule()
{
    m_versions = std::make_unique<BackendVersions>(versions());
    m_window.connection().showConnected(
        tr("Model %1, tracking software %2, controller firmware %3, command protocol %4")
            .arg(m_versions->zanModel(), m_versions->systemPt().toString(),
                 m_versions->systemCt().toString(), m_versions->protocol().toString()));
    if (!m_access->transcript())
        log(tr("Connected to %1").arg(m_link.address()));
    m_runs.systemConnected();

    m_session = std::make_unique<ModuleSession>(
        *m_module, HostParameters{&moduleChannel(), &m_window, m_versions.get(), m_observer});
    const QString module =
        QStringLiteral("%1 %2").arg(m_module->get_module_name(), m_module->get_module_version());
    m_window.addModuleEntries(m_session->elements());
    m_runs.moduleEntered(m_session->elements());
    m_window.setModuleText(module);
    log(tr("Module loaded: %1").arg(module));
    tellModule(frontendVersion);
    tellTheme(m_window.isDarkTheme());
}

void Frontend::leaveModule()
{
    if (!m_session)
        return;
    m_runs.moduleLeaves(m_wasUnreachable || !m_link.isReachable());
    // From here on the module's receiver may be gone at any moment.
    m_channel.forgetReceiver(UPDATE_MODULE);
    m_window.removeModuleEntries();
    m_session.reset();
    m_recorder.reset();
    if (!m_replay || !m_replay->departure().isEmpty())
        return;
    log(m_replay->verdict().isEmpty() ? tr("Everything was called as recorded.")
                                      : m_replay->verdict());
}

IOManager& Frontend::moduleChannel()
{
    if (const Transcript* transcript = m_access->transcript()) {
        m_replay = std::make_unique<ReplayChannel>(*transcript, m_channel);
        return *m_replay;
    }
    return m_options.recordFile.isEmpty() ? m_channel : recordedChannel();
}

IOManager& Frontend::recordedChannel()
{
    m_recorder = std::make_unique<RecordingChannel>(
        m_channel, m_options.recordFile, TranscriptHead{*m_versions, m_observer},
        QStringLiteral("demo-frontend %1").arg(QLatin1String(frontendVersion)));
    if (m_recorder->isRecording())
        log(tr("Recording to %1").arg(m_recorder->fileName()));
    return *m_recorder;
}

BackendVersions Frontend::versions()
{
    const Transcript* transcript = m_access->transcript();
    return transcript ? transcript->head.versions : askVersions();
}

BackendVersions Frontend::askVersions()
{
    const Scenario& scenario = m_bench.scenario();
    return BackendVersions(askVersion("system version"), scenario.protocol,
                           askVersion("system controller_version"), scenario.backendModel);
}

VersionInfo Frontend::askVersion(const char* key)
{
    const std::optional<QString> reply = ChannelQueries(m_channel).text(key);
    return reply ? reportedVersion(*reply) : VersionInfo();
}

void Frontend::searchForHardware()
{
    m_runs.searchBegins();
    SearchHardwareDlg dialog(&m_window, &m_channel, QStringLiteral("user"));
    dialog.update_and_exec();
    m_runs.searchEnded();
}

void Frontend::showResults()
{
    if (m_runs.hasRun())
        m_results.showRun(m_runs.run(), m_runs.logFile());
}

void Frontend::tellTheme(bool dark)
{
    tellModule(dark ? "DarkThemeEnabled" : "DarkThemeDisabled");
}

void Frontend::tellModule(const char* text)
{
    m_channel.post_message(UPDATE_MODULE, MAIN_WINDOW, 1, text);
}
