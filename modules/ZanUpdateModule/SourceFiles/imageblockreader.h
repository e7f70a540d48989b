#pragma once

#include "globaldefines.h"

class LittleEndianReader;

/// @file
/// Reads the blocks of a controller update image; docs/formats.md describes them.

/// How a read ended.
enum class BlockRead
{
    Ok,
    CannotRead,   ///< the file ends too early
    NoUpdateFile, ///< the content is something else
};

/// What stands in front of a block's records.
struct ImageBlockHead
{
    int recordCount = 0;     ///< signed as in the file: nothing is to be sent if it is not positive
    int maxRecordLength = 0; ///< upper bound that the block sets for its records, in bytes
};

/// Reads magic, text and record count. @p systemModel is the image's; it decides the magic.
BlockRead readImageBlockHead(LittleEndianReader& reader, int systemModel, ImageBlockHead* head);

/// Reads the next record. One that is longer than @p maxRecordLength, or than any record may be, is
/// refused as NoUpdateFile.
BlockRead readImageRecord(LittleEndianReader& reader, int maxRecordLength, UpdateRecord* record);
