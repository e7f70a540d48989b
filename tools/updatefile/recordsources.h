#pragma once

#include "updatefile.h"

#include <payload.h>

/// @file
/// Where the records of a block come from while it is written. Safe to use from any thread.

/// The content of a file, cut into records of @p recordLength bytes; the last one may be shorter.
/// @param error must not be null; receives one line if the result is null
std::shared_ptr<const RecordSource> recordsOfFile(const QString& path, int recordLength,
                                                  QString* error);

/// A payload for simulated devices: @p count full records of @p recordLength bytes, together at
/// least payloadOverhead.
std::shared_ptr<const RecordSource> recordsOfPayload(const PayloadHead& head, qint64 count,
                                                     int recordLength, quint32 seed);

/// The records of block or camera image @p index of another update file, as they are there.
/// @param error must not be null; receives one line if the result is null
std::shared_ptr<const RecordSource> recordsOfBlock(const QString& path, int index, QString* error);
