#include "expectedboxes.h"

ExpectedBox notice(QMessageBox::Icon icon, const QString& text)
{
    ExpectedBox box;
    box.title = QStringLiteral("VORNIX3");
    box.icon = icon;
    box.text = text;
    return box;
}

static ExpectedBox confirmation(const QString& text, const QString& informativeText,
                                QMessageBox::StandardButton press)
{
    ExpectedBox box = notice(QMessageBox::Information, text);
    box.informativeText = informativeText;
    box.buttons = QMessageBox::Yes | QMessageBox::No;
    box.defaultButton = QMessageBox::No;
    box.press = press;
    return box;
}

ExpectedBox controllerConfirmation(QMessageBox::StandardButton press)
{
    return confirmation(QStringLiteral("This action will install new firmware to your Controller."),
                        QStringLiteral("<p><b>Do you really want to update?</b>"), press);
}

ExpectedBox cameraConfirmation(QMessageBox::StandardButton press)
{
    return confirmation(QStringLiteral("This action will install new firmware to your camera(s)."),
                        QStringLiteral("Do you really want to update?"), press);
}

ExpectedBox startNotice(QMessageBox::StandardButton press)
{
    ExpectedBox box = notice(QMessageBox::Information,
                             QStringLiteral("Don't stop the update process until it is finished!"));
    box.buttons = QMessageBox::Ok | QMessageBox::Cancel;
    box.defaultButton = QMessageBox::NoButton;
    box.press = press;
    return box;
}

ExpectedBox restartOffer(QMessageBox::StandardButton press)
{
    ExpectedBox box = confirmation(
        QStringLiteral("The Controller is updated successfully and must be restarted."),
        QStringLiteral("Do you want to restart the Controller now?\n"
                       "(This restart may take a few minutes. Do not switch off the Controller "
                       "during restart.)\n\n"
                       "If yes VORNIX3 will be closed"),
        press);
    box.defaultButton = QMessageBox::Yes;
    return box;
}

ExpectedBox camerasDone()
{
    ExpectedBox box = notice(
        QMessageBox::Information,
        QStringLiteral("The cameras are updated successfully and must be restarted manually!"));
    box.informativeText =
        QStringLiteral("Please power off all updated cameras by disconnecting or turn off any "
                       "connected PoE+ switches.");
    box.defaultButton = QMessageBox::NoButton;
    return box;
}

ExpectedBox updateFailed()
{
    return notice(QMessageBox::Critical,
                  QStringLiteral("Update failed!\nPlease restart the Controller and try again."));
}
