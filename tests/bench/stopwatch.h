#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>

/// The shortest of @p rounds runs of @p work, in seconds: what the work costs when nothing
/// disturbs.
inline double shortestSeconds(int rounds, const std::function<void()>& work)
{
    double shortest = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        shortest = std::min(shortest, elapsed.count());
    }
    return shortest;
}
