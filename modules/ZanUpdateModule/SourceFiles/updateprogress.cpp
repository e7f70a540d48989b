#include "updateprogress.h"

#include "runestimate.h"

#include <algorithm>

static int shownPercentage(double percentage)
{
    if (percentage >= 98.0)
        return 98;
    return percentage >= 1.0 ? static_cast<int>(percentage) : 1;
}

// In single precision, which decides where the bar moves on.
static float percentageOf(const RunPosition& position)
{
    const float f = 100.0F / static_cast<float>(position.blocks);
    const float share = std::min((static_cast<float>(position.record - 1) + 1.0F) /
                                     static_cast<float>(position.records),
                                 1.0F);
    return f * (static_cast<float>(position.blocksDone) + share);
}

// Operators know the time to stand still at the last record of the run. That is told by the block's
// index in its image and not by its place in the run, and stays so.
static bool keepsSeconds(const RunPosition& position)
{
    const bool isLastRecord = position.record == position.records;
    return position.blocks <= 0 || (isLastRecord && position.blocks == position.blockIndex + 1);
}

Progress blockProgress(const RunPosition& position, int previousSeconds)
{
    const int percentage = shownPercentage(static_cast<double>(percentageOf(position)));
    if (keepsSeconds(position))
        return {percentage, previousSeconds};
    const int recordsLeft = position.records - (position.record - 1);
    return {percentage, estimatedSeconds(recordsLeft, position.blocks - position.blocksDone - 1)};
}

Progress timedProgress(const TimedPosition& position)
{
    double remainingSec = position.lastStepSec;
    if (position.step < position.steps)
        remainingSec += (position.steps - position.step) * position.stepSec;
    else
        remainingSec -= position.lastStepPassedSec;
    const double wholeSec = position.steps * position.stepSec + position.lastStepSec;
    return {shownPercentage((1.0 - remainingSec / wholeSec) * 100.0),
            static_cast<int>(remainingSec)};
}

QString remainingTimeText(int seconds)
{
    if (seconds <= 0)
        return QString();
    QString text = QStringLiteral("Estimated remaining time: ");
    if (seconds > 59)
        text += QStringLiteral("%1 min ").arg(seconds / 60);
    return text + QStringLiteral("%1 s").arg(seconds % 60);
}
