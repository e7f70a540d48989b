#include "watchdog.h"

Watchdog::Watchdog(std::chrono::milliseconds limit, const std::function<void(const QString&)>& bark)
    : m_limit(limit), m_bark(bark), m_deadline(std::chrono::steady_clock::now() + limit),
      m_thread([this] { watch(); })
{
}

Watchdog::~Watchdog()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void Watchdog::feed(const QString& place)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deadline = std::chrono::steady_clock::now() + m_limit;
    m_place = place;
}

void Watchdog::watch()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_isOver && std::chrono::steady_clock::now() < m_deadline)
        m_wake.wait_until(lock, m_deadline);
    if (!m_isOver)
        m_bark(m_place);
}
