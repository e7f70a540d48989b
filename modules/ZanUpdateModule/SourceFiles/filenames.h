#pragma once

#include <QString>

/// @file
/// What the update module takes from the names of files and folders. All functions are safe to call
/// from any thread.

/// The pre-release of a plain image, which has no field for it: what stands in its name between the
/// first and the second lower-case "v", up to an underscore, without the version. For example
/// "-beta.2"; whatever else stands there comes along.
QString preReleaseOfFileName(const QString& path);

/// The first directory of this name in @p directory or below it, depth first and in the order of
/// the names, with one separator at its end for each level; empty if there is none. A file of this
/// name ends the search, too.
QString searchDirectory(const QString& directory, const QString& name);
