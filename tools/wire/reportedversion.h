#pragma once

#include <VersionInfo.h>

#include <QString>

/// @file
/// Version texts as devices report them: a version with an optional appendix, then perhaps a blank
/// and a date. Safe to call from any thread.

/// The version that stands at the start of @p text.
VersionInfo reportedVersion(const QString& text);

/// What stands behind the version up to the first blank, for example "-beta.2"; empty for a
/// release.
QString reportedAppendix(const QString& text);
