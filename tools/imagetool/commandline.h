#pragma once

#include <verb.h>

/// The program `imagetool`: its commands, in the order of its help.
const VerbProgram& imageTool();
