#pragma once

#include <imagescan.h>

/// @file
/// What is wrong with a single update file. Safe to call from any thread.

/// Everything that is wrong with a scanned file, by offset; what the scan itself found included.
/// @param fileName name of the file, as which it is to be delivered; folders in it do not matter.
///                 Empty: it has no name yet, and the rules for names do not count
QVector<RuleFinding> checkUpdateFile(const ScannedFile& scanned, const QString& fileName);

/// The pre-release that the plug-in sees in an image of this name, for example "-beta.2".
QString preReleaseOf(const ControllerImage& image, const QString& fileName);
