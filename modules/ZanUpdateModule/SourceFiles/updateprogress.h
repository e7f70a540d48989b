#pragma once

#include <QString>

/// @file
/// What the progress bar and the line of the remaining time show, computed from where a run stands.
/// During a run the bar shows neither an empty nor a full state: 1 to 98.

/// Where a run of controller blocks stands.
struct RunPosition
{
    int record;     ///< in its block, from 1
    int records;    ///< of that block
    int blockIndex; ///< of that block in its image, from 0
    int blocksDone; ///< blocks of the run that are behind it
    int blocks;     ///< of the whole run; a run of slaves that were not counted goes beyond it
};

/// Where a camera's run stands, which is estimated by the time that its steps take.
struct TimedPosition
{
    int steps;                ///< of the whole run
    double stepSec;           ///< seconds that each takes
    double lastStepSec;       ///< seconds that the last one takes besides
    int step;                 ///< the one that is reached
    double lastStepPassedSec; ///< seconds of the last step that have passed; 0 before it
};

/// What is shown of a run at one moment.
struct Progress
{
    int percentage; ///< 1 to 98
    int seconds;    ///< that are left, cut to whole ones; not above 0 if no time is told
};

/// Progress of controller blocks.
/// @param previousSeconds the estimate so far, which some positions keep
Progress blockProgress(const RunPosition& position, int previousSeconds);

/// Progress of a camera, by the time that its steps take.
Progress timedProgress(const TimedPosition& position);

/// The line of the remaining time; empty if there is none left.
QString remainingTimeText(int seconds);
