#include "resultshandler.h"

#include "userhands.h"

#include <QWidget>

bool ResultsHandler::isFor(const QWidget& window) const
{
    return window.objectName() == QLatin1String("updateResultDialog");
}

void ResultsHandler::handle(QWidget& window, int visit)
{
    if (visit == 1)
        m_hands.present(window, QStringLiteral("update-results"));
    m_hands.press(window, "pushButton_close");
}
