#pragma once

#include "deliveredfiles.h"

#include <updatefile.h>

/// An image that the plug-in and the simulated controllers take as they take @p delivered, but
/// small: its head and its block table are the same, and its blocks carry payloads that bring what
/// those of
/// @p delivered bring, or are refused as they are. Safe to call from any thread.
ControllerImage standInFor(const DeliveredImage& delivered);
