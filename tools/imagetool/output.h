#pragma once

#include <verb.h>
#include <wholefile.h>

/// Writes a file of the user's, whole or not at all, or the standard output if @p path is "-".
/// @param inputs files that must not be overwritten, because the output is made from them
/// @param write writes into a device whose handle() can be read as well
/// @param error must not be null; receives one or more lines on failure
bool writeOutput(VerbRun& run, const QString& path, const QStringList& inputs,
                 const WriteContent& write, QString* error);
