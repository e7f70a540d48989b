#include "frontend.h"

#include "deliverylayout.h"

#include <logview.h>
#include <otherhostbanner.h>
#include <releasecatalogue.h>
#include <reportedversion.h>
#include <searchhardwaredlg.h>
#include <simulatoraccess.h>
#include <stepbackbox.h>
#include <theme.h>
#include <timestamp.h>
#include <transcript.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QThread>

#include <utility>

namespace {

// For a start that follows another one at once.
constexpr int lockTimeoutMs = 1000;

QString runFolder(const Options& options)
{
    return options.stateDir + QLatin1String("/runs");
}

QString logFile(const Options& options)
{
    return options.stateDir + QLatin1String("/log.jsonl");
}

QString lookFile(const Options& options)
{
    return options.stateDir + QLatin1String("/window.json");
}

bool isObserver(SystemAccess& access, const Options& options)
{
    return options.observer || access.equipment().scenario().observer;
}

} // namespace

// Outside every namespace, where the resources of a library have to be initialised.
static void initPictures()
{
    Q_INIT_RESOURCE(frontend);
}

QString Frontend::homeFolder(const QString& stateDir)
{
    return stateDir + QLatin1String("/frontend-home");
}

// The process that served the system before may have left its state there, and nothing else.
bool Frontend::claimStateFolder(const QString& stateDir, QString* error)
{
    return claimFolder(stateDir, SimulatorAccess::stateFiles(stateDir), error);
}

Frontend::Frontend(Scenario scenario, const Options& options)
    : Frontend(std::make_unique<SimulatorAccess>(std::move(scenario), options.fast), options)
{
}

Frontend::Frontend(std::unique_ptr<SystemAccess> access, const Options& options)
    : m_options(options), m_access(std::move(access)), m_watch(m_access->link()),
      m_channel(m_watch), m_inhibitor(QStringLiteral("VORNIX3")),
      m_window(m_access->equipment(), isObserver(*m_access, options)), m_logKeeper(m_window.log()),
      m_runs(m_channel, runFolder(options), QString::fromLatin1(m_access->identity())),
      m_results(&m_window), m_lock(options.stateDir),
      m_module(m_channel, m_window,
               {options.pluginFile, options.recordFile, m_access->transcript(),
                isObserver(*m_access, options)})
{
    initPictures();
    // Windows stay painted during long waits, but nothing can be clicked.
    m_watch.setIdleWork([this] {
        const QScopedValueRollback<bool> waiting(m_isWaiting, true);
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        // What the user did has been put by, and is only looked at by a dispatcher that is woken.
        QAbstractEventDispatcher::instance()->wakeUp();
    });
    connect(&equipment(), &Equipment::trouble, this, &Frontend::log);
    connect(&m_logKeeper, &LogKeeper::failed, this, [this](const QString& reason) {
        log(tr("The log is not kept any more: %1").arg(reason));
    });
    watchWindow();
    watchRuns();
    watchModule();
    m_window.setSaveFolder(options.userHome);
    applyTheme(options.dark);
    m_window.setDarkTheme(options.dark);

    m_follow.setInterval(100);
    connect(&m_follow, &QTimer::timeout, this, &Frontend::look);
}

Frontend::~Frontend()
{
    m_module.leave();
    m_channel.removeWatcher(m_monitor);
}

void Frontend::watchWindow()
{
    connect(&m_window, &MainWindow::themeChanged, this, &Frontend::tellTheme);
    connect(&m_window, &MainWindow::hardwareSearchWanted, this, &Frontend::searchForHardware);
    connect(&m_window, &MainWindow::resultsWanted, this, &Frontend::showResults);
    connect(&m_window, &MainWindow::moduleEntryWanted, this, [this](QAction* entry) {
        if (mayUseLine())
            entry->trigger();
    });
}

void Frontend::watchRuns()
{
    connect(&m_runs, &RunFollower::message, this, &Frontend::log);
    connect(&m_runs, &RunFollower::runChanged, this,
            [this] { m_window.setHasResults(m_runs.hasRun()); });
    connect(&m_runs, &RunFollower::resultChanged, this, &Frontend::showResults);
    m_runs.setPermission([this](const QVector<StepBack>& steps) { return allowsRun(steps); });
    m_channel.addWatcher(m_monitor);
    m_window.followRuns(m_monitor);
    connect(&m_monitor, &RunMonitor::began, this,
            [this] { m_inhibitor.hold(tr("An update is under way.")); });
    connect(&m_monitor, &RunMonitor::ended, this, [this] { m_inhibitor.release(); });
    connect(&m_monitor, &RunMonitor::failed, this,
            [this](const RunFailure& failure) { log(tr("Failed: %1").arg(failure.text())); });
}

void Frontend::watchModule()
{
    connect(&m_module, &ModuleHost::message, this, &Frontend::log);
    connect(
        &m_module, &ModuleHost::logged, this,
        [this](const QString& sender, const QString& text) { m_window.log().add(sender, text); });
    connect(&m_module, &ModuleHost::checked, this, [this](int percent) {
        m_window.statusBar()->showMessage(tr("Checking the update files: %1 %").arg(percent), 1000);
    });
    connect(&m_module, &ModuleHost::entered, this,
            [this](const QList<GuiElement*>& elements, const QString& nameAndVersion) {
                m_window.addModuleEntries(elements);
                m_runs.moduleEntered(elements);
                m_window.setModuleText(nameAndVersion);
            });
    connect(&m_module, &ModuleHost::leaving, this, [this] {
        m_runs.moduleLeaves(m_wasUnreachable || !m_access->link().isReachable());
        m_window.removeModuleEntries();
    });
    connect(&m_module, &ModuleHost::readyToShutDown, this, [this] {
        m_isShuttingDown = true;
        log(tr("The module has ended its work; the frontend shuts down."));
        m_window.statusBar()->showMessage(tr("Shutting down..."));
    });
}

bool Frontend::prepare(QString* error)
{
    if (!m_options.publicKey.isEmpty() && !m_module.setPublicKey(m_options.publicKey, error))
        return false;
    if (!claimStateFolder(m_options.stateDir, error) || !m_lock.take(lockTimeoutMs, error) ||
        (m_options.fresh && !forgetEarlierStarts(error)))
        return false;
    goOnFromEarlierStarts();
    const QString home = homeFolder(m_options.stateDir);
    if (!QDir().mkpath(home)) {
        *error = tr("%1: the folder cannot be made").arg(home);
        return false;
    }
    const std::optional<QString> damage =
        m_access->keepState(m_options.stateDir, m_options.fresh, error);
    if (!damage)
        return false;
    if (!damage->isEmpty())
        log(tr("The state was set aside: %1").arg(*damage));
    // A replay has no devices that could be asked what they run.
    if (!m_access->transcript())
        m_runs.load();
    return m_module.prepare(error);
}

bool Frontend::forgetEarlierStarts(QString* error)
{
    return removeAll(runFolder(m_options), error) &&
           removeAll(homeFolder(m_options.stateDir), error) &&
           removeAll(logFile(m_options), error) && removeAll(lookFile(m_options), error);
}

// What is missing of it is told, and no reason not to start.
void Frontend::goOnFromEarlierStarts()
{
    QString error;
    if (!m_logKeeper.keepIn(logFile(m_options), &error))
        log(tr("The log cannot be kept: %1").arg(error));
    log(tr("Started: %1").arg(timestamp(QDateTime::currentDateTime())));
    error.clear();
    std::optional<WindowLook> look = readWindowLook(lookFile(m_options), &error);
    if (!error.isEmpty())
        log(tr("The window looks as at the first start: %1").arg(error));
    if (!look)
        return;
    look->isDark = look->isDark || m_options.dark;
    m_window.setLook(*look);
}

void Frontend::keepLook()
{
    QString error;
    if (!writeWindowLook(lookFile(m_options), m_window.look(), &error))
        log(tr("The look of the window cannot be kept: %1").arg(error));
}

void Frontend::log(const QString& text)
{
    m_window.log().add(QStringLiteral("Frontend"), text);
}

bool Frontend::run()
{
    followLine();
    m_window.show();
    const QString title = equipment().scenario().title;
    log(m_access->transcript() ? title : tr("Simulated system: %1").arg(title));
    for (const QString& line :
         unreadableUpdateFiles(updateFolder(QCoreApplication::applicationDirPath())))
        log(line);
    m_follow.start();
    m_hasToBeginAnew = false;
    QApplication::exec();
    m_follow.stop();
    m_module.leave();
    keepLook();
    return !m_hasToBeginAnew;
}

void Frontend::look()
{
    if (!m_access->transcript())
        m_watch.look();
    followLine();
    followModule();
}

bool Frontend::answers() const
{
    return m_access->transcript() || m_watch.isAnswering();
}

// What the window says of the controllers is true at once, whatever other windows are open.
void Frontend::followLine()
{
    const bool isLost = !answers() && (m_isConnected || m_isShownLost || !m_watch.isReachable());
    if (std::exchange(m_isShownLost, isLost) == isLost)
        return;
    if (!isLost) {
        if (m_isConnected)
            log(tr("The controllers answer again."));
        m_window.showConnected(m_channel.isCurrent()
                                   ? m_details
                                   : tr("The controllers answer again. The update module is loaded "
                                        "anew when no other window is open."));
        return;
    }
    if (m_isConnected && !m_isShuttingDown) // that they restart then is no news
        log(tr("The controllers do not answer any more."));
    m_window.showLost(m_watch.lastAnswer());
}

// The module takes part from when the controllers answer until they no longer do. It cannot leave
// while it waits for a reply or a window of its own runs an event loop, so that has to end first.
void Frontend::followModule()
{
    const bool isReachable = m_watch.isReachable();
    m_wasUnreachable = m_wasUnreachable || !isReachable;
    if (m_isWaiting || m_monitor.isRunning() || QThread::currentThread()->loopLevel() > 1)
        return;
    if (m_isConnected && (!answers() || !m_channel.isCurrent()))
        systemLost();
    m_wasUnreachable = !isReachable;
    if (m_isConnected)
        followOtherHost();
    if (m_access->isExchanged())
        beginAnew();
    else if (m_module.isInside())
        m_runs.moduleRests();
    else if (answers() && !m_isConnected)
        systemFound();
}

// Qt quits when control is back in the event loop, which a run does not leave before its end.
void Frontend::quit()
{
    if (m_monitor.isRunning()) {
        log(tr("The frontend quits when the update is over."));
        m_window.announceQuit();
    }
    QApplication::quit();
}

// All that was made here is made for the system of before.
void Frontend::beginAnew()
{
    m_follow.stop();
    m_hasToBeginAnew = true;
    QApplication::quit();
}

void Frontend::systemFound()
{
    m_channel.renew();
    const BackendVersions found = askVersions();
    if (!m_access->transcript() && !m_watch.ask()) // it was lost again meanwhile
        return;
    m_window.showConnected(m_details);
    if (!m_access->transcript())
        log(tr("Connected to %1").arg(m_access->link().address()));
    m_runs.systemConnected();
    m_isConnected = true;
    m_isLookingOn = false;
    followOtherHost();
    if (m_isLookingOn)
        return;
    const QScopedValueRollback<bool> waiting(m_isWaiting, true);
    if (m_module.enter(found))
        tellTheme(m_window.isDarkTheme());
}

// As long as another host updates the system the module has no place here: what it knows grows old,
// and what it offers must not be done.
void Frontend::followOtherHost()
{
    const bool isLookingOn = equipment().isInOtherHands();
    if (std::exchange(m_isLookingOn, isLookingOn) == isLookingOn)
        return;
    if (isLookingOn) {
        log(otherHostText(equipment()));
        m_module.leave();
    } else {
        log(tr("The other host is through with its update."));
        m_isConnected = false; // so that all is asked anew
    }
}

bool Frontend::allowsRun(const QVector<StepBack>& stepsBack)
{
    if (equipment().isInOtherHands()) {
        refuseForOtherHost(equipment(), &m_window);
        return false;
    }
    return stepsBack.isEmpty() || allowsStepsBack(stepsBack, &m_window);
}

void Frontend::systemLost()
{
    m_module.leave();
    m_isConnected = false;
}

namespace {

QString detailsText(const BackendVersions& versions, const QString& pt, const QString& ct)
{
    return Frontend::tr(
               "Model %1, tracking software %2, controller firmware %3, command protocol %4")
        .arg(versions.zanModel(), pt, ct, versions.protocol().toString());
}

VersionInfo versionIn(const std::optional<QString>& reply)
{
    return reply ? reportedVersion(*reply) : VersionInfo();
}

// With what stands behind the numbers, and without the date.
QString wordIn(const std::optional<QString>& reply)
{
    return reply ? reply->section(QLatin1Char(' '), 0, 0) : Frontend::tr("unknown");
}

} // namespace

BackendVersions Frontend::askVersions()
{
    if (const Transcript* transcript = m_access->transcript()) {
        const BackendVersions& told = transcript->head.versions;
        m_details = detailsText(told, told.systemPt().toString(), told.systemCt().toString());
        return told;
    }
    const Scenario& scenario = equipment().scenario();
    ChannelQueries queries(m_channel);
    const std::optional<QString> pt = queries.text("system version");
    const std::optional<QString> ct = queries.text("system controller_version");
    const BackendVersions versions(versionIn(pt), scenario.protocol, versionIn(ct),
                                   scenario.backendModel);
    m_details = detailsText(versions, wordIn(pt), wordIn(ct));
    return versions;
}

// What a dialog learns on a dead line would be wrong, and long in coming.
bool Frontend::mayUseLine()
{
    if (m_access->transcript())
        return true;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool isAlive = m_watch.ask() && m_channel.isCurrent();
    QApplication::restoreOverrideCursor();
    followLine();
    if (isAlive)
        return true;
    QMessageBox box(QMessageBox::Warning, QStringLiteral("VORNIX3"),
                    tr("The controllers do not answer, so nothing was opened. Choose this again "
                       "when they are connected."),
                    QMessageBox::Ok, &m_window);
    box.setObjectName(QStringLiteral("controllersSilent"));
    box.exec();
    return false;
}

void Frontend::searchForHardware()
{
    if (!mayUseLine())
        return;
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
    m_module.tell(dark ? "DarkThemeEnabled" : "DarkThemeDisabled");
}
