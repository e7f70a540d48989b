#include "connectionpanel.h"

#include "moment.h"
#include "permission.h"

#include <equipment.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr int titlePointsMore = 3;

QLabel* makeTitle()
{
    auto* title = new QLabel;
    QFont font = title->font();
    font.setBold(true);
    font.setPointSize(font.pointSize() + titlePointsMore);
    title->setFont(font);
    return title;
}

} // namespace

ConnectionPanel::ConnectionPanel(Equipment& equipment, bool observer, QWidget* parent)
    : QStackedWidget(parent), m_equipment(equipment), m_clock(new QTimer(this)),
      m_title(makeTitle()), m_details(new QLabel), m_waiting(makeTitle()), m_remaining(new QLabel),
      m_bar(new QProgressBar), m_power(new QPushButton(tr("Give &power to the controllers")))
{
    addWidget(makeConnectedPage());
    addWidget(makeWaitingPage());
    permit(*m_power, observer ? whyObserversMayNot() : QString());
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    connect(m_clock, &QTimer::timeout, this, &ConnectionPanel::updateWaiting);
    m_clock->setInterval(200);
}

QWidget* ConnectionPanel::makeConnectedPage()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_title);
    m_title->setText(tr("Connecting to %1...").arg(m_equipment.scenario().address()));
    m_details->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_details);
    layout->addStretch();
    return page;
}

QWidget* ConnectionPanel::makeWaitingPage()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("waitingPage"));
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_waiting);

    auto* line = new QHBoxLayout;
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName(tr("Restart of the controllers"));
    line->addWidget(m_bar, 1);
    line->addWidget(m_remaining, 1);
    m_power->setObjectName(QStringLiteral("pushButton_power"));
    connect(m_power, &QPushButton::clicked, this,
            [this] { m_equipment.perform({EquipmentCommand::Kind::PowerCycle}); });
    line->addWidget(m_power);
    layout->addLayout(line);
    return page;
}

void ConnectionPanel::showConnected(const QString& details)
{
    m_clock->stop();
    m_title->setText(tr("Connected to %1").arg(m_equipment.scenario().address()));
    m_details->setText(details);
    setCurrentIndex(0);
}

void ConnectionPanel::showWaiting(const QDateTime& lastAnswer)
{
    const QString waiting = tr("Waiting for the controllers to come back...");
    m_waiting->setText(lastAnswer.isValid()
                           ? tr("No answer since %1. %2").arg(momentText(lastAnswer), waiting)
                           : waiting);
    setCurrentIndex(1);
    updateWaiting();
    m_clock->start();
}

QString ConnectionPanel::remainingText(qint64 leftMs) const
{
    if (!m_equipment.isAtHand())
        return whyNotAtHand();
    if (leftMs == 0)
        return tr("They have power, but do not answer.");
    return leftMs > 0 ? tr("about %1 s").arg((leftMs + 999) / 1000)
                      : tr("They do not come back by themselves.");
}

void ConnectionPanel::updateWaiting()
{
    const qint64 leftMs = m_equipment.msUntilReachable();
    const bool hasPower = leftMs >= 0;
    const int bootMs = m_equipment.scenario().timing.bootMs;
    m_bar->setVisible(leftMs > 0);
    m_bar->setRange(0, qMax(1, bootMs));
    m_bar->setValue(leftMs > 0 ? bootMs - static_cast<int>(leftMs) : 0);
    m_remaining->setText(remainingText(leftMs));
    m_power->setVisible(!hasPower && m_equipment.isAtHand());
}
