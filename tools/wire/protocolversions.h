#pragma once

#include <VersionInfo.h>

/// @file
/// From which version of the protocol on controllers know what; docs/command-language.md tells
/// more.

/// The name of the mainboard.
constexpr VersionInfo protocolWithBoard{0, 15};

/// The list of hardware.
constexpr VersionInfo protocolWithHardware{0, 17};

/// Slaves, and serial numbers.
constexpr VersionInfo protocolWithCascade{1, 7};

/// The models of slaves.
constexpr VersionInfo protocolWithSlaveModels{1, 23};

/// The last version before that.
constexpr VersionInfo protocolBeforeSlaveModels{1, 22};

/// The version that current controllers speak.
constexpr VersionInfo currentProtocol = protocolWithSlaveModels;
