#include "blockstream.h"

#include "imageblockreader.h"
#include "littleendianreader.h"
#include "replybuffer.h"
#include "sixbitencoding.h"

#include <IOManager>

static constexpr int RECORDS_PER_TICK = 1000;

QString blockTitle(ZAN_UPDATE_TYPE type, const QString& hostname)
{
    switch (type) {
    case ZAN_FIRMWARE_UPDATE:
        return QStringLiteral("Updating firmware (%1)").arg(hostname);
    case ZAN_SYSTEM_UPDATE:
        return QStringLiteral("Updating system (%1)").arg(hostname);
    default:
        return QString();
    }
}

/// How the records of a kind of block are sent.
struct BlockCommand
{
    const char* word;
    int lastReplyTimeoutMs;
};

static BlockCommand commandOf(ZAN_UPDATE_TYPE type)
{
    switch (type) {
    case ZAN_FIRMWARE_UPDATE:
        return {"update", 20000};
    case ZAN_SYSTEM_UPDATE:
        return {"ctupdt", 120000};
    default:
        return {"", 20000};
    }
}

static BlockOutcome readFailure(BlockRead failure, const QString& file, int record)
{
    if (failure == BlockRead::CannotRead)
        return {-3, QStringLiteral("cannot read file ") + file, record};
    return {-4, QStringLiteral("no software update file ") + file, record};
}

// @return whether the controller took the record
static bool sendRecord(IOManager* iom, const BlockCommand& command, const RecordPlace& place,
                       const char* text)
{
    const bool isLast = place.record == place.records;
    if (isLast)
        iom->prepare_reply(1, command.lastReplyTimeoutMs, 1);
    const int failed =
        iom->set_value("system %s %d %d %s", command.word, place.records, place.record, text);
    return (isLast ? iom->poll_reply(3) : failed) == 0;
}

static BlockOutcome streamRecords(LittleEndianReader& reader, IOManager* iom,
                                  const UpdateBlockSource& block, const ImageBlockHead& head,
                                  const BlockTick& tick)
{
    const BlockCommand command = commandOf(block.type);
    UpdateRecord dat;
    char cmd[LONG_TEXT_BYTES];
    for (int sent = 0; sent < head.recordCount; ++sent) {
        const RecordPlace place = {sent + 1, head.recordCount};
        const bool isLast = place.record == place.records;
        if (sent % RECORDS_PER_TICK == 0 || isLast)
            tick(place);
        const BlockRead read = readImageRecord(reader, head.maxRecordLength, &dat);
        if (read != BlockRead::Ok)
            return readFailure(read, block.fileName, place.record);
        encodeSixBit(cmd, dat.data, dat.length);
        if (!sendRecord(iom, command, place, cmd)) {
            return {-1, QStringLiteral("Update not successful! Error code: %1").arg(isLast ? 2 : 1),
                    place.record};
        }
    }
    return {};
}

BlockOutcome streamBlock(LittleEndianReader& reader, IOManager* iom, const UpdateBlockSource& block,
                         const BlockTick& tick)
{
    ImageBlockHead head;
    const BlockRead read = readImageBlockHead(reader, block.systemModel, &head);
    if (read != BlockRead::Ok)
        return readFailure(read, block.fileName, 0);
    tick({0, head.recordCount});
    return streamRecords(reader, iom, block, head, tick);
}
