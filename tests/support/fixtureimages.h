#pragma once

#include <imagefixtures.h>

/// @file
/// Blocks of images for tests of runs, where it matters what goes out.

/// A record of one byte below 64: 0 goes out as AA, 1 as BA, 2 as CA.
ImageRecord shortRecord(int value);

/// @p count records of one byte, all of them zero.
QVector<ImageRecord> shortRecords(int count);

/// A block that applies to every version. The two records that it has unless others are given go
/// out as BIwA and /D.
ControllerImageBlock blockOf(quint16 type, const QVector<ImageRecord>& records = {});

/// A block that applies to the versions from @p from up to the next minor one.
ControllerImageBlock blockFrom(const VersionInfo& from, quint16 type,
                               const QVector<ImageRecord>& records = {});
