#pragma once

#include "windowhandler.h"

class UserHands;

/// Reads all the notes of what is new in the installed releases.
class NewFeaturesHandler : public WindowHandler
{
public:
    /// @param hands must outlive the handler
    explicit NewFeaturesHandler(UserHands& hands) : m_hands(hands) {}

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

private:
    UserHands& m_hands;
};
