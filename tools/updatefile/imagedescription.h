#pragma once

#include "updatefile.h"

#include <QStringList>

#include <optional>

/// Reads the JSON description of an update file; docs/imagetool.md lists its keys.
///
/// Payloads and the content of other files are made or read only when the file is written, so that
/// the result needs little memory.
///
/// @param fileName names the description in messages; files in it are named from its folder
/// @param inputFiles may be null; receives the paths of all files whose content is to be taken
/// @param error must not be null; receives the first error as one line "FILE: PATH: REASON"
/// @return nullopt after an error
std::optional<UpdateFile> readImageDescription(const QByteArray& json, const QString& fileName,
                                               QStringList* inputFiles, QString* error);
