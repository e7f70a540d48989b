#include "userdriver.h"

#include "boxanswers.h"
#include "checkboxclick.h"
#include "narrator.h"
#include "screenshots.h"
#include "watchdog.h"
#include "windowtexts.h"

#include <logview.h>
#include <mainwindow.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>

#include <algorithm>

namespace {

constexpr int tickMs = 50;
// Longer than the delays after which a module opens a window by itself. Ticks are counted, and not
// time, as both come late on a busy machine.
constexpr int ownWindowsTicks = 900 / tickMs;
// For that many visits the update dialog is only looked at: a warning may still come on top of it.
constexpr int readingVisits = 6;
// A system that another process simulates may be started again, but is not waited for any longer.
constexpr int goneMs = 10000;

const QLatin1String updateDialogName("ZanUpdateModule2GSettingsdlgClass");
const QLatin1String resultDialogName("updateResultDialog");

// The one window that is no modal one.
QWidget* visibleResults(const MainWindow& window)
{
    auto* results = window.findChild<QDialog*>(resultDialogName);
    return results && results->isVisible() ? results : nullptr;
}

// The frontend's own entries by their names; those of the module have nothing but their texts.
QAction* menuAction(const MainWindow& window, const QString& key)
{
    for (QAction* menu : window.menuBar()->actions()) {
        for (QAction* action : menu->menu()->actions()) {
            if (action->objectName() == key || action->text() == key)
                return action;
        }
    }
    return nullptr;
}

} // namespace

struct UserDriver::WindowRule
{
    std::function<bool(const QWidget&)> matches;
    Act act;
    QString pictureName;
    std::optional<Attitude> attitude = {}; ///< none: whatever the attitude
};

const QVector<UserDriver::WindowRule>& UserDriver::windowRules()
{
    const auto isNamed = [](const QString& name) {
        return [name](const QWidget& window) {
            return window.objectName() == name;
        };
    };
    static const QVector<WindowRule> rules = {
        {[](const QWidget& window) { return qobject_cast<const QMessageBox*>(&window) != nullptr; },
         &UserDriver::answerBox, QString()},
        {[](const QWidget& window) {
             return window.objectName() == updateDialogName &&
                    labelText(window, "label_updates").contains("are up to date");
         },
         &UserDriver::useUpdateDialog, "update-dialog-up-to-date"},
        {isNamed(updateDialogName), &UserDriver::leaveForLater, "update-dialog", Attitude::Later},
        {isNamed(updateDialogName), &UserDriver::leaveForLater, "update-dialog", Attitude::Curious},
        {isNamed(updateDialogName), &UserDriver::untickOne, "update-dialog", Attitude::Partial},
        {isNamed(updateDialogName), &UserDriver::untickAll, "update-dialog", Attitude::Idle},
        {isNamed(updateDialogName), &UserDriver::useUpdateDialog, "update-dialog"},
        {isNamed("NewFeatureDialog"), &UserDriver::readNotes, "new-features"},
        {isNamed("SearchHardwareDlgClass"), &UserDriver::searchHardware, "search-hardware"},
        {isNamed(resultDialogName), &UserDriver::readResults, "update-results"},
        {isNamed("mainWindow"), &UserDriver::useMainWindow, "frontend"},
        {[](const QWidget&) { return true; }, &UserDriver::closeUnknown, "window"},
    };
    return rules;
}

namespace {

// The entries that somebody opens who looks at everything.
QStringList entriesFor(Attitude attitude)
{
    if (attitude != Attitude::Curious)
        return QStringList();
    return {QStringLiteral("Wh&at's New?"), QStringLiteral("actionAbout")};
}

} // namespace

const UserDriver::WindowRule& UserDriver::ruleFor(const QWidget& window) const
{
    return *std::find_if(windowRules().begin(), windowRules().end(), [&](const WindowRule& rule) {
        return rule.attitude.value_or(m_attitude) == m_attitude && rule.matches(window);
    });
}

UserDriver::UserDriver(MainWindow& window, Narrator& narrator, Screenshots& screenshots,
                       Watchdog& watchdog, Attitude attitude)
    : m_window(window), m_narrator(narrator), m_screenshots(screenshots), m_watchdog(watchdog),
      m_attitude(attitude), m_entries(entriesFor(attitude))
{
    connect(&window.log(), &LogView::added, this, &UserDriver::takeLogLine);
    // Not from the timer itself, which does not fire again before its slot has returned, and that
    // is after windows that a button of this one opens.
    connect(&m_timer, &QTimer::timeout, this, &UserDriver::tick, Qt::QueuedConnection);
    m_timer.start(tickMs);
}

void UserDriver::tick()
{
    followRun();
    QWidget* dialog = QApplication::activeModalWidget();
    if (!dialog)
        dialog = visibleResults(m_window);
    visit(dialog ? dialog : &m_window);
}

namespace {

// On a busy machine a warning that comes on top of the update dialog 100 ms later is seen at once;
// so it is the first on any.
int lookingVisit(const QWidget& window)
{
    return window.objectName() == updateDialogName ? readingVisits - 1 : 1;
}

} // namespace

void UserDriver::visit(QWidget* window)
{
    if (m_busy.contains(window) || !window->isVisible() || m_isLeaving)
        return;
    const WindowRule& rule = ruleFor(*window);
    int& visits = m_visits[window];
    const int number = ++visits;
    if (number == 1 && window != &m_window) {
        m_idleTicks = 0;
        if (auto* dialog = qobject_cast<QDialog*>(window))
            connect(dialog, &QDialog::finished, this, [this, window] { forget(window); });
    }
    if (number == lookingVisit(*window) && window != &m_window &&
        !qobject_cast<QMessageBox*>(window))
        present(*window, rule.pictureName);
    m_busy.insert(window);
    (this->*rule.act)(*window, number);
    m_busy.remove(window);
}

// It may be opened again, and another one may get its address.
void UserDriver::forget(QWidget* window)
{
    m_visits.remove(window);
    disconnect(window, nullptr, this, nullptr);
}

void UserDriver::present(QWidget& window, const QString& pictureName)
{
    const QString title = window.windowTitle();
    m_watchdog.feed(title);
    m_narrator.tell(QStringLiteral("window"), title);
    for (const QString& line : windowTexts(window))
        m_narrator.tell(QString(), line);
    picture(window, pictureName);
}

void UserDriver::picture(QWidget& window, const QString& name)
{
    QString error;
    const QString file = m_screenshots.save(window, name, &error);
    if (!file.isEmpty())
        m_narrator.tell(QStringLiteral("picture"), file);
    if (!error.isEmpty())
        m_narrator.tell(QStringLiteral("error"), error);
}

void UserDriver::press(QPushButton* button)
{
    m_narrator.tell(QStringLiteral("press"), QString(button->text()).remove(QLatin1Char('&')));
    button->click();
}

void UserDriver::trigger(QAction* action)
{
    m_narrator.tell(QStringLiteral("menu"), QString(action->text()).remove(QLatin1Char('&')));
    action->trigger();
}

void UserDriver::followRun()
{
    const auto windows = QApplication::topLevelWidgets();
    const auto dialog = std::find_if(windows.begin(), windows.end(), [this](QWidget* window) {
        return window->objectName() == updateDialogName && m_busy.contains(window);
    });
    if (dialog == windows.end() || !m_progress.look(**dialog))
        return;
    m_watchdog.feed((*dialog)->windowTitle());
    const QString told = m_progress.line();
    if (told.isEmpty())
        return;
    m_narrator.tell(QStringLiteral("progress"), told);
    if (m_progress.percent() >= 40 && !m_hasPictureOfRun) {
        m_hasPictureOfRun = true;
        picture(**dialog, QStringLiteral("update-running"));
    }
}

void UserDriver::takeLogLine(const QString& sender, const QString& text)
{
    m_narrator.tell(QStringLiteral("log"), QStringLiteral("%1: %2").arg(sender, text));
    m_watchdog.feed(QStringLiteral("log"));
    m_idleTicks = 0;
    for (const char* part : {"unsuccessful", "is incompatible"}) {
        if (text.contains(QLatin1String(part)))
            m_refusals += text;
    }
}

// ---- What is done with each window

void UserDriver::answerBox(QWidget& window, int /*visit*/)
{
    auto& box = static_cast<QMessageBox&>(window);
    const BoxAnswer answer = answerTo(box);
    present(box, answer.pictureName);
    if (answer.isRefusal)
        m_refusals += box.text().simplified();
    if (answer.asksForPower)
        press(m_window.findChild<QPushButton*>("pushButton_powerCycleControllers"));
    press(answer.button);
}

void UserDriver::useUpdateDialog(QWidget& window, int visit)
{
    m_hasSeenUpdateDialog = true;
    if (visit < readingVisits)
        return;
    auto* update = window.findChild<QPushButton*>("pushButton_update");
    auto* exit = window.findChild<QPushButton*>("pushButton_exit");
    if (update->isEnabled() && !m_hasTriedUpdate) {
        m_hasTriedUpdate = true;
        press(update);
        return;
    }
    if (visit > readingVisits)
        present(window, QStringLiteral("update-dialog-afterwards"));
    press(exit);
}

void UserDriver::leaveForLater(QWidget& window, int visit)
{
    m_hasSeenUpdateDialog = true;
    if (visit >= readingVisits)
        press(window.findChild<QPushButton*>("pushButton_exit"));
}

void UserDriver::untickOne(QWidget& window, int visit)
{
    auto* table = window.findChild<QTableWidget*>();
    if (visit == readingVisits && table->rowCount() > 0)
        untick(table, 0);
    else
        useUpdateDialog(window, visit);
}

// The button is off then, but the dialog has a key for the update, too.
void UserDriver::untickAll(QWidget& window, int visit)
{
    auto* table = window.findChild<QTableWidget*>();
    if (visit != readingVisits || m_hasTriedUpdate) {
        leaveForLater(window, visit);
        return;
    }
    for (int row = 0; row < table->rowCount(); ++row)
        untick(table, row);
    m_hasTriedUpdate = true;
    m_narrator.tell(QStringLiteral("press"), QStringLiteral("F3"));
    QKeyEvent key(QEvent::KeyPress, Qt::Key_F3, Qt::NoModifier);
    QApplication::sendEvent(&window, &key);
}

void UserDriver::untick(QTableWidget* table, int row)
{
    m_narrator.tell(QStringLiteral("untick"), table->item(row, 1)->text());
    clickCheckBox(*table, row, 0);
}

void UserDriver::readNotes(QWidget& window, int visit)
{
    auto* more = window.findChild<QPushButton*>("pushButton_show_more");
    if (visit == 1 && more->isEnabled()) {
        press(more);
        return;
    }
    if (visit > 1)
        present(window, QStringLiteral("new-features-all"));
    press(window.findChild<QPushButton*>("pushButton_exit"));
}

// One that runs by itself hides its buttons.
void UserDriver::searchHardware(QWidget& window, int /*visit*/)
{
    auto* ok = window.findChild<QPushButton*>("pushButton_ok");
    if (!ok->isEnabled() && !m_hasPictureOfSearch) {
        m_hasPictureOfSearch = true;
        picture(window, QStringLiteral("search-hardware-running"));
    }
    if (ok->isVisible() && ok->isEnabled())
        press(ok);
}

void UserDriver::readResults(QWidget& window, int /*visit*/)
{
    press(window.findChild<QPushButton*>("pushButton_close"));
}

void UserDriver::closeUnknown(QWidget& window, int /*visit*/)
{
    m_narrator.tell(QStringLiteral("close"), window.windowTitle());
    window.close();
}

// Without a window in front the user looks at the frontend itself.
void UserDriver::useMainWindow(QWidget& window, int /*visit*/)
{
    if (isGivenUp()) {
        leave(window);
        return;
    }
    if (waitForControllers()) {
        m_idleTicks = 0;
        return;
    }
    if (++m_idleTicks <= ownWindowsTicks || powerCycleCameras() || searchForCameras() ||
        openUpdateDialog() || openNextEntry() || lookAgain())
        return;
    leave(window);
}

void UserDriver::leave(QWidget& window)
{
    present(window, QStringLiteral("frontend"));
    m_isLeaving = true;
    trigger(m_window.findChild<QAction*>("actionQuit"));
}

bool UserDriver::isGivenUp()
{
    if (!m_isSystemGone || !m_isSystemGone())
        m_gone.invalidate();
    else if (!m_gone.isValid())
        m_gone.start();
    return m_gone.isValid() && m_gone.hasExpired(goneMs);
}

bool UserDriver::waitForControllers()
{
    const auto* page = m_window.findChild<QWidget*>("waitingPage");
    if (!page->isVisible()) {
        m_hasGivenPower = false;
        return false;
    }
    if (!m_hasPictureOfWaiting) {
        m_hasPictureOfWaiting = true;
        present(m_window, QStringLiteral("waiting"));
    }
    auto* power = page->findChild<QPushButton*>("pushButton_power");
    if (power->isVisible() && !m_hasGivenPower) {
        m_hasGivenPower = true;
        press(power);
    }
    return true;
}

bool UserDriver::openUpdateDialog()
{
    QAction* action = menuAction(m_window, QStringLiteral("&Controller and Camera Update"));
    if (!action)
        action = menuAction(m_window, QStringLiteral("Wh&at's New?"));
    if (m_hasSeenUpdateDialog || !action || !action->isEnabled())
        return false;
    m_hasSeenUpdateDialog = true;
    trigger(action);
    return true;
}

bool UserDriver::openNextEntry()
{
    if (m_entries.isEmpty())
        return false;
    trigger(menuAction(m_window, m_entries.takeFirst()));
    return true;
}

bool UserDriver::hasCameraThatNeeds(DeviceNeed need) const
{
    const auto* view = m_window.findChild<QTableView*>("tableView_cameras");
    if (!view)
        return false;
    const QModelIndex first = view->model()->index(0, 0);
    return !view->model()->match(first, needRole, int(need), 1, Qt::MatchExactly).isEmpty();
}

bool UserDriver::powerCycleCameras()
{
    if (!hasCameraThatNeeds(DeviceNeed::PowerCycle))
        return false;
    m_window.findChild<QTableView*>("tableView_cameras")->selectAll();
    press(m_window.findChild<QPushButton*>("pushButton_powerCycleCameras"));
    m_idleTicks = 0; // what comes of it is not seen at once if the system is in another process
    return true;
}

// The update dialog then shows what became of them.
bool UserDriver::searchForCameras()
{
    if (!hasCameraThatNeeds(DeviceNeed::HardwareSearch))
        return false;
    m_hasSeenUpdateDialog = false;
    trigger(m_window.findChild<QAction*>("actionSearchHardware"));
    return true;
}

bool UserDriver::lookAgain()
{
    if (!m_moreToDo || !m_moreToDo())
        return false;
    m_hasSeenUpdateDialog = false;
    return openUpdateDialog();
}
