#pragma once

#include <QString>

/// The file beside the plug-in @p library that tells the version of the contract it was built with.
QString contractFileOf(const QString& library);

/// Why this program must not call the plug-in @p library: a line with its file and both versions of
/// the contract, or with what is wrong with the file that tells the plug-in's. Nothing of the
/// plug-in runs for this. A library without such a file is of the first contract, 1.0.
///
/// @return empty if it may be called
QString whyNotToCall(const QString& library);
