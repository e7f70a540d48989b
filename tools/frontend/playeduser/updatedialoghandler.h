#pragma once

#include "attitude.h"
#include "runprogress.h"
#include "windowhandler.h"

#include <QPointer>

class QTableWidget;
class UserHands;

/// Uses the update dialog as somebody of a certain attitude would, and tells how a run goes on.
class UpdateDialogHandler : public WindowHandler
{
public:
    /// @param hands must outlive the handler
    UpdateDialogHandler(UserHands& hands, Attitude attitude);

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

    /// Tells what a run shows now, if the dialog is busy with one. To be called again and again.
    void followRun();

private:
    void use(QWidget& dialog, int visit);
    void updateAll(QWidget& dialog, int visit);
    void leaveForLater(QWidget& dialog, int visit);
    void untickOne(QWidget& dialog, int visit);
    void untickAll(QWidget& dialog, int visit);
    void untick(QTableWidget& table, int row);

    UserHands& m_hands;
    Attitude m_attitude;
    QPointer<QWidget> m_busy; // the dialog, while it is handled
    RunProgress m_progress;
    bool m_hasTriedUpdate = false;
    bool m_hasPictureOfRun = false;
};
