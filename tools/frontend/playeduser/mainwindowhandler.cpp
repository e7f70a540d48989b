#include "mainwindowhandler.h"

#include "userhands.h"

#include <mainwindow.h>

#include <QMenuBar>
#include <QPushButton>
#include <QTableView>

namespace {

// Longer than the delays after which a module opens a window by itself. Visits are counted, and not
// time, as both come late on a busy machine.
constexpr int ownWindowsMs = 900;
// A system that another process simulates may be started again, but is not waited for any longer.
constexpr int goneMs = 10000;

// Entries of the module, which have nothing but their texts.
constexpr const char* updateEntry = "&Controller and Camera Update";
constexpr const char* notesEntry = "Wh&at's New?";

// The entries that somebody opens who looks at everything.
QVector<const char*> entriesFor(Attitude attitude)
{
    if (attitude != Attitude::Curious)
        return {};
    return {notesEntry, "actionAbout"};
}

} // namespace

MainWindowHandler::MainWindowHandler(UserHands& hands, MainWindow& window, Attitude attitude,
                                     int interval)
    : m_hands(hands), m_window(window), m_entries(entriesFor(attitude)),
      m_patientVisits(ownWindowsMs / interval)
{
}

bool MainWindowHandler::isFor(const QWidget& window) const
{
    return &window == &m_window;
}

void MainWindowHandler::handle(QWidget& /*window*/, int /*visit*/)
{
    if (isGivenUp()) {
        leave();
        return;
    }
    if (waitForControllers()) {
        noteActivity();
        return;
    }
    if (++m_idleVisits <= m_patientVisits || powerCycleCameras() || searchForCameras() ||
        openUpdateDialog() || openNextEntry() || lookAgain())
        return;
    leave();
}

// The frontend's own entries are known by their names.
QAction* MainWindowHandler::menuAction(const char* key) const
{
    for (QAction* menu : m_window.menuBar()->actions()) {
        for (QAction* action : menu->menu()->actions()) {
            if (action->objectName() == QLatin1String(key) || action->text() == QLatin1String(key))
                return action;
        }
    }
    return nullptr;
}

void MainWindowHandler::leave()
{
    m_hands.present(m_window, QStringLiteral("frontend"));
    m_isLeaving = true;
    m_hands.trigger(*m_window.findChild<QAction*>("actionQuit"));
}

bool MainWindowHandler::isGivenUp()
{
    if (!m_isSystemGone || !m_isSystemGone())
        m_gone.invalidate();
    else if (!m_gone.isValid())
        m_gone.start();
    return m_gone.isValid() && m_gone.hasExpired(goneMs);
}

bool MainWindowHandler::waitForControllers()
{
    const auto* page = m_window.findChild<QWidget*>("waitingPage");
    if (!page->isVisible()) {
        m_hasGivenPower = false;
        return false;
    }
    if (!m_hasPictureOfWaiting) {
        m_hasPictureOfWaiting = true;
        m_hands.present(m_window, QStringLiteral("waiting"));
    }
    auto* power = page->findChild<QPushButton*>("pushButton_power");
    if (power->isVisible() && !m_hasGivenPower) {
        m_hasGivenPower = true;
        m_hands.press(*power);
    }
    return true;
}

bool MainWindowHandler::openUpdateDialog()
{
    QAction* action = menuAction(updateEntry);
    if (!action)
        action = menuAction(notesEntry);
    if (m_hasSeenUpdateDialog || !action || !action->isEnabled())
        return false;
    m_hasSeenUpdateDialog = true;
    m_hands.trigger(*action);
    return true;
}

bool MainWindowHandler::openNextEntry()
{
    if (m_entries.isEmpty())
        return false;
    m_hands.trigger(*menuAction(m_entries.takeFirst()));
    return true;
}

bool MainWindowHandler::hasCameraThatNeeds(DeviceNeed need) const
{
    const auto* view = m_window.findChild<QTableView*>("tableView_cameras");
    if (!view)
        return false;
    const QModelIndex first = view->model()->index(0, 0);
    return !view->model()->match(first, needRole, int(need), 1, Qt::MatchExactly).isEmpty();
}

bool MainWindowHandler::powerCycleCameras()
{
    if (!hasCameraThatNeeds(DeviceNeed::PowerCycle))
        return false;
    m_window.findChild<QTableView*>("tableView_cameras")->selectAll();
    m_hands.press(m_window, "pushButton_powerCycleCameras");
    noteActivity(); // what comes of it is not seen at once if the system is in another process
    return true;
}

// The update dialog then shows what became of them.
bool MainWindowHandler::searchForCameras()
{
    if (!hasCameraThatNeeds(DeviceNeed::HardwareSearch))
        return false;
    m_hasSeenUpdateDialog = false;
    m_hands.trigger(*m_window.findChild<QAction*>("actionSearchHardware"));
    return true;
}

bool MainWindowHandler::lookAgain()
{
    if (!m_moreToDo || !m_moreToDo())
        return false;
    m_hasSeenUpdateDialog = false;
    return openUpdateDialog();
}
