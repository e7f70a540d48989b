#pragma once

#include "options.h"

class Frontend;
class Narrator;

/// Runs a frontend that was prepared without hands, and judges what became of it.
/// @return one of the codes that --help lists
ExitCode runHeadless(Frontend& frontend, const Options& options, Narrator& narrator);
