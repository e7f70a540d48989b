#pragma once

#include "attitude.h"
#include "windowhandler.h"

#include <devicetables.h>

#include <QElapsedTimer>
#include <QStringList>

#include <functional>

class MainWindow;
class QAction;
class UserHands;

/// Uses the frontend itself when no other window is in front: waits for windows that the module
/// opens by itself, gives devices power, opens what is in the menus, and leaves when nothing is
/// left to do.
class MainWindowHandler : public WindowHandler
{
public:
    /// @param hands and @param window must outlive the handler
    /// @param interval between two visits, in ms
    MainWindowHandler(UserHands& hands, MainWindow& window, Attitude attitude, int interval);

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

    /// Something has happened: the waiting for it begins anew.
    void noteActivity() { m_idleVisits = 0; }

    /// The update dialog is open, so it need not be opened.
    void noteUpdateDialog() { m_hasSeenUpdateDialog = true; }

    /// Whether the user has quit, and does nothing any more.
    bool isLeaving() const { return m_isLeaving; }

    /// Has the user open the update dialog again, when all is done, as long as @p more says that
    /// there is something to do.
    void setMoreToDo(const std::function<bool()>& more) { m_moreToDo = more; }

    /// Has the user leave when @p gone has said for a while that nobody simulates the system.
    void setSystemGone(const std::function<bool()>& gone) { m_isSystemGone = gone; }

private:
    QAction* menuAction(const char* key) const;
    void leave();
    bool isGivenUp();
    bool waitForControllers();
    bool openUpdateDialog();
    bool openNextEntry();
    bool powerCycleCameras();
    bool searchForCameras();
    bool lookAgain();
    bool hasCameraThatNeeds(DeviceNeed need) const;

    UserHands& m_hands;
    MainWindow& m_window;
    QVector<const char*> m_entries; // of the menus, still to be opened
    int m_patientVisits;
    int m_idleVisits = 0; // since something happened
    QElapsedTimer m_gone;
    bool m_hasSeenUpdateDialog = false;
    bool m_hasPictureOfWaiting = false;
    bool m_hasGivenPower = false; // since the controllers were lost
    bool m_isLeaving = false;
    std::function<bool()> m_moreToDo;
    std::function<bool()> m_isSystemGone;
};
