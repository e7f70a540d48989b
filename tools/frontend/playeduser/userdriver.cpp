#include "userdriver.h"

#include <logview.h>
#include <mainwindow.h>

#include <QApplication>
#include <QDialog>

#include <algorithm>

namespace {

constexpr int tickMs = 50;

// A modal window, or the results, which are none.
QWidget* dialogOnTop(const MainWindow& window, const WindowHandler& results)
{
    if (QWidget* modal = QApplication::activeModalWidget())
        return modal;
    for (auto* dialog : window.findChildren<QDialog*>()) {
        if (results.isFor(*dialog) && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

} // namespace

UserDriver::UserDriver(MainWindow& window, Narrator& narrator, Screenshots& screenshots,
                       Watchdog& watchdog, Attitude attitude)
    : m_window(window), m_hands(narrator, screenshots, watchdog),
      m_messageBoxes(m_hands, window, m_refusals), m_updateDialog(m_hands, attitude),
      m_newFeatures(m_hands), m_hardwareSearch(m_hands), m_results(m_hands),
      m_mainWindow(m_hands, window, attitude, tickMs), m_handlers{
                                                           &m_messageBoxes, &m_updateDialog,
                                                           &m_newFeatures,  &m_hardwareSearch,
                                                           &m_results,      &m_mainWindow}
{
    connect(&window.log(), &LogView::added, this, &UserDriver::takeLogLine);
    // Not from the timer itself, which does not fire again before its slot has returned, and that
    // is after windows that a button of this one opens.
    connect(&m_timer, &QTimer::timeout, this, &UserDriver::tick, Qt::QueuedConnection);
    m_timer.start(tickMs);
}

void UserDriver::tick()
{
    m_updateDialog.followRun();
    QWidget* dialog = dialogOnTop(m_window, m_results);
    visit(dialog ? *dialog : m_window);
}

void UserDriver::visit(QWidget& window)
{
    if (m_busy.contains(&window) || !window.isVisible() || m_mainWindow.isLeaving())
        return;
    const int visit = ++m_visits[&window];
    if (visit == 1 && &window != &m_window)
        noteOpened(window);
    m_busy.insert(&window);
    handle(window, visit);
    m_busy.remove(&window);
}

void UserDriver::handle(QWidget& window, int visit)
{
    const auto* handler = std::find_if(m_handlers.begin(), m_handlers.end(),
                                       [&](const WindowHandler* it) { return it->isFor(window); });
    if (handler != m_handlers.end()) {
        (*handler)->handle(window, visit);
        return;
    }
    if (visit == 1)
        m_hands.present(window, QStringLiteral("window"));
    m_hands.tell("close", window.windowTitle());
    window.close();
}

void UserDriver::noteOpened(QWidget& window)
{
    m_mainWindow.noteActivity();
    if (m_updateDialog.isFor(window))
        m_mainWindow.noteUpdateDialog();
    if (auto* dialog = qobject_cast<QDialog*>(&window))
        connect(dialog, &QDialog::finished, this, [this, dialog] { forget(dialog); });
}

// It may be opened again, and another one may get its address.
void UserDriver::forget(QWidget* window)
{
    m_visits.remove(window);
    disconnect(window, nullptr, this, nullptr);
}

void UserDriver::takeLogLine(const QString& sender, const QString& text)
{
    m_hands.tell("log", QStringLiteral("%1: %2").arg(sender, text));
    m_hands.feedWatchdog(QStringLiteral("log"));
    m_mainWindow.noteActivity();
    for (const char* part : {"unsuccessful", "is incompatible"}) {
        if (text.contains(QLatin1String(part)))
            m_refusals += text;
    }
}
