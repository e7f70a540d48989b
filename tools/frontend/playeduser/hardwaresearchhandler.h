#pragma once

#include "windowhandler.h"

class UserHands;

/// Waits for the end of a search for hardware, and closes it.
class HardwareSearchHandler : public WindowHandler
{
public:
    /// @param hands must outlive the handler
    explicit HardwareSearchHandler(UserHands& hands) : m_hands(hands) {}

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

private:
    UserHands& m_hands;
    bool m_hasPictureOfSearch = false;
};
