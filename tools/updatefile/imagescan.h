#pragma once

#include "updatefile.h"

#include <findings.h>
#include <payload.h>

#include <functional>

class QIODevice;

/// @file
/// Reads update files of any size without holding their records. Any bytes will do; nothing is
/// trusted. All functions are safe to call from any thread.

/// What the records of one block or camera image were found to be.
struct ScannedContent
{
    qint64 start = 0;        ///< offset of the block
    qint64 end = 0;          ///< where its records end, or where reading them had to end
    bool isComplete = false; ///< all records could be read
    RecordTotals totals;     ///< of the records that could be read

    bool isPayload = false;             ///< it begins as a payload of the simulated devices
    std::optional<PayloadHead> payload; ///< nullopt: none, or damaged
    QString payloadDamage;              ///< one line; empty for what is no payload
};

/// What was found in a file.
struct ScannedFile
{
    /// As much as could be read, without records; magics, counts, offsets and lengths are set to
    /// what stands in the file. nullopt if the file is no update file or ends within its tables.
    std::optional<UpdateFile> file;
    QVector<ScannedContent> contents; ///< one for each block or image
    qint64 size = 0;                  ///< of the file in bytes
    QVector<RuleFinding> findings;    ///< what no reader and no device would take
    QString error;                    ///< one line if the file could not be read to its end
};

/// What a scan tells while it goes on.
struct ScanEvents
{
    /// Now and then, the bytes read so far and those of the whole file.
    std::function<void(qint64 done, qint64 total)> progress;

    /// Each record, with the index of its block or camera image.
    std::function<void(int index, const char* data, int size)> record;
};

/// Reads the file in @p device, which must be open for reading and not sequential.
ScannedFile scanUpdateFile(QIODevice& device, const ScanEvents& events = ScanEvents());
