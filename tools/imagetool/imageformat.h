#pragma once

#include "updatefile.h"

/// @file
/// The numbers of the update file formats, for their writer and their reader; see docs/formats.md.
namespace imageformat {

constexpr quint16 cameraFileMagic = 0xD209;
constexpr quint16 cameraImageMagic = 0xA259;

constexpr quint16 controllerMagic(ImageLayout layout, int modelFamily)
{
    const bool dated = layout == ImageLayout::Dated;
    if (modelFamily == briarscopeFamily)
        return dated ? 0xD21A : 0xD20A;
    return dated ? 0xD218 : 0xD208;
}

constexpr quint16 controllerBlockMagic(int modelFamily)
{
    return modelFamily == briarscopeFamily ? 0xA25A : 0xA258;
}

/// Parts of the versions in a block's table entry: only firmware blocks have a patch.
constexpr int versionParts(quint16 blockType)
{
    return blockType == FirmwareBlock ? 3 : 2;
}

/// The word that stands for a pre-release type in the text of a release; null for a foreign type.
constexpr const char* preReleaseWord(int type)
{
    switch (type) {
    case 10:
        return "alpha";
    case 20:
        return "beta";
    case 30:
        return "rc";
    default:
        return nullptr;
    }
}

constexpr int maxBlockTextBytes = 49;
constexpr int maxCameraTextBytes = 200;

/// Bytes of an entry in the camera file's image table.
constexpr int cameraImageEntryBytes = 20;

} // namespace imageformat
