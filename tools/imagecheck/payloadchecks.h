#pragma once

#include <imagescan.h>

/// What is wrong with the payloads of a file: one that is damaged, or for another version than the
/// file's head says. Safe to call from any thread.
QVector<RuleFinding> payloadFindings(const ScannedFile& scanned);
