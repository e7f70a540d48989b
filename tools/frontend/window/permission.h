#pragma once

#include <QString>

/// Why those who only look on are kept from something.
QString whyObserversMayNot();
/// Why something is not possible while the simulated system cannot be reached.
QString whyNotAtHand();
/// Why something is not possible while the controllers do not answer.
QString whyNotAnswered();
/// Why something is not possible that would disturb an update.
QString whyNotDuringRun();

/// Lets users choose @p control, a button or a menu entry, or keeps them from it and says why in
/// its tool tip.
/// @param whyNot one sentence; empty: they may
template <typename Control>
void permit(Control& control, const QString& whyNot)
{
    control.setEnabled(whyNot.isEmpty());
    control.setToolTip(whyNot);
}
