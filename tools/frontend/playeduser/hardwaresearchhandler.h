#pragma once

#include "windowhandler.h"

#include <QObject>

class UserHands;

/// Starts a search for hardware, or reads out one that runs by itself, and waits for its end.
class HardwareSearchHandler : public QObject, public WindowHandler
{
    Q_OBJECT

public:
    /// @param hands must outlive the handler
    explicit HardwareSearchHandler(UserHands& hands) : m_hands(hands) {}

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

    /// Of the window's button, which is off as soon as the search runs.
    bool eventFilter(QObject* button, QEvent* event) override;

private:
    UserHands& m_hands;
    bool m_hasPictureOfSearch = false;
};
