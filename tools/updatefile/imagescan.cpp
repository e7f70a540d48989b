#include "imagescan.h"

#include "fieldoffsets.h"
#include "scanbuffer.h"

#include <QMap>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace {

constexpr int recordsBetweenProgress = 8192;

QString hex(int value)
{
    return QStringLiteral("0x%1").arg(value, 4, 16, QLatin1Char('0'));
}

QString bytesText(qint64 count)
{
    return count == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(count);
}

/// Reads the fields of a part one after the other. After one that the file is too short for, the
/// rest are zero and the finding stays.
class FieldReader
{
public:
    FieldReader(ScanBuffer& buffer, QString prefix) : m_buffer(buffer), m_prefix(std::move(prefix))
    {
    }

    bool ok() const { return !m_finding; }
    const std::optional<RuleFinding>& finding() const { return m_finding; }

    const char* take(const QString& name, int count)
    {
        m_offset = m_buffer.offset();
        const char* bytes = ok() ? m_buffer.take(count) : nullptr;
        if (!bytes)
            fail({Rule::CutShort, name, QStringLiteral("cut off by the end of the file"),
                  bytesText(count)});
        return bytes;
    }

    /// Notes what is wrong with the field read last, unless something was before.
    void fail(RuleFinding finding)
    {
        if (!ok())
            return;
        finding.field.prepend(m_prefix);
        finding.offset = m_offset;
        m_finding = finding;
    }

    template <typename Value>
    void word(const char* name, Value& value)
    {
        value = static_cast<quint16>(number(name));
    }
    void longWord(const char* name, std::optional<quint32>& value)
    {
        const char* bytes = take(name, 4);
        value = bytes ? qFromLittleEndian<quint32>(bytes) : 0;
    }
    template <typename Version>
    void version(const char* name, Version& value, int parts)
    {
        const char* bytes = take(name, 2 * parts);
        int numbers[3] = {0, 0, -1};
        for (int index = 0; bytes && index < parts; ++index, bytes += 2)
            numbers[index] = qFromLittleEndian<quint16>(bytes);
        value = VersionInfo(numbers[0], numbers[1], numbers[2]);
    }
    void date(const char* name, ImageDate& date)
    {
        if (const char* bytes = take(name, 6))
            date = {qFromLittleEndian<quint16>(bytes), qFromLittleEndian<quint16>(bytes + 2),
                    qFromLittleEndian<quint16>(bytes + 4)};
    }
    void models(const char* name, QVector<quint16>& models, std::optional<quint16> count)
    {
        while (models.size() < count.value_or(0) && ok())
            models.append(
                number(QStringLiteral("%1[%2]").arg(QLatin1String(name)).arg(models.size())));
    }
    void text(const char* name, QByteArray& text, std::optional<quint16> length)
    {
        if (const char* bytes = take(name, length.value_or(0)))
            text = QByteArray(bytes, length.value_or(0));
    }

private:
    quint16 number(const QString& name)
    {
        const char* bytes = take(name, 2);
        return bytes ? qFromLittleEndian<quint16>(bytes) : 0;
    }

    ScanBuffer& m_buffer;
    QString m_prefix;
    qint64 m_offset = 0;
    std::optional<RuleFinding> m_finding;
};

/// What the head of a block or camera image has to be.
struct BlockRules
{
    quint16 magic;
    int maxTextBytes;
};

/// Reads the head of a block, and finds at once what its readers do not get over.
class BlockHeadReader : public FieldReader
{
public:
    BlockHeadReader(ScanBuffer& buffer, const QString& prefix, const BlockRules& rules)
        : FieldReader(buffer, prefix), m_rules(rules)
    {
    }

    void word(const char* name, std::optional<quint16>& value)
    {
        FieldReader::word(name, value);
        if (name == QLatin1String("magic") && *value != m_rules.magic)
            fail({Rule::BlockMagic, name, hex(*value), hex(m_rules.magic)});
        if (name == QLatin1String("textLength") && *value > m_rules.maxTextBytes)
            fail({Rule::TextLength, name, QString::number(*value),
                  QStringLiteral("at most %1").arg(m_rules.maxTextBytes)});
    }
    void longWord(const char* name, std::optional<quint32>& value)
    {
        FieldReader::longWord(name, value);
        const auto number = static_cast<qint32>(*value); // as its readers see it
        if (number <= 0)
            fail({Rule::EmptyBlock, name, QString::number(number), QStringLiteral("at least 1")});
    }

private:
    const BlockRules m_rules;
};

/// Reads one file.
class FileScanner
{
public:
    FileScanner(QIODevice& device, const ScanEvents& events) : m_buffer(device), m_events(events) {}

    ScannedFile scan();

private:
    std::optional<UpdateFile> readFile();
    ControllerImage readController(ImageLayout layout, int modelFamily);
    CameraUpdateFile readCamera();
    template <typename Part>
    void readTable(QVector<Part>& parts, int count, const char* name,
                   void (*visit)(FieldReader&, Part&));
    void readBlock(int index, int modelFamily, ControllerImageBlock* block);
    void readImage(int index, qint64 start, CameraImage* image);
    void readContent(int index, const QString& prefix, const BlockRules& rules, RecordBlock* block);
    std::optional<RuleFinding> readRecords(int index, const QString& prefix,
                                           const RecordBlock& block);
    std::optional<RuleFinding> readRecord(int index, int limit, RecordTotals* totals,
                                          PayloadVerifier* verifier);
    void showProgress(qint64 start) const;
    void checkLength(int index, const QString& prefix, qint64 lengthOffset,
                     const RecordBlock& block);
    std::optional<RuleFinding> whatIsThere(const QString& prefix, qint64 start) const;
    qint64 endOfRoom(qint64 start) const;
    void note(const RuleFinding& finding) { m_result.findings.append(finding); }

    ScanBuffer m_buffer;
    const ScanEvents& m_events;
    ScannedFile m_result;
    QVector<qint64> m_entryOffsets; // of the entries of the block or image table
    QMap<qint64, int> m_blockAt;    // the blocks read so far, by where they start
    qint64 m_bytesRead = 0;         // of all blocks read so far
};

ScannedFile FileScanner::scan()
{
    m_result.size = m_buffer.size();
    m_result.file = readFile();
    m_result.error = m_buffer.error();
    return m_result;
}

std::optional<UpdateFile> FileScanner::readFile()
{
    FieldReader fields(m_buffer, QString());
    quint16 magic = 0;
    fields.word("magic", magic);
    if (!fields.ok()) {
        note(*fields.finding());
        return std::nullopt;
    }
    std::optional<UpdateFile> file;
    for (const ImageLayout layout : {ImageLayout::Plain, ImageLayout::Dated}) {
        for (const int family : {0, briarscopeFamily}) {
            if (magic == imageformat::controllerMagic(layout, family))
                file = readController(layout, family);
        }
    }
    if (magic == imageformat::cameraFileMagic)
        file = readCamera();
    if (!file)
        note({Rule::Magic, QStringLiteral("magic"), hex(magic),
              QStringLiteral("that of an update file"), 0});
    // A table that is cut off leaves nothing that readers would use.
    const bool isCut = m_result.contents.isEmpty() && !m_result.findings.isEmpty() &&
                       m_result.findings.first().rule == Rule::CutShort;
    return isCut ? std::nullopt : file;
}

ControllerImage FileScanner::readController(ImageLayout layout, int modelFamily)
{
    ControllerImage image;
    image.layout = layout;
    image.modelFamily = modelFamily;
    m_buffer.seek(0);
    FieldReader fields(m_buffer, QString());
    imageformat::visitControllerHead(fields, image);
    if (!fields.ok()) {
        note(*fields.finding());
        return image;
    }
    if (*image.blockCount == 0)
        note({Rule::NoBlocks, QStringLiteral("blockCount"), QStringLiteral("0"),
              QStringLiteral("at least 1"), headOffset(image, QStringLiteral("blockCount"))});
    readTable(image.blocks, *image.blockCount, "blocks", imageformat::visitBlockEntry<FieldReader>);
    for (int index = 0; index < m_result.contents.size(); ++index)
        readBlock(index, modelFamily, &image.blocks[index]);
    return image;
}

CameraUpdateFile FileScanner::readCamera()
{
    CameraUpdateFile file;
    m_buffer.seek(0);
    FieldReader fields(m_buffer, QString());
    imageformat::visitCameraHead(fields, file);
    if (!fields.ok()) {
        note(*fields.finding());
        return file;
    }
    if (*file.modelCount == 0)
        note({Rule::NoModels, QStringLiteral("modelCount"), QStringLiteral("0"),
              QStringLiteral("at least 1"), headOffset(file, QStringLiteral("modelCount"))});
    if (*file.imageCount == 0)
        note({Rule::NoImages, QStringLiteral("imageCount"), QStringLiteral("0"),
              QStringLiteral("at least 1"), headOffset(file, QStringLiteral("imageCount"))});
    readTable(file.images, *file.imageCount, "images", imageformat::visitImageEntry<FieldReader>);
    // Images lie back to back; devices' readers never look at the offsets in the table.
    qint64 start = m_buffer.offset();
    for (int index = 0; index < m_result.contents.size(); ++index) {
        readImage(index, start, &file.images[index]);
        if (!m_result.contents[index].isComplete)
            break;
        start = m_result.contents[index].end;
    }
    return file;
}

// Sets one content for each part, or none at all if the file ends within the table.
template <typename Part>
void FileScanner::readTable(QVector<Part>& parts, int count, const char* name,
                            void (*visit)(FieldReader&, Part&))
{
    while (parts.size() < count) {
        const QString prefix = QStringLiteral("%1[%2].").arg(QLatin1String(name)).arg(parts.size());
        m_entryOffsets.append(m_buffer.offset());
        FieldReader fields(m_buffer, prefix);
        Part part;
        visit(fields, part);
        if (!fields.ok()) {
            m_result.findings.prepend(*fields.finding());
            return;
        }
        parts.append(part);
    }
    m_result.contents.resize(count);
}

void FileScanner::readBlock(int index, int modelFamily, ControllerImageBlock* block)
{
    const QString prefix = QStringLiteral("blocks[%1].").arg(index);
    const auto entryOffset = [&](const char* name) {
        return m_entryOffsets[index] + entryFields(*block, QLatin1String(name)).offset();
    };
    if (block->type != FirmwareBlock && block->type != SystemBlock)
        note({Rule::BlockType, prefix + QStringLiteral("type"), QString::number(block->type),
              QStringLiteral("1 (firmware) or 2 (system)"), entryOffset("type")});

    ScannedContent& content = m_result.contents[index];
    content.start = *block->offset;
    content.end = content.start;
    if (auto finding = whatIsThere(prefix, content.start)) {
        finding->offset = entryOffset("offset");
        note(*finding);
        return;
    }
    m_blockAt.insert(content.start, index);
    readContent(index, prefix,
                {imageformat::controllerBlockMagic(modelFamily), imageformat::maxBlockTextBytes},
                block);
    checkLength(index, prefix, entryOffset("length"), *block);
}

void FileScanner::readImage(int index, qint64 start, CameraImage* image)
{
    const QString prefix = QStringLiteral("images[%1].").arg(index);
    const qint64 entry = m_entryOffsets[index];
    ScannedContent& content = m_result.contents[index];
    content.start = start;
    if (*image->offset != start)
        note({Rule::ImageOffset, prefix + QStringLiteral("offset"), QString::number(*image->offset),
              QString::number(start),
              entry + entryFields(*image, QStringLiteral("offset")).offset()});
    readContent(index, prefix, {imageformat::cameraImageMagic, imageformat::maxCameraTextBytes},
                image);
    checkLength(index, prefix, entry + entryFields(*image, QStringLiteral("length")).offset(),
                *image);
}

void FileScanner::readContent(int index, const QString& prefix, const BlockRules& rules,
                              RecordBlock* block)
{
    ScannedContent& content = m_result.contents[index];
    m_buffer.seek(content.start);
    BlockHeadReader fields(m_buffer, prefix, rules);
    imageformat::visitBlockHead(fields, *block);
    if (fields.ok() && *block->maxRecordLength > maxRecordBytes)
        note({Rule::RecordLength, prefix + QStringLiteral("maxRecordLength"),
              QString::number(*block->maxRecordLength),
              QStringLiteral("at most %1").arg(maxRecordBytes), m_buffer.offset() - 2});
    const std::optional<RuleFinding> finding =
        fields.ok() ? readRecords(index, prefix, *block) : fields.finding();
    content.end = m_buffer.offset();
    content.isComplete = !finding;
    m_bytesRead += content.end - content.start;
    if (finding)
        note(*finding);
}

std::optional<RuleFinding> FileScanner::readRecords(int index, const QString& prefix,
                                                    const RecordBlock& block)
{
    ScannedContent& content = m_result.contents[index];
    RecordTotals& totals = content.totals;
    const int limit = std::min<int>(*block.maxRecordLength, maxRecordBytes);
    const qint64 end = endOfRoom(content.start);
    PayloadVerifier verifier;
    std::optional<RuleFinding> finding;
    while (totals.count < *block.recordCount && !finding) {
        // The next block belongs to nobody else; a file may end, which the record will find.
        if (m_buffer.offset() >= end && end < m_result.size)
            finding = RuleFinding{Rule::Overlap, QString(), QStringLiteral("in the next block"),
                                  QStringLiteral("to end before it"), m_buffer.offset()};
        else
            finding = readRecord(index, limit, &totals, &verifier);
        if (totals.count % recordsBetweenProgress == 0)
            showProgress(content.start);
    }
    if (!finding && m_buffer.offset() > end)
        finding =
            RuleFinding{Rule::Overlap, QString(), QStringLiteral("reaching into the next block"),
                        QStringLiteral("to end before it"), end};
    if (finding) {
        finding->field = prefix + QStringLiteral("records[%1]").arg(totals.count);
        return finding;
    }
    content.isPayload = verifier.isPayload();
    if (content.isPayload)
        content.payload = verifier.finish(&content.payloadDamage);
    return std::nullopt;
}

std::optional<RuleFinding> FileScanner::readRecord(int index, int limit, RecordTotals* totals,
                                                   PayloadVerifier* verifier)
{
    const qint64 offset = m_buffer.offset();
    const char* lengthBytes = m_buffer.take(2);
    const int length = lengthBytes ? qFromLittleEndian<quint16>(lengthBytes) : 0;
    if (length > limit)
        return RuleFinding{Rule::RecordLength, QString(),
                           bytesText(length) + QStringLiteral(" long"),
                           QStringLiteral("at most %1").arg(limit), offset};
    const char* data = lengthBytes ? m_buffer.take(length) : nullptr;
    if (!data)
        return RuleFinding{Rule::CutShort, QString(),
                           QStringLiteral("cut off by the end of the file"),
                           lengthBytes ? bytesText(length) : QStringLiteral("a record"), offset};
    ++totals->count;
    totals->bytes += length;
    totals->longest = std::max(totals->longest, length);
    verifier->add(data, length);
    if (m_events.record)
        m_events.record(index, data, length);
    return std::nullopt;
}

void FileScanner::showProgress(qint64 start) const
{
    if (m_events.progress)
        m_events.progress(m_bytesRead + m_buffer.offset() - start, m_result.size);
}

void FileScanner::checkLength(int index, const QString& prefix, qint64 lengthOffset,
                              const RecordBlock& block)
{
    const ScannedContent& content = m_result.contents[index];
    const qint64 length = content.end - content.start;
    if (content.isComplete && *block.length != length)
        note({Rule::RecordCount, prefix + QStringLiteral("length"), QString::number(*block.length),
              QStringLiteral("the %1 of its head and %2 records")
                  .arg(bytesText(length))
                  .arg(content.totals.count),
              lengthOffset});
}

// The finding if the place of a block is taken: read twice, blocks could make any file endless.
std::optional<RuleFinding> FileScanner::whatIsThere(const QString& prefix, qint64 start) const
{
    auto other = m_blockAt.upperBound(start);
    if (other == m_blockAt.begin())
        return std::nullopt;
    --other;
    const ScannedContent& content = m_result.contents[other.value()];
    const QString name = QStringLiteral("blocks[%1]").arg(other.value());
    const QString field = prefix + QStringLiteral("offset");
    if (content.start == start)
        return RuleFinding{Rule::BlockTwice, field, QString::number(start),
                           QStringLiteral("another place than that of %1").arg(name)};
    if (start < content.end)
        return RuleFinding{
            Rule::Overlap, field, QString::number(start),
            QStringLiteral("a place outside of %1, which ends at %2").arg(name).arg(content.end)};
    return std::nullopt;
}

// Where the next of the blocks begins that have been read already.
qint64 FileScanner::endOfRoom(qint64 start) const
{
    const auto next = m_blockAt.upperBound(start);
    return next == m_blockAt.end() ? m_result.size : next.key();
}

} // namespace

ScannedFile scanUpdateFile(QIODevice& device, const ScanEvents& events)
{
    return FileScanner(device, events).scan();
}
