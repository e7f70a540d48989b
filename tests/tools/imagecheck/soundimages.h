#pragma once

#include <filechecks.h>
#include <imagescan.h>
#include <imagewriter.h>
#include <payload.h>

#include <QBuffer>

/// @file
/// Small update files that break no rule, and what the checks say of files.

inline void setPayload(RecordBlock* block, PayloadComponent component, const VersionInfo& version,
                       const QString& appendix = QString())
{
    block->text = "abc";
    block->records = splitIntoRecords(makePayload({component, version, appendix}, 100, 1), 100);
}

inline ControllerImageBlock firmware(const ControllerImage& image, const VersionInfo& lowest,
                                     const VersionInfo& highest,
                                     const QString& appendix = QString())
{
    ControllerImageBlock block;
    block.type = FirmwareBlock;
    block.minVer = lowest;
    block.maxVer = highest;
    setPayload(&block, PayloadComponent::TrackingSoftware, image.newPt, appendix);
    return block;
}

inline ControllerImageBlock system(const ControllerImage& image, const VersionInfo& lowest,
                                   const VersionInfo& highest)
{
    ControllerImageBlock block;
    block.type = SystemBlock;
    block.minVer = lowest;
    block.maxVer = highest;
    setPayload(&block, PayloadComponent::ControllerFirmware, image.newCt);
    return block;
}

/// A final release of Pt 3.3.0 and Ct 1.4 for Pt from 2.0.0 and Ct from 1.0 on.
inline ControllerImage soundImage(ImageLayout layout = ImageLayout::Dated)
{
    ControllerImage image;
    image.layout = layout;
    image.release = VersionInfo(3, 3, 0);
    image.releaseDate = {2025, 9, 2};
    image.minorReleaseDate = {2025, 9, 30};
    image.newPt = VersionInfo(3, 3, 0);
    image.newCt = VersionInfo(1, 4);
    image.minPt = VersionInfo(2, 0, 0);
    image.minCt = VersionInfo(1, 0);
    image.blocks = {firmware(image, VersionInfo(2, 0, 0), VersionInfo(3, 3, 0)),
                    system(image, VersionInfo(1, 0), VersionInfo(1, 3))};
    return image;
}

/// The same of Pt 3.0.0 and Ct 1.2.
inline ControllerImage soundOlderImage()
{
    ControllerImage image = soundImage();
    image.release = VersionInfo(3, 0, 0);
    image.newPt = VersionInfo(3, 0, 0);
    image.newCt = VersionInfo(1, 2);
    image.blocks = {firmware(image, VersionInfo(2, 0, 0), VersionInfo(3, 0, 0)),
                    system(image, VersionInfo(1, 0), VersionInfo(1, 1))};
    return image;
}

inline CameraUpdateFile soundCameraFile()
{
    CameraUpdateFile file;
    file.newVer = VersionInfo(1, 4, 0);
    file.minVer = VersionInfo(1, 0, 0);
    file.models = {0x0C01};
    CameraImage image;
    setPayload(&image, PayloadComponent::CameraFirmware, file.newVer);
    file.images = {image};
    return file;
}

inline ScannedFile scan(QByteArray bytes)
{
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return scanUpdateFile(device);
}
