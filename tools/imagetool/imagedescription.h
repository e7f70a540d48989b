#pragma once

#include "updatefile.h"

#include <optional>

/// Reads the JSON description of an update file; docs/imagetool.md lists its keys.
///
/// Where the description asks for a payload, it is generated here, so the result can be large.
///
/// @param fileName names the description in messages
/// @param error must not be null and must be empty; receives the first error as one line
///              "FILE: PATH: REASON"
/// @return nullopt after an error
std::optional<UpdateFile> readImageDescription(const QByteArray& json, const QString& fileName,
                                               QString* error);
