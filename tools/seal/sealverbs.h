#pragma once

#include <verb.h>

/// @file
/// The commands of `imagetool` that seal folders of update files and check them.

/// Seals a folder of update files, with a key if there is one.
Verb sealVerb();
/// Checks a folder against its seal.
Verb verifyVerb();
