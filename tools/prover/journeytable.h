#pragma once

#include "proof.h"

/// Joins neighbouring classes of one way to ranges. @p journeys has one for each pair of a class of
/// Pt and one of Ct, the classes of Ct of one Pt side by side; a way that nobody asked for has no
/// value. Safe to call from any thread.
QVector<JourneyRange> joinJourneys(const QVector<std::optional<Journey>>& journeys, int ctClasses);
