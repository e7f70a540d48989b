#pragma once

#include <verb.h>

/// @file
/// The commands of `imagetool` that concern what a folder of update files does to a system.

/// Shows the update table that a system gets.
Verb planVerb();
/// Proves that every controller comes to the newest release, or shows which does not.
Verb proveVerb();
