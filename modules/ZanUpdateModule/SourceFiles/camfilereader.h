#pragma once

#include "globaldefines.h"

#include <VersionInfo>

#include <QStringList>
#include <QtGlobal>

#include <cstdio>

class LittleEndianReader;

/// @file
/// Reads camera update files from their start to their end; docs/formats.md describes them. Every
/// function returns 0, or the failure code of the first field that is missing or wrong.

/// What stands in front of the image table.
struct CamFileHead
{
    VersionInfo newVer;    ///< version that the file brings
    VersionInfo minVer;    ///< lowest version that it can be applied to
    QStringList camModels; ///< model codes in the form 0x0c01
};

/// The file is of another kind: the one failure that is not a read failure.
inline constexpr int CAM_FILE_WRONG_MAGIC = -3;

/// Reads up to the model codes: -2 to -14. What was complete before a failure stands in @p head.
int readCamFileHead(LittleEndianReader& reader, CamFileHead* head);

/// Reads from there to the end of the image table: -15 to -21.
int readCamImageTable(LittleEndianReader& reader, int* imageCount);

/// Both, from the start of @p stream to its first image, without what the head says: -2 to -21.
int readCamFileUpToImages(FILE* stream, int* imageCount);

/// Reads from the start of an image to its first record: -101 to -106.
int readCamImageHead(LittleEndianReader& reader, quint32* recordCount);

/// Reads the next record: -107, -108. A record that is too long counts as a short one.
int readCamRecord(LittleEndianReader& reader, UpdateRecord* record);
