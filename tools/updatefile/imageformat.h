#pragma once

#include "updatefile.h"

/// @file
/// The numbers and fields of the update file formats; see docs/formats.md.
///
/// The functions below name the fields of each part of a file in their order to a visitor, which
/// reads them (imagescan.cpp), writes them (imagewriter.cpp) or finds where one stands
/// (fieldoffsets.h). A name is the key of the field in a description. A visitor has the functions
/// word(), longWord(), version(), date(), models() and text().
namespace imageformat {

/// First word of a camera update file.
constexpr quint16 cameraFileMagic = 0xD209;
/// First word of an image in a camera update file.
constexpr quint16 cameraImageMagic = 0xA259;

/// First word of a controller update image: it tells layout and model family.
constexpr quint16 controllerMagic(ImageLayout layout, int modelFamily)
{
    const bool dated = layout == ImageLayout::Dated;
    if (modelFamily == briarscopeFamily)
        return dated ? 0xD21A : 0xD20A;
    return dated ? 0xD218 : 0xD208;
}

/// First word of a block in a controller update image.
constexpr quint16 controllerBlockMagic(int modelFamily)
{
    return modelFamily == briarscopeFamily ? 0xA25A : 0xA258;
}

/// Parts of the versions in a block's table entry: only firmware blocks have a patch.
constexpr int versionParts(quint16 blockType)
{
    return blockType == FirmwareBlock ? 3 : 2;
}

/// Longest text before the records of a controller block that readers take.
constexpr int maxBlockTextBytes = 49;
/// Longest text before the records of a camera image that readers take.
constexpr int maxCameraTextBytes = 200;

/// What a controller update image begins with, up to the length of its block table.
template <typename Visitor>
void visitControllerHead(Visitor& fields, ControllerImage& image)
{
    fields.word("magic", image.magic);
    fields.word("reserved1", image.reserved[0]);
    fields.version("release", image.release, 3);
    if (image.layout == ImageLayout::Dated) {
        fields.word("preReleaseType", image.preReleaseType);
        fields.word("preReleaseNumber", image.preReleaseNumber);
        fields.date("releaseDate", image.releaseDate);
        fields.date("minorReleaseDate", image.minorReleaseDate);
    }
    fields.word("reserved2", image.reserved[1]);
    fields.version("newPt", image.newPt, 3);
    fields.version("newCt", image.newCt, 2);
    fields.word("reserved3", image.reserved[2]);
    fields.version("minPt", image.minPt, 3);
    fields.version("minCt", image.minCt, 2);
    fields.word("reserved4", image.reserved[3]);
    fields.word("blockCount", image.blockCount);
}

/// One entry of the block table.
template <typename Visitor>
void visitBlockEntry(Visitor& fields, ControllerImageBlock& block)
{
    fields.word("type", block.type);
    fields.version("minVersion", block.minVer, versionParts(block.type));
    fields.version("maxVersion", block.maxVer, versionParts(block.type));
    fields.longWord("offset", block.offset);
    fields.longWord("length", block.length);
}

/// What a camera update file begins with, up to the length of its image table.
template <typename Visitor>
void visitCameraHead(Visitor& fields, CameraUpdateFile& file)
{
    fields.word("magic", file.magic);
    fields.word("reserved1", file.reserved[0]);
    fields.version("newVersion", file.newVer, 3);
    fields.word("reserved2", file.reserved[1]);
    fields.version("minVersion", file.minVer, 3);
    fields.word("reserved3", file.reserved[2]);
    fields.word("modelCount", file.modelCount);
    fields.models("models", file.models, file.modelCount);
    fields.word("reserved4", file.reserved[3]);
    fields.word("imageCount", file.imageCount);
}

/// One entry of the camera file's image table.
template <typename Visitor>
void visitImageEntry(Visitor& fields, CameraImage& image)
{
    fields.version("newVersion", image.newVer, 3);
    fields.version("minVersion", image.minVer, 3);
    fields.longWord("offset", image.offset);
    fields.longWord("length", image.length);
}

/// What stands before the records of a block or camera image.
template <typename Visitor>
void visitBlockHead(Visitor& fields, RecordBlock& block)
{
    fields.word("magic", block.magic);
    fields.word("textLength", block.textLength);
    fields.text("text", block.text, block.textLength);
    fields.longWord("recordCount", block.recordCount);
    fields.word("maxRecordLength", block.maxRecordLength);
}

} // namespace imageformat
