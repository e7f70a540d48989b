#include "messageboxhandler.h"

#include "boxanswers.h"
#include "userhands.h"

#include <mainwindow.h>

#include <QPushButton>

MessageBoxHandler::MessageBoxHandler(UserHands& hands, const MainWindow& frontend,
                                     QStringList& refusals)
    : m_hands(hands), m_frontend(frontend), m_refusals(refusals)
{
}

bool MessageBoxHandler::isFor(const QWidget& window) const
{
    return qobject_cast<const QMessageBox*>(&window) != nullptr;
}

void MessageBoxHandler::handle(QWidget& window, int /*visit*/)
{
    auto& box = static_cast<QMessageBox&>(window);
    const BoxAnswer answer = answerTo(box);
    // It is locked as long as the run's last record is hardly through: then at the next visit.
    const auto* power = m_frontend.findChild<QPushButton*>("pushButton_powerCycleControllers");
    if (answer.asksForPower && !power->isEnabled())
        return;
    m_hands.present(box, answer.pictureName);
    if (answer.isRefusal)
        m_refusals += box.text().simplified();
    if (answer.asksForPower)
        m_hands.press(m_frontend, "pushButton_powerCycleControllers");
    m_hands.press(*answer.button);
}
