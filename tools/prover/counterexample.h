#pragma once

#include "proof.h"

#include <QString>

/// The folder that the scenario @p path finds its update files in: beside it, with its name.
QString counterexampleFolder(const QString& path);

/// Writes a scenario on which @p finding can be seen, which must have an example: the system into
/// the file @p path, and small stand-ins for the images of @p delivery into the folder beside it.
/// If the folder is there already, it must be the one of an earlier scenario in @p path, and is
/// renewed.
///
/// @param error must not be null; receives one line on failure
bool writeCounterexample(const Finding& finding, const DeliveredFiles& delivery,
                         const QString& path, QString* error);
