#pragma once

/// @file
/// The version of the contract between host and plug-in, which is to say of the headers in this
/// folder. docs/compatibility.md tells what moves it.

/// Where this number differs, host and plug-in must not call each other.
#define ZAN_CONTRACT_MAJOR 1

/// Grows by what is added without a harm to those who do not know it.
#define ZAN_CONTRACT_MINOR 0
