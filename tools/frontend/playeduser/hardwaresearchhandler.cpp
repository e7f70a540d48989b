#include "hardwaresearchhandler.h"

#include "userhands.h"

#include <QPushButton>

bool HardwareSearchHandler::isFor(const QWidget& window) const
{
    return window.objectName() == QLatin1String("SearchHardwareDlgClass");
}

void HardwareSearchHandler::handle(QWidget& window, int visit)
{
    if (visit == 1)
        m_hands.present(window, QStringLiteral("search-hardware"));
    auto* ok = window.findChild<QPushButton*>("pushButton_ok");
    if (!ok->isEnabled() && !m_hasPictureOfSearch) {
        m_hasPictureOfSearch = true;
        m_hands.takePicture(window, QStringLiteral("search-hardware-running"));
    }
    // A search that runs by itself hides its buttons.
    if (ok->isVisible() && ok->isEnabled())
        m_hands.press(*ok);
}
