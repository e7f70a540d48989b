#pragma once

#include "encounter.h"

#include <map>

/// Encounters that go on until nothing is left to do, a few of them at once: they wait for most of
/// their time. All in the thread of the test, while its event loop runs.
class Campaign
{
public:
    /// One encounter: a system, and the fault that it shows.
    struct Order
    {
        QString name;
        QByteArray scenario;
        Fault fault;
    };

    /// @param frontend the program
    explicit Campaign(QString frontend) : m_frontend(std::move(frontend)) {}

    void add(const Order& order) { m_orders += order; }
    void begin();
    /// Waits for the end of an encounter. @return null if it did not come to one
    const Encounter* finished(const QString& name);
    /// What an encounter told up to now.
    QString text(const QString& name) const;

private:
    void begin(const Order& order);
    void goOn(const QString& name);
    void end(const QString& name);

    QString m_frontend;
    QVector<Order> m_orders;
    std::map<QString, std::unique_ptr<Encounter>> m_encounters;
    QStringList m_over;
    int m_running = 0;
};
