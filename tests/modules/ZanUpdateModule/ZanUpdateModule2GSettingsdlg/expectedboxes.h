#pragma once

#include <modaldriver.h>

/// @file
/// The message boxes on the road of a run, to the letter. @p press is the button that is pressed.

/// "Do you really want to update?", for controllers.
ExpectedBox controllerConfirmation(QMessageBox::StandardButton press = QMessageBox::Yes);
/// The same for cameras alone.
ExpectedBox cameraConfirmation(QMessageBox::StandardButton press = QMessageBox::Yes);
/// "Don't stop the update process until it is finished!"
ExpectedBox startNotice(QMessageBox::StandardButton press = QMessageBox::Ok);
/// The offer to restart the controller.
ExpectedBox restartOffer(QMessageBox::StandardButton press = QMessageBox::No);
/// The end of a successful update of cameras.
ExpectedBox camerasDone();
/// The end of a run in which a row failed.
ExpectedBox updateFailed();

/// A box of QMessageBox::information() or its like, with one button and the title "VORNIX3".
ExpectedBox notice(QMessageBox::Icon icon, const QString& text);
