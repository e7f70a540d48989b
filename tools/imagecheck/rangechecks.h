#pragma once

#include <findings.h>
#include <updatefile.h>

/// What is wrong with the ranges of an image's blocks, also compared with the versions in its head.
/// Safe to call from any thread.
/// @param isFinal whether the image is no pre-release, which in the plain layout its name tells
QVector<RuleFinding> checkRanges(const ControllerImage& image, bool isFinal);

/// The version after @p version in the order of versions of @p parts numbers up to 65535; nullopt
/// after the last one.
std::optional<VersionInfo> versionAfter(VersionInfo version, int parts);
