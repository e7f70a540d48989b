#pragma once

#include <verb.h>

/// @file
/// The commands of `imagetool` that concern update files.

/// Makes an update file from its description.
Verb buildVerb();
/// Looks for what is wrong with update files and deliveries.
Verb checkVerb();
/// Writes the content of one block or camera image to a file.
Verb extractVerb();
/// Shows what an update file holds, as text or as its description.
Verb showVerb();
