#pragma once

#include <functional>

/// @file
/// Counts what the whole process takes from the heap. Linking heapcounter.cpp puts it in place.

struct HeapCount
{
    long allocations = 0; ///< calls that took memory
    long liveBytes = 0;   ///< bytes taken and not given back
    long peakBytes = 0;   ///< highest liveBytes since the last resetHeapPeak()
};

HeapCount heapCount();
void resetHeapPeak();

/// What @p work takes from the heap and leaves on it. It is done twice and counted the second time,
/// so that what is made once for all times does not count.
HeapCount heapUseOf(const std::function<void()>& work);
