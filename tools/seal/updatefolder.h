#pragma once

#include <QString>

/// What a folder of update files is called.
inline const QLatin1String updateFolderName("controller_update");

/// Finds the folder that the plug-in takes its update files from: "controller_update" beside the
/// program, or else the first one below, depth first and by name. Any thread.
///
/// @param applicationDir folder of the program, QCoreApplication::applicationDirPath() in a host
/// @return its path; empty if there is none, in which case the plug-in reads no file at all
QString findUpdateFolder(const QString& applicationDir);
