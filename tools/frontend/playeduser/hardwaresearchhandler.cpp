#include "hardwaresearchhandler.h"

#include "userhands.h"

#include <QEvent>
#include <QPushButton>

namespace {

const QLatin1String pictureName("search-hardware");

} // namespace

bool HardwareSearchHandler::isFor(const QWidget& window) const
{
    return window.objectName() == QLatin1String("SearchHardwareDlgClass");
}

// A search that runs by itself hides its buttons. It begins 100 ms after its window has opened, and
// on a busy machine before the first look at it; so it is read out as it runs, on any.
void HardwareSearchHandler::handle(QWidget& window, int visit)
{
    auto* ok = window.findChild<QPushButton*>("pushButton_ok");
    const bool begins = ok->isHidden() && ok->isEnabled();
    if (visit == 1 && begins)
        ok->installEventFilter(this);
    else if (visit == 1)
        m_hands.present(window, pictureName);
    if (!ok->isEnabled() && !m_hasPictureOfSearch) {
        m_hasPictureOfSearch = true;
        m_hands.takePicture(window, QStringLiteral("search-hardware-running"));
    }
    if (ok->isVisible() && ok->isEnabled())
        m_hands.press(*ok);
}

bool HardwareSearchHandler::eventFilter(QObject* button, QEvent* event)
{
    if (event->type() == QEvent::EnabledChange) {
        button->removeEventFilter(this);
        m_hands.present(*static_cast<QWidget*>(button)->window(), pictureName);
    }
    return false;
}
