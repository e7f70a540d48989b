#include "newfeatureshandler.h"

#include "userhands.h"

#include <QPushButton>

bool NewFeaturesHandler::isFor(const QWidget& window) const
{
    return window.objectName() == QLatin1String("NewFeatureDialog");
}

void NewFeaturesHandler::handle(QWidget& window, int visit)
{
    m_hands.present(window, visit == 1 ? QStringLiteral("new-features")
                                       : QStringLiteral("new-features-all"));
    auto* more = window.findChild<QPushButton*>("pushButton_show_more");
    if (visit == 1 && more->isEnabled())
        m_hands.press(*more);
    else
        m_hands.press(window, "pushButton_exit");
}
