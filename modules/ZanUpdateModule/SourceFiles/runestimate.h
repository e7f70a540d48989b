#pragma once

/// @file
/// How long the plug-in takes a run of controller blocks to last. It cannot know; it goes by these.

/// What a controller takes after the last record of a block.
inline constexpr int lastStepSeconds = 12;
/// Records that a controller takes in a second.
inline constexpr int cmdsPerSecond = 2750;
/// Records of a block that has not begun.
inline constexpr int cmdsPerFile = 80000;
/// Seconds that a block that has not begun adds to the estimate.
inline constexpr int secondsPerFurtherBlock = cmdsPerFile / cmdsPerSecond + lastStepSeconds;

/// Seconds that are left of a run with @p records to send of the block that is under way and
/// @p furtherBlocks behind it.
constexpr int estimatedSeconds(int records, int furtherBlocks)
{
    return furtherBlocks * secondsPerFurtherBlock + records / cmdsPerSecond + lastStepSeconds;
}
