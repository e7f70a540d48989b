#pragma once

#include "attitude.h"
#include "runprogress.h"

#include <devicetables.h>

#include <QElapsedTimer>
#include <QHash>
#include <QMessageBox>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>

class MainWindow;
class Narrator;
class QPushButton;
class QTableWidget;
class Screenshots;
class Watchdog;

/// Plays the user: looks at the window on top, reads it out, takes its picture and does what a user
/// would do there of a certain attitude. Works on the widgets alone.
///
/// What it does with which window stands in lists of rules: here for windows, and in boxanswers.h
/// for message boxes.
class UserDriver : public QObject
{
    Q_OBJECT

public:
    /// All must outlive the driver, which begins as soon as events are served.
    UserDriver(MainWindow& window, Narrator& narrator, Screenshots& screenshots, Watchdog& watchdog,
               Attitude attitude = Attitude::Willing);

    /// Has the user open the update dialog again, when all is done, as long as @p more says that
    /// there is something to do.
    void setMoreToDo(const std::function<bool()>& more) { m_moreToDo = more; }

    /// Has the user leave when @p gone has said for a while that nobody simulates the system.
    void setSystemGone(const std::function<bool()>& gone) { m_isSystemGone = gone; }

    /// The texts with which something was refused.
    const QStringList& refusals() const { return m_refusals; }

private:
    struct WindowRule;
    /// What is done with a window at its @p visit, from 1; visits go on while it is on top.
    using Act = void (UserDriver::*)(QWidget& window, int visit);

    static const QVector<WindowRule>& windowRules();
    const WindowRule& ruleFor(const QWidget& window) const;

    void tick();
    void visit(QWidget* window);
    void forget(QWidget* window);
    void present(QWidget& window, const QString& pictureName);
    void picture(QWidget& window, const QString& name);
    void press(QPushButton* button);
    void trigger(QAction* action);
    void followRun();
    void takeLogLine(const QString& sender, const QString& text);

    void answerBox(QWidget& window, int visit);
    void useUpdateDialog(QWidget& window, int visit);
    void leaveForLater(QWidget& window, int visit);
    void untickOne(QWidget& window, int visit);
    void untickAll(QWidget& window, int visit);
    void untick(QTableWidget* table, int row);
    void readNotes(QWidget& window, int visit);
    void searchHardware(QWidget& window, int visit);
    void readResults(QWidget& window, int visit);
    void closeUnknown(QWidget& window, int visit);
    void useMainWindow(QWidget& window, int visit);

    void leave(QWidget& window);
    bool isGivenUp();
    bool waitForControllers();
    bool openUpdateDialog();
    bool openNextEntry();
    bool powerCycleCameras();
    bool searchForCameras();
    bool lookAgain();
    bool hasCameraThatNeeds(DeviceNeed need) const;

    MainWindow& m_window;
    Narrator& m_narrator;
    Screenshots& m_screenshots;
    Watchdog& m_watchdog;
    Attitude m_attitude;
    QStringList m_entries; ///< of the menus, still to be opened
    QTimer m_timer;
    QHash<QWidget*, int> m_visits;
    QSet<QWidget*> m_busy;
    QStringList m_refusals;
    int m_idleTicks = 0; // since something happened
    QElapsedTimer m_gone;

    bool m_hasTriedUpdate = false;
    bool m_hasSeenUpdateDialog = false;
    bool m_hasPictureOfRun = false;
    bool m_hasPictureOfWaiting = false;
    bool m_hasGivenPower = false; ///< since the controllers were lost
    bool m_hasPictureOfSearch = false;
    bool m_isLeaving = false;
    std::function<bool()> m_moreToDo;
    std::function<bool()> m_isSystemGone;
    RunProgress m_progress;
};
