#pragma once

#include "simulatedsystem.h"

#include <QByteArray>

#include <optional>

/// Answers the query @p text from the present state of @p system.
///
/// @return the value in UTF-8, or nullopt with *error filled with the error reply. @p error must
///         not be null.
std::optional<QByteArray> queryValue(const SimulatedSystem& system, const QByteArray& text,
                                     QByteArray* error);
