#pragma once

#include "options.h"

/// Runs the frontend on the system that @p options name, with hands or without, and anew on each
/// system that takes its place. There must be an application object.
/// @return the program's exit code
int runFrontend(Options options);
