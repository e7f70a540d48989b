#pragma once

#include "windowhandler.h"

class UserHands;

/// Reads the results of an update, and closes them.
class ResultsHandler : public WindowHandler
{
public:
    /// @param hands must outlive the handler
    explicit ResultsHandler(UserHands& hands) : m_hands(hands) {}

    bool isFor(const QWidget& window) const override;
    void handle(QWidget& window, int visit) override;

private:
    UserHands& m_hands;
};
