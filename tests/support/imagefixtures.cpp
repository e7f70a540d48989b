#include "imagefixtures.h"

static void fill(RecordBlock* block)
{
    block->text = QByteArrayLiteral("abc");
    block->records = {QByteArrayLiteral("\x01\x02\x03"), QByteArrayLiteral("\xFF")};
}

ControllerImageBlock firmwareBlock(const VersionInfo& minVer, const VersionInfo& maxVer)
{
    ControllerImageBlock block;
    fill(&block);
    block.type = FirmwareBlock;
    block.minVer = minVer;
    block.maxVer = maxVer;
    return block;
}

ControllerImageBlock systemBlock(const VersionInfo& minVer, const VersionInfo& maxVer)
{
    ControllerImageBlock block = firmwareBlock(minVer, maxVer);
    block.type = SystemBlock;
    return block;
}

ControllerImage releaseImage(const VersionInfo& newPt, const VersionInfo& newCt,
                             const QVector<ControllerImageBlock>& blocks)
{
    ControllerImage image;
    image.release = newPt;
    image.newPt = newPt;
    image.newCt = newCt;
    image.minPt = VersionInfo(0, 0, 0);
    image.minCt = VersionInfo(0, 0);
    image.releaseDate = {2024, 5, 6};
    image.minorReleaseDate = {2024, 1, 2};
    image.blocks = blocks;
    return image;
}

CameraUpdateFile cameraFile(const QVector<quint16>& models, const VersionInfo& newVer,
                            const VersionInfo& minVer)
{
    CameraUpdateFile file;
    file.models = models;
    file.newVer = newVer;
    file.minVer = minVer;
    CameraImage image;
    fill(&image);
    file.images = {image};
    return file;
}
