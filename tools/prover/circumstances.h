#pragma once

#include "proof.h"

/// @file
/// What goes wrong for other reasons than the versions that run.

/// Pre-release texts that no controller reports, content of an unknown kind, and controllers whose
/// model cannot be asked. None of them stands against a proof.
QVector<Finding> circumstances(const DeliveredFiles& delivery, const ProofOptions& options);
