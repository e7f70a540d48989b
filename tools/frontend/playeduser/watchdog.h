#pragma once

#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Barks if nobody reports progress for too long, even if the thread that should do so is stuck.
class Watchdog
{
public:
    /// @param bark is called from the watchdog's own thread, once, with the last place reported
    Watchdog(std::chrono::milliseconds limit, const std::function<void(const QString&)>& bark);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// Something has moved. @param place where the program is now, for example a window's title
    void feed(const QString& place);

private:
    void watch();

    std::chrono::milliseconds m_limit;
    std::function<void(const QString&)> m_bark;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::chrono::steady_clock::time_point m_deadline;
    QString m_place;
    bool m_isOver = false;
    std::thread m_thread; // last: it uses all the others
};
