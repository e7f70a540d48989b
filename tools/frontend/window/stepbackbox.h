#pragma once

#include <stepsback.h>

class QWidget;

/// Shows the user what a run would take back, and asks whether it shall. Stopping is the answer of
/// whoever gives none: it is preset, and what Escape, a closed window and the end of the program
/// come to.
/// @param window stands behind the box where no modal window does
bool allowsStepsBack(const QVector<StepBack>& steps, QWidget* window);
