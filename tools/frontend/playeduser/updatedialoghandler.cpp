#include "updatedialoghandler.h"

#include "checkboxclick.h"
#include "userhands.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QTableWidget>

namespace {

// For that many visits the dialog is only looked at: a warning may still come on top of it.
constexpr int readingVisits = 6;
constexpr int pictureOfRunPercent = 40;

bool isUpToDate(const QWidget& dialog)
{
    return labelText(dialog, "label_updates").contains("are up to date");
}

} // namespace

UpdateDialogHandler::UpdateDialogHandler(UserHands& hands, Attitude attitude)
    : m_hands(hands), m_attitude(attitude)
{
}

bool UpdateDialogHandler::isFor(const QWidget& window) const
{
    return window.objectName() == QLatin1String("ZanUpdateModule2GSettingsdlgClass");
}

void UpdateDialogHandler::handle(QWidget& window, int visit)
{
    // On a busy machine a warning that comes on top of the dialog 100 ms later is seen at once; so
    // it is the first on any.
    if (visit == readingVisits - 1)
        m_hands.present(window, isUpToDate(window) ? QStringLiteral("update-dialog-up-to-date")
                                                   : QStringLiteral("update-dialog"));
    m_busy = &window;
    use(window, visit);
    m_busy = nullptr;
}

void UpdateDialogHandler::use(QWidget& dialog, int visit)
{
    if (isUpToDate(dialog)) {
        updateAll(dialog, visit);
        return;
    }
    switch (m_attitude) {
    case Attitude::Willing:
        updateAll(dialog, visit);
        break;
    case Attitude::Later:
    case Attitude::Curious:
        leaveForLater(dialog, visit);
        break;
    case Attitude::Partial:
        untickOne(dialog, visit);
        break;
    case Attitude::Idle:
        untickAll(dialog, visit);
        break;
    }
}

void UpdateDialogHandler::updateAll(QWidget& dialog, int visit)
{
    if (visit < readingVisits)
        return;
    auto* update = dialog.findChild<QPushButton*>("pushButton_update");
    if (update->isEnabled() && !m_hasTriedUpdate) {
        m_hasTriedUpdate = true;
        m_hands.press(*update);
        return;
    }
    if (visit > readingVisits)
        m_hands.present(dialog, QStringLiteral("update-dialog-afterwards"));
    m_hands.press(dialog, "pushButton_exit");
}

void UpdateDialogHandler::leaveForLater(QWidget& dialog, int visit)
{
    if (visit >= readingVisits)
        m_hands.press(dialog, "pushButton_exit");
}

void UpdateDialogHandler::untickOne(QWidget& dialog, int visit)
{
    auto& table = *dialog.findChild<QTableWidget*>();
    if (visit == readingVisits && table.rowCount() > 0)
        untick(table, 0);
    else
        updateAll(dialog, visit);
}

// The button is off then, but the dialog has a key for the update, too.
void UpdateDialogHandler::untickAll(QWidget& dialog, int visit)
{
    if (visit != readingVisits || m_hasTriedUpdate) {
        leaveForLater(dialog, visit);
        return;
    }
    auto& table = *dialog.findChild<QTableWidget*>();
    for (int row = 0; row < table.rowCount(); ++row)
        untick(table, row);
    m_hasTriedUpdate = true;
    m_hands.tell("press", QStringLiteral("F3"));
    QKeyEvent key(QEvent::KeyPress, Qt::Key_F3, Qt::NoModifier);
    QApplication::sendEvent(&dialog, &key);
}

void UpdateDialogHandler::untick(QTableWidget& table, int row)
{
    m_hands.tell("untick", table.item(row, 1)->text());
    clickCheckBox(table, row, 0);
}

void UpdateDialogHandler::followRun()
{
    if (!m_busy || !m_progress.look(*m_busy))
        return;
    m_hands.feedWatchdog(m_busy->windowTitle());
    const QString told = m_progress.line();
    if (told.isEmpty())
        return;
    m_hands.tell("progress", told);
    if (m_progress.percent() >= pictureOfRunPercent && !m_hasPictureOfRun) {
        m_hasPictureOfRun = true;
        m_hands.takePicture(*m_busy, QStringLiteral("update-running"));
    }
}
