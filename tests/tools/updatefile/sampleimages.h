#pragma once

#include "imagewriter.h"
#include "payload.h"

/// @file
/// Update files in which no two fields hold the same number, so that swapped fields show.

/// All records of a block, from wherever they come.
inline QVector<ImageRecord> allRecords(const RecordBlock& block)
{
    struct Keeper : RecordSink
    {
        QVector<ImageRecord> records;
        bool take(const char* data, int size) override
        {
            records.append(QByteArray(data, size));
            return true;
        }
    };
    if (!block.source)
        return block.records;
    Keeper keeper;
    QString error;
    if (!block.source->feed(keeper, &error))
        qFatal("%s", qPrintable(error));
    return keeper.records;
}

/// A block of two records: 01 02 03 and FF, 21 bytes long.
inline RecordBlock sampleRecords()
{
    RecordBlock block;
    block.text = "abc";
    block.records = {QByteArray::fromHex("010203"), QByteArray::fromHex("ff")};
    return block;
}

inline ControllerImageBlock sampleBlock(quint16 type)
{
    ControllerImageBlock block;
    static_cast<RecordBlock&>(block) = sampleRecords();
    block.type = type;
    block.minVer = VersionInfo(0x51, 0x52, 0x53);
    block.maxVer = VersionInfo(0x61, 0x62, 0x63);
    return block;
}

inline ControllerImage sampleImage(ImageLayout layout, int modelFamily,
                                   const QVector<quint16>& blockTypes)
{
    ControllerImage image;
    image.layout = layout;
    image.modelFamily = modelFamily;
    image.release = VersionInfo(0x11, 0x12, 0x13);
    image.preReleaseType = 20;
    image.preReleaseNumber = 0x0102;
    image.releaseDate = {2025, 3, 14};
    image.minorReleaseDate = {2026, 11, 30};
    image.newPt = VersionInfo(0x21, 0x22, 0x23);
    image.newCt = VersionInfo(0x31, 0x32);
    image.minPt = VersionInfo(0x41, 0x42, 0x43);
    image.minCt = VersionInfo(0x44, 0x45);
    image.reserved = {0xE1, 0xE2, 0xE3, 0xE4};
    for (const quint16 type : blockTypes)
        image.blocks.append(sampleBlock(type));
    return image;
}

inline CameraUpdateFile sampleCameraFile()
{
    CameraUpdateFile file;
    file.newVer = VersionInfo(0x11, 0x12, 0x13);
    file.minVer = VersionInfo(0x21, 0x22, 0x23);
    file.models = {0x0901, 0x0C01};
    file.reserved = {0xE1, 0xE2, 0xE3, 0xE4};
    CameraImage first;
    static_cast<RecordBlock&>(first) = sampleRecords();
    CameraImage second;
    second.text = "second";
    second.records = {QByteArray::fromHex("0a0b")};
    second.newVer = VersionInfo(0x31, 0x32, 0x33);
    second.minVer = VersionInfo(0x41, 0x42, 0x43);
    file.images = {first, second};
    return file;
}
