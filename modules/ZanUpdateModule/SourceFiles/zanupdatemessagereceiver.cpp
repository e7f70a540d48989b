#include "zanupdatemessagereceiver.h"

ZanUpdateMessageReceiver::ZanUpdateMessageReceiver(QObject* parent, IOManager* /*iom*/)
    : QObject(parent)
{
}

ZanUpdateMessageReceiver::~ZanUpdateMessageReceiver() = default;

int ZanUpdateMessageReceiver::transmit_message(int /*type*/, const char* /*src*/, const char* msg)
{
    const QString text = QString::fromLatin1(msg);
    if (text == QLatin1String("CheckForOldFrontendOrBackend"))
        emit sendCheckForOldFrontendOrBackend(true);
    else if (text == QLatin1String("NotCheckForOldFrontendOrBackend"))
        emit sendCheckForOldFrontendOrBackend(false);
    else if (text == QLatin1String("DarkThemeEnabled"))
        emit sendDarkThemeEnabled(true);
    else if (text == QLatin1String("DarkThemeDisabled"))
        emit sendDarkThemeEnabled(false);
    else
        emit sendModuleParentVersion(text);
    return 0;
}
