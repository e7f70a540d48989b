#pragma once

#include "options.h"

#include <QFileInfo>

#include <optional>

/// @file
/// Which program file runs, and where it has its home. To be used before there is an application
/// object.

/// The file of the program itself.
QFileInfo programFile();

/// The program to go on with, where the scenario wants only some of the delivered files: it is laid
/// out with them below the state folder.
/// @param error must not be null
/// @return empty if this one will do; nullopt on failure
std::optional<QString> programFor(const Options& options, QString* error);

/// Starts @p program in the place of this one, and returns only if that fails. The state folder,
/// which would depend on where the program stands, is told last, so that it counts.
/// @param arguments of this program
/// @return the program's exit code
int goOnWith(const QString& program, QStringList arguments, const QString& stateDir);

/// Makes @p home, and has everything that keeps files in the user's home find it there. The way to
/// the display is not lost by that.
void moveHome(const QString& home);
