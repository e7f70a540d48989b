#pragma once

#include "options.h"

/// @file
/// What the program says on its streams instead of in its window.

/// Prints "demo-frontend: TEXT" as an error.
/// @return @p code
int fail(ExitCode code, const QString& text);

/// The same for a start that failed, and, unless the run is headless, in a message box for whoever
/// started it from a desktop. There must be an application object.
int failVisibly(const Options& options, const QString& text);

/// Prints what was asked for in the place of a run. There must be an application object.
/// @param action not Action::Run
/// @return the program's exit code
int runConsole(Options::Action action);
