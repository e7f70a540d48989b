#include "imagewriter.h"

#include "imageformat.h"

#include <QtEndian>

#include <algorithm>
#include <initializer_list>

namespace {

void appendWord(QByteArray* bytes, int value)
{
    char field[2];
    qToLittleEndian(static_cast<quint16>(value), field);
    bytes->append(field, sizeof field);
}

void appendWords(QByteArray* bytes, std::initializer_list<int> values)
{
    for (const int value : values)
        appendWord(bytes, value);
}

void appendLong(QByteArray* bytes, quint32 value)
{
    char field[4];
    qToLittleEndian(value, field);
    bytes->append(field, sizeof field);
}

void appendVersion(QByteArray* bytes, const VersionInfo& version, int parts)
{
    appendWords(bytes, {version.ma, version.mi});
    if (parts == 3)
        appendWord(bytes, version.pa);
}

void appendDate(QByteArray* bytes, const ImageDate& date)
{
    appendWords(bytes, {date.year, date.month, date.day});
}

QByteArray recordBlockBytes(const RecordBlock& block, quint16 magic)
{
    QByteArray bytes;
    appendWord(&bytes, block.magic.value_or(magic));
    appendWord(&bytes, block.textLength.value_or(static_cast<quint16>(block.text.size())));
    bytes.append(block.text);
    appendLong(&bytes, block.recordCount.value_or(static_cast<quint32>(block.records.size())));
    appendWord(&bytes,
               block.maxRecordLength.value_or(static_cast<quint16>(longestRecord(block.records))));
    for (const ImageRecord& record : block.records) {
        appendWord(&bytes,
                   record.announcedLength.value_or(static_cast<quint16>(record.data.size())));
        bytes.append(record.data);
    }
    return bytes;
}

// Where the block lies: the last two fields of its entry in either table.
void appendExtent(QByteArray* table, const RecordBlock& block, int offset, int length)
{
    appendLong(table, block.offset.value_or(static_cast<quint32>(offset)));
    appendLong(table, block.length.value_or(static_cast<quint32>(length)));
}

QByteArray controllerHeader(const ControllerImage& image)
{
    QByteArray header;
    appendWord(&header,
               image.magic.value_or(imageformat::controllerMagic(image.layout, image.modelFamily)));
    appendWord(&header, image.reserved[0]);
    appendVersion(&header, image.release, 3);
    if (image.layout == ImageLayout::Dated) {
        appendWords(&header, {image.preReleaseType, image.preReleaseNumber});
        appendDate(&header, image.releaseDate);
        appendDate(&header, image.minorReleaseDate);
    }
    appendWord(&header, image.reserved[1]);
    appendVersion(&header, image.newPt, 3);
    appendVersion(&header, image.newCt, 2);
    appendWord(&header, image.reserved[2]);
    appendVersion(&header, image.minPt, 3);
    appendVersion(&header, image.minCt, 2);
    appendWord(&header, image.reserved[3]);
    appendWord(&header, image.blockCount.value_or(static_cast<quint16>(image.blocks.size())));
    return header;
}

int blockEntryBytes(const ControllerImageBlock& block)
{
    return 2 + 2 * 2 * imageformat::versionParts(block.type) + 2 * 4;
}

QByteArray cameraHeader(const CameraUpdateFile& file)
{
    QByteArray header;
    appendWord(&header, file.magic.value_or(imageformat::cameraFileMagic));
    appendWord(&header, file.reserved[0]);
    appendVersion(&header, file.newVer, 3);
    appendWord(&header, file.reserved[1]);
    appendVersion(&header, file.minVer, 3);
    appendWord(&header, file.reserved[2]);
    appendWord(&header, file.modelCount.value_or(static_cast<quint16>(file.models.size())));
    for (const quint16 model : file.models)
        appendWord(&header, model);
    appendWord(&header, file.reserved[3]);
    appendWord(&header, file.imageCount.value_or(static_cast<quint16>(file.images.size())));
    return header;
}

} // namespace

QVector<ImageRecord> splitIntoRecords(const QByteArray& payload, int recordLength)
{
    QVector<ImageRecord> records;
    records.reserve((payload.size() + recordLength - 1) / recordLength);
    for (int start = 0; start < payload.size(); start += recordLength)
        records.append(payload.mid(start, recordLength));
    return records;
}

QByteArray joinRecords(const QVector<ImageRecord>& records)
{
    QByteArray payload;
    for (const ImageRecord& record : records)
        payload.append(record.data);
    return payload;
}

int longestRecord(const QVector<ImageRecord>& records)
{
    int longest = 0;
    for (const ImageRecord& record : records)
        longest = std::max(longest, record.data.size());
    return longest;
}

QByteArray controllerImageBytes(const ControllerImage& image)
{
    QByteArray bytes = controllerHeader(image);
    int blocksStart = bytes.size();
    for (const ControllerImageBlock& block : image.blocks)
        blocksStart += blockEntryBytes(block);

    QByteArray blocks;
    for (const ControllerImageBlock& block : image.blocks) {
        const QByteArray body =
            recordBlockBytes(block, imageformat::controllerBlockMagic(image.modelFamily));
        const int parts = imageformat::versionParts(block.type);
        appendWord(&bytes, block.type);
        appendVersion(&bytes, block.minVer, parts);
        appendVersion(&bytes, block.maxVer, parts);
        appendExtent(&bytes, block, blocksStart + blocks.size(), body.size());
        blocks.append(body);
    }
    return bytes + blocks;
}

QByteArray cameraUpdateBytes(const CameraUpdateFile& file)
{
    QByteArray bytes = cameraHeader(file);
    const int imagesStart = bytes.size() + file.images.size() * imageformat::cameraImageEntryBytes;

    QByteArray images;
    for (const CameraImage& image : file.images) {
        const QByteArray body = recordBlockBytes(image, imageformat::cameraImageMagic);
        appendVersion(&bytes, image.newVer.value_or(file.newVer), 3);
        appendVersion(&bytes, image.minVer.value_or(file.minVer), 3);
        appendExtent(&bytes, image, imagesStart + images.size(), body.size());
        images.append(body);
    }
    return bytes + images;
}

QByteArray updateFileBytes(const UpdateFile& file)
{
    if (const auto* image = std::get_if<ControllerImage>(&file))
        return controllerImageBytes(*image);
    return cameraUpdateBytes(std::get<CameraUpdateFile>(file));
}
