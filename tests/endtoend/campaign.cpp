#include "campaign.h"

#include <QtTest>

namespace {

constexpr int mostAtOnce = 8;
constexpr int mostStarts = 5;

} // namespace

void Campaign::begin()
{
    while (m_running < mostAtOnce && !m_orders.isEmpty())
        begin(m_orders.takeFirst());
}

const Encounter* Campaign::finished(const QString& name)
{
    const bool isOver = QTest::qWaitFor([&] { return m_over.contains(name); }, longWaitMs);
    return isOver ? m_encounters.at(name).get() : nullptr;
}

QString Campaign::text(const QString& name) const
{
    const auto encounter = m_encounters.find(name);
    return encounter == m_encounters.end() ? QString() : encounter->second->text();
}

void Campaign::begin(const Order& order)
{
    ++m_running;
    auto& encounter = m_encounters[order.name];
    encounter = std::make_unique<Encounter>(m_frontend, order.scenario);
    // Queued, as a process cannot be started again from its own signal.
    QObject::connect(
        encounter.get(), &Encounter::ended, encounter.get(),
        [this, name = order.name] { goOn(name); }, Qt::QueuedConnection);
    if (encounter->startSystem({"--fast"}) && encounter->arm(order.fault))
        encounter->startFrontend();
    else
        end(order.name);
}

void Campaign::goOn(const QString& name)
{
    Encounter& encounter = *m_encounters.at(name);
    const int code = encounter.starts().last().code;
    const bool isMoreToDo = code == StartAgain || code == NotNewest;
    if (isMoreToDo && encounter.starts().size() < mostStarts && encounter.giveCamerasPower())
        encounter.startFrontend();
    else
        end(name);
}

void Campaign::end(const QString& name)
{
    --m_running;
    m_over += name;
    begin();
}
