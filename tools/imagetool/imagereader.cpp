#include "imagereader.h"

#include "imageformat.h"

#include <QtEndian>

#include <algorithm>

namespace {

QString hex(int value)
{
    return QStringLiteral("0x%1").arg(value, 4, 16, QLatin1Char('0'));
}

/// Reads little-endian fields one after the other. All reads go through take(); after one that the
/// file is too short for, the rest give zeros and the problem stays.
class ByteCursor
{
public:
    ByteCursor(const QByteArray& bytes, qint64 offset) : m_bytes(bytes), m_offset(offset) {}

    bool ok() const { return m_problem.isEmpty(); }
    QString problem() const { return m_problem; }
    qint64 offset() const { return m_offset; }

    QByteArray take(int count, const char* what)
    {
        m_fieldOffset = m_offset;
        if (ok() && m_offset + count <= m_bytes.size()) {
            m_offset += count;
            return m_bytes.mid(static_cast<int>(m_offset) - count, count);
        }
        fail(QStringLiteral("the file ends within the %1").arg(QLatin1String(what)));
        return {count, '\0'};
    }

    quint16 word(const char* what) { return qFromLittleEndian<quint16>(take(2, what).constData()); }

    quint32 longWord(const char* what)
    {
        return qFromLittleEndian<quint32>(take(4, what).constData());
    }

    VersionInfo version(int parts, const char* what)
    {
        const int ma = word(what);
        const int mi = word(what);
        return {ma, mi, parts == 3 ? word(what) : -1};
    }

    ImageDate date(const char* what)
    {
        const int year = word(what);
        const int month = word(what);
        return {year, month, word(what)};
    }

    /// Notes a problem of the field read last, unless there is one already.
    void fail(const QString& reason)
    {
        if (ok())
            m_problem = QStringLiteral("offset %1: %2").arg(m_fieldOffset).arg(reason);
    }

private:
    const QByteArray& m_bytes;
    qint64 m_offset;
    qint64 m_fieldOffset = 0;
    QString m_problem;
};

/// What the records of a block have to look like.
struct RecordBlockRules
{
    quint16 magic;
    int maxTextBytes;
};

void readRecord(ByteCursor& cursor, RecordBlock* block)
{
    const int length = cursor.word("length of a record");
    const int limit = std::min<int>(*block->maxRecordLength, maxRecordBytes);
    if (length > limit)
        cursor.fail(QStringLiteral("record %1 announces %2 bytes, more than %3")
                        .arg(block->records.size() + 1)
                        .arg(length)
                        .arg(limit));
    const QByteArray data = cursor.take(length, "data of a record");
    if (cursor.ok())
        block->records.append(data);
}

void readRecordBlock(ByteCursor& cursor, const RecordBlockRules& rules, RecordBlock* block)
{
    const quint16 magic = cursor.word("block magic");
    block->magic = magic;
    if (magic != rules.magic)
        cursor.fail(QStringLiteral("block magic is %1, not %2").arg(hex(magic), hex(rules.magic)));
    const int textLength = cursor.word("text length");
    if (textLength > rules.maxTextBytes)
        cursor.fail(QStringLiteral("text announces %1 bytes, more than %2")
                        .arg(textLength)
                        .arg(rules.maxTextBytes));
    block->text = cursor.take(textLength, "text");
    const quint32 count = cursor.longWord("number of records");
    block->recordCount = count;
    if (count == 0 || count > quint32(std::numeric_limits<qint32>::max()))
        cursor.fail(QStringLiteral("the number of records is %1").arg(static_cast<qint32>(count)));
    block->maxRecordLength = cursor.word("maximum record length");
    for (quint32 index = 0; index < count && cursor.ok(); ++index)
        readRecord(cursor, block);
}

/// Reads one file and gathers what is wrong with it.
class FileReader
{
public:
    explicit FileReader(const QByteArray& bytes) : m_bytes(bytes), m_cursor(bytes, 0) {}

    ReadUpdateFile read();

private:
    ControllerImage readController(quint16 magic, ImageLayout layout, int modelFamily);
    void readControllerVersions(ControllerImage* image);
    ControllerImageBlock readBlockEntry();
    void readBlock(int index, int modelFamily, ControllerImageBlock* block);
    CameraUpdateFile readCamera();
    void readCameraVersions(CameraUpdateFile* file);
    CameraImage readImageEntry();
    void readImage(int index, ByteCursor& cursor, CameraImage* image);
    void finishBlock(const QString& place, const ByteCursor& cursor, const RecordBlock& block,
                     qint64 start);
    void noteProblem(const QString& place, const QString& problem);

    const QByteArray& m_bytes;
    ByteCursor m_cursor;
    QStringList m_problems;
    qint64 m_blockBytes = 0;
    bool m_isOverlapping = false;
};

ReadUpdateFile FileReader::read()
{
    const quint16 magic = m_cursor.word("magic");
    std::optional<UpdateFile> file;
    for (const ImageLayout layout : {ImageLayout::Plain, ImageLayout::Dated}) {
        for (const int family : {0, briarscopeFamily}) {
            if (magic == imageformat::controllerMagic(layout, family))
                file = readController(magic, layout, family);
        }
    }
    if (magic == imageformat::cameraFileMagic)
        file = readCamera();
    if (!file)
        m_cursor.fail(QStringLiteral("%1 is not the magic of an update file").arg(hex(magic)));
    if (!m_cursor.ok())
        return {std::nullopt, {m_cursor.problem()}};
    return {file, m_problems};
}

ControllerImage FileReader::readController(quint16 magic, ImageLayout layout, int modelFamily)
{
    ControllerImage image;
    image.magic = magic;
    image.layout = layout;
    image.modelFamily = modelFamily;
    readControllerVersions(&image);

    const int count = m_cursor.word("number of blocks");
    image.blockCount = static_cast<quint16>(count);
    if (count == 0)
        m_problems.append(QStringLiteral("there are no blocks"));
    while (image.blocks.size() < count && m_cursor.ok())
        image.blocks.append(readBlockEntry());
    for (int index = 0; index < count && m_cursor.ok() && !m_isOverlapping; ++index)
        readBlock(index, modelFamily, &image.blocks[index]);
    return image;
}

void FileReader::readControllerVersions(ControllerImage* image)
{
    image->reserved[0] = m_cursor.word("first reserved word");
    image->release = m_cursor.version(3, "release version");
    if (image->layout == ImageLayout::Dated) {
        image->preReleaseType = m_cursor.word("pre-release type");
        image->preReleaseNumber = m_cursor.word("pre-release number");
        image->releaseDate = m_cursor.date("release date");
        image->minorReleaseDate = m_cursor.date("minor-release date");
    }
    image->reserved[1] = m_cursor.word("second reserved word");
    image->newPt = m_cursor.version(3, "new Pt");
    image->newCt = m_cursor.version(2, "new Ct");
    image->reserved[2] = m_cursor.word("third reserved word");
    image->minPt = m_cursor.version(3, "minimum Pt");
    image->minCt = m_cursor.version(2, "minimum Ct");
    image->reserved[3] = m_cursor.word("fourth reserved word");
}

ControllerImageBlock FileReader::readBlockEntry()
{
    ControllerImageBlock block;
    block.type = m_cursor.word("block table");
    const int parts = imageformat::versionParts(block.type);
    block.minVer = m_cursor.version(parts, "block table");
    block.maxVer = m_cursor.version(parts, "block table");
    block.offset = m_cursor.longWord("block table");
    block.length = m_cursor.longWord("block table");
    return block;
}

void FileReader::readBlock(int index, int modelFamily, ControllerImageBlock* block)
{
    const QString place = QStringLiteral("blocks[%1]").arg(index);
    if (block->type != FirmwareBlock && block->type != SystemBlock)
        noteProblem(place, QStringLiteral("type %1 is unknown").arg(block->type));
    if (block->minVer > block->maxVer)
        noteProblem(place, QStringLiteral("the lowest version is above the highest"));

    ByteCursor cursor(m_bytes, *block->offset);
    readRecordBlock(
        cursor, {imageformat::controllerBlockMagic(modelFamily), imageformat::maxBlockTextBytes},
        block);
    finishBlock(place, cursor, *block, *block->offset);
}

CameraUpdateFile FileReader::readCamera()
{
    CameraUpdateFile file;
    file.magic = imageformat::cameraFileMagic;
    readCameraVersions(&file);

    const int count = m_cursor.word("number of images");
    file.imageCount = static_cast<quint16>(count);
    if (count == 0)
        m_problems.append(QStringLiteral("there are no images"));
    while (file.images.size() < count && m_cursor.ok())
        file.images.append(readImageEntry());
    ByteCursor cursor(m_bytes, m_cursor.offset());
    for (int index = 0; index < count && m_cursor.ok() && cursor.ok(); ++index)
        readImage(index, cursor, &file.images[index]);
    return file;
}

void FileReader::readCameraVersions(CameraUpdateFile* file)
{
    file->reserved[0] = m_cursor.word("first reserved word");
    file->newVer = m_cursor.version(3, "new version");
    file->reserved[1] = m_cursor.word("second reserved word");
    file->minVer = m_cursor.version(3, "minimum version");
    file->reserved[2] = m_cursor.word("third reserved word");
    const int count = m_cursor.word("number of models");
    file->modelCount = static_cast<quint16>(count);
    if (count == 0)
        m_problems.append(QStringLiteral("there are no models"));
    while (file->models.size() < count && m_cursor.ok())
        file->models.append(m_cursor.word("list of models"));
    file->reserved[3] = m_cursor.word("fourth reserved word");
}

CameraImage FileReader::readImageEntry()
{
    CameraImage image;
    image.newVer = m_cursor.version(3, "image table");
    image.minVer = m_cursor.version(3, "image table");
    image.offset = m_cursor.longWord("image table");
    image.length = m_cursor.longWord("image table");
    return image;
}

// Images lie back to back; devices' readers never look at the offsets in the table.
void FileReader::readImage(int index, ByteCursor& cursor, CameraImage* image)
{
    const QString place = QStringLiteral("images[%1]").arg(index);
    const qint64 start = cursor.offset();
    if (*image->offset != start)
        noteProblem(place, QStringLiteral("the table says offset %1, the image lies at %2")
                               .arg(*image->offset)
                               .arg(start));
    readRecordBlock(cursor, {imageformat::cameraImageMagic, imageformat::maxCameraTextBytes},
                    image);
    finishBlock(place, cursor, *image, start);
}

// Blocks of one file that together are longer than it would fill the memory in the worst case.
void FileReader::finishBlock(const QString& place, const ByteCursor& cursor,
                             const RecordBlock& block, qint64 start)
{
    const qint64 length = cursor.offset() - start;
    m_blockBytes += length;
    m_isOverlapping = m_blockBytes > m_bytes.size();
    if (!cursor.ok())
        noteProblem(place, cursor.problem());
    else if (m_isOverlapping)
        noteProblem(place, QStringLiteral("overlaps another block; the rest is not read"));
    else if (*block.length != length)
        noteProblem(
            place,
            QStringLiteral("the table says %1 bytes, there are %2").arg(*block.length).arg(length));
}

void FileReader::noteProblem(const QString& place, const QString& problem)
{
    m_problems.append(QStringLiteral("%1: %2").arg(place, problem));
}

} // namespace

ReadUpdateFile readUpdateFile(const QByteArray& bytes)
{
    return FileReader(bytes).read();
}
