#pragma once

#include "windowhandler.h"

#include <QStringList>

class MainWindow;
class UserHands;

/// Answers message boxes, those of the frontend and those of the module.
class MessageBoxHandler : public WindowHandler
{
public:
    /// All must outlive the handler.
    /// @param frontend whose buttons give the controllers power where a box asks for it
    /// @param refusals the texts of boxes that refuse something are added to these
    MessageBoxHandler(UserHands& hands, const MainWindow& frontend, QStringList& refusals);

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

private:
    UserHands& m_hands;
    const MainWindow& m_frontend;
    QStringList& m_refusals;
};
