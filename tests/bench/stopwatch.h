#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <limits>

/// The processor time of this process: what is left of a ratio's noise on a machine with other
/// work to do. It leaves out what the process waits for.
struct ProcessorClock
{
    using duration = std::chrono::duration<double>;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<ProcessorClock>;
    static constexpr bool is_steady = true;

    static time_point now()
    {
        return time_point(duration(static_cast<double>(std::clock()) / CLOCKS_PER_SEC));
    }
};

/// The shortest of @p rounds runs of @p work, in seconds: what the work costs when nothing
/// disturbs.
template <typename Clock = std::chrono::steady_clock>
double shortestSeconds(int rounds, const std::function<void()>& work)
{
    double shortest = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        const auto start = Clock::now();
        work();
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        shortest = std::min(shortest, elapsed.count());
    }
    return shortest;
}
