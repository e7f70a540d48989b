#include "windowsize.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

QSize fittingSize(const QWidget& window, const QSize& wanted)
{
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        return wanted;
    return wanted.boundedTo(window.screen()->availableGeometry().size() * 19 / 20);
}
