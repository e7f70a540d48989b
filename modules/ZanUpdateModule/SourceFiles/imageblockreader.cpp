#include "imageblockreader.h"

#include "littleendianreader.h"

static constexpr int BLOCK_MAGIC = 0xA258;
static constexpr int BLOCK_MAGIC_MODEL_21 = 0xA25A;
static constexpr int MAX_BLOCK_TEXT_BYTES = 49;

// The text is of no use to anyone here and never reaches the channel.
static BlockRead skipBlockText(LittleEndianReader& reader)
{
    int length = 0;
    if (!reader.readU16(&length))
        return BlockRead::CannotRead;
    if (length > MAX_BLOCK_TEXT_BYTES)
        return BlockRead::NoUpdateFile;
    return reader.takeBytes(length) ? BlockRead::Ok : BlockRead::CannotRead;
}

BlockRead readImageBlockHead(LittleEndianReader& reader, int systemModel, ImageBlockHead* head)
{
    int magic = 0;
    if (!reader.readU16(&magic))
        return BlockRead::CannotRead;
    if (magic != (systemModel == 21 ? BLOCK_MAGIC_MODEL_21 : BLOCK_MAGIC))
        return BlockRead::NoUpdateFile;

    const BlockRead text = skipBlockText(reader);
    if (text != BlockRead::Ok)
        return text;

    const bool complete =
        reader.readS32(&head->recordCount) && reader.readU16(&head->maxRecordLength);
    return complete ? BlockRead::Ok : BlockRead::CannotRead;
}

BlockRead readImageRecord(LittleEndianReader& reader, int maxRecordLength, UpdateRecord* record)
{
    int length = 0;
    if (!reader.readU16(&length))
        return BlockRead::CannotRead;
    if (length > maxRecordLength || length > MAX_RECORD_BYTES)
        return BlockRead::NoUpdateFile;
    record->length = length;
    record->data = reader.takeBytes(length);
    return record->data ? BlockRead::Ok : BlockRead::CannotRead;
}
