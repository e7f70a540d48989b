#include "permission.h"

#include <QCoreApplication>

static QString tr(const char* text)
{
    return QCoreApplication::translate("Permission", text);
}

QString whyObserversMayNot()
{
    return tr("An observer only looks on.");
}

QString whyNotAtHand()
{
    return tr("The simulated system cannot be reached.");
}

QString whyNotAnswered()
{
    return tr("The controllers do not answer.");
}

QString whyNotDuringRun()
{
    return tr("Not as long as an update is under way.");
}
