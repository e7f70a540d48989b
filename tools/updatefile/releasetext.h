#pragma once

#include "updatefile.h"

#include <QString>

/// @file
/// Versions, releases and dates of update files as people read and write them. All functions are
/// safe to call from any thread.

/// For example "3.2.0", without the parts that are absent.
QString versionText(const VersionInfo& version);

/// What stands behind the version of a pre-release, for example "-beta.2"; of a foreign kind, what
/// the plug-in makes of it: "-unknown40.2".
QString preReleaseText(int type, int number);

/// For example "3.2.0-beta.2". In the plain layout the pre-release stands elsewhere.
QString releaseText(const ControllerImage& image);

/// What a payload brings, for example "Pt 3.2.0-beta.2".
QString payloadText(const PayloadHead& head);

/// For example "2025-03-14"; of what is no date, the three numbers all the same.
QString dateText(const ImageDate& date);

/// The text of a release, taken apart.
struct ReleaseText
{
    VersionInfo version;      ///< three parts
    int preReleaseType = 0;   ///< 10 alpha, 20 beta, 30 release candidate; 0 none
    int preReleaseNumber = 0; ///< 0 in a release
    QString appendix;         ///< for example "-beta.2"
};

/// Reads a version of @p parts numbers from 0 to 65535.
std::optional<VersionInfo> parseVersion(const QString& text, int parts);

/// Reads what releaseText() writes.
std::optional<ReleaseText> parseRelease(const QString& text);

/// Reads what dateText() writes.
std::optional<ImageDate> parseDate(const QString& text);
