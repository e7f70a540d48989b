#pragma once

#include "faults.h"

#include <checkedjson.h>

/// Reads a fault; docs/simulator.md describes its keys.
/// @param devices names that a fault may be about
Fault faultFromJson(CheckedObject object, const QStringList& devices);

/// The same fault as faultFromJson() reads it.
QJsonObject faultToJson(const Fault& fault);
