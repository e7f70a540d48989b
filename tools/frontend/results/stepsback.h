#pragma once

#include "plannedrun.h"

/// A part of a device that a run would take below what it runs, or that tells nobody what it runs.
struct StepBack
{
    QString device; ///< as in PlannedUpdate
    Part part;      ///< which software of the device
    QString runs;   ///< version as it was reported; empty: it is not known
    QString lowest; ///< the lowest version that the run would bring
};

/// The steps back among @p steps, one for each part of a device.
/// @param now what the devices say when they are asked before the run
/// @param known what they said before; counts where nothing was answered now
QVector<StepBack> stepsBack(const QVector<PlannedUpdate>& steps, const SystemReport& now,
                            const SystemReport& known);

/// A step back in one line for people.
QString stepBackText(const StepBack& step);
