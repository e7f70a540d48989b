#include "fixtureimages.h"

ImageRecord shortRecord(int value)
{
    return QByteArray(1, static_cast<char>(value));
}

QVector<ImageRecord> shortRecords(int count)
{
    return QVector<ImageRecord>(count, shortRecord(0));
}

static ControllerImageBlock changed(ControllerImageBlock block, quint16 type,
                                    const QVector<ImageRecord>& records)
{
    block.type = type;
    if (!records.isEmpty())
        block.records = records;
    return block;
}

ControllerImageBlock blockOf(quint16 type, const QVector<ImageRecord>& records)
{
    return changed(firmwareBlock(VersionInfo(0, 0, 0), VersionInfo(99, 99, 99)), type, records);
}

ControllerImageBlock blockFrom(const VersionInfo& from, quint16 type,
                               const QVector<ImageRecord>& records)
{
    const VersionInfo to(from.major(), from.minor(), 999);
    return changed(firmwareBlock(from, to), type, records);
}
