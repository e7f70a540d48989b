#include "imagewriter.h"

#include "fieldoffsets.h"

#include <QBuffer>
#include <QtEndian>

#include <algorithm>
#include <utility>

namespace {

constexpr int bufferBytes = 256 * 1024;

/// Appends fields to bytes; what is computed must have been filled in before.
class FieldWriter
{
public:
    QByteArray bytes;

    void word(const char* /*name*/, int value)
    {
        char field[2];
        qToLittleEndian(static_cast<quint16>(value), field);
        bytes.append(field, sizeof field);
    }
    void word(const char* name, std::optional<quint16> value) { word(name, value.value_or(0)); }
    void longWord(const char* /*name*/, std::optional<quint32> value)
    {
        char field[4];
        qToLittleEndian(value.value_or(0), field);
        bytes.append(field, sizeof field);
    }
    void version(const char* name, const VersionInfo& version, int parts)
    {
        word(name, version.ma);
        word(name, version.mi);
        if (parts == 3)
            word(name, version.pa);
    }
    void version(const char* name, const std::optional<VersionInfo>& value, int parts)
    {
        version(name, value.value_or(VersionInfo()), parts);
    }
    void date(const char* name, const ImageDate& date)
    {
        for (const int number : {date.year, date.month, date.day})
            word(name, number);
    }
    void models(const char* name, const QVector<quint16>& models, std::optional<quint16> /*count*/)
    {
        for (const quint16 model : models)
            word(name, model);
    }
    void text(const char* /*name*/, const QByteArray& text, std::optional<quint16> /*length*/)
    {
        bytes.append(text);
    }
};

template <typename Integer, typename Value>
void fill(std::optional<Integer>* field, Value value)
{
    if (!*field)
        *field = static_cast<Integer>(value);
}

/// Writes one file, whose blocks are filled in with what is computed.
class FileWriter
{
public:
    FileWriter(QIODevice& device, const WriteProgress& progress)
        : m_device(device), m_progress(progress)
    {
        m_fields.bytes.reserve(bufferBytes + maxRecordBytes + 2);
    }

    void write(ControllerImage image);
    void write(CameraUpdateFile file);
    QString error() const { return m_error; }

private:
    template <typename Block>
    qint64 place(QVector<Block>& blocks, qint64 start, quint16 magic);
    template <typename Block>
    void writeRecords(const QVector<Block>& blocks);
    void writeRecordsOf(const RecordBlock& block);

    /// Collects records to be written in large pieces.
    class Sink : public RecordSink
    {
    public:
        explicit Sink(FileWriter& writer) : m_writer(writer) {}
        bool take(const char* data, int size) override
        {
            return m_writer.append(data, size, static_cast<quint16>(size));
        }

    private:
        FileWriter& m_writer;
    };

    bool append(const char* data, int size, quint16 announced);
    bool flush();

    QIODevice& m_device;
    const WriteProgress& m_progress;
    FieldWriter m_fields;
    qint64 m_done = 0;
    qint64 m_total = 0;
    QString m_error;
};

void FileWriter::write(ControllerImage image)
{
    fill(&image.magic, imageformat::controllerMagic(image.layout, image.modelFamily));
    fill(&image.blockCount, image.blocks.size());
    imageformat::visitControllerHead(m_fields, image);
    qint64 start = m_fields.bytes.size();
    for (const ControllerImageBlock& block : image.blocks)
        start += entryFields(block).size();
    m_total = place(image.blocks, start, imageformat::controllerBlockMagic(image.modelFamily));
    for (ControllerImageBlock& block : image.blocks)
        imageformat::visitBlockEntry(m_fields, block);
    writeRecords(image.blocks);
}

void FileWriter::write(CameraUpdateFile file)
{
    fill(&file.magic, imageformat::cameraFileMagic);
    fill(&file.modelCount, file.models.size());
    fill(&file.imageCount, file.images.size());
    imageformat::visitCameraHead(m_fields, file);
    qint64 start = m_fields.bytes.size();
    for (CameraImage& image : file.images) {
        image.newVer = image.newVer.value_or(file.newVer);
        image.minVer = image.minVer.value_or(file.minVer);
        start += entryFields(image).size();
    }
    m_total = place(file.images, start, imageformat::cameraImageMagic);
    for (CameraImage& image : file.images)
        imageformat::visitImageEntry(m_fields, image);
    writeRecords(file.images);
}

// Fills in what is computed of the blocks, which lie one after the other. Returns their end.
template <typename Block>
qint64 FileWriter::place(QVector<Block>& blocks, qint64 start, quint16 magic)
{
    for (Block& block : blocks) {
        const RecordTotals totals = recordTotals(block);
        fill(&block.magic, magic);
        fill(&block.textLength, block.text.size());
        fill(&block.recordCount, totals.count);
        fill(&block.maxRecordLength, totals.longest);
        const qint64 length = blockFields(block).size() + 2 * totals.count + totals.bytes;
        fill(&block.offset, start);
        fill(&block.length, length);
        start += length;
    }
    return start;
}

template <typename Block>
void FileWriter::writeRecords(const QVector<Block>& blocks)
{
    for (Block block : blocks) {
        imageformat::visitBlockHead(m_fields, block);
        writeRecordsOf(block);
        if (!m_error.isEmpty())
            return;
    }
    flush();
}

void FileWriter::writeRecordsOf(const RecordBlock& block)
{
    if (block.source) {
        Sink sink(*this);
        QString error;
        if (!block.source->feed(sink, &error) && m_error.isEmpty())
            m_error = error;
        return;
    }
    for (const ImageRecord& record : block.records)
        append(record.data.constData(), record.data.size(),
               record.announcedLength.value_or(static_cast<quint16>(record.data.size())));
}

bool FileWriter::append(const char* data, int size, quint16 announced)
{
    m_fields.word("", announced);
    m_fields.bytes.append(data, size);
    return m_fields.bytes.size() < bufferBytes || flush();
}

bool FileWriter::flush()
{
    if (m_error.isEmpty() && m_device.write(m_fields.bytes) != m_fields.bytes.size())
        m_error = m_device.errorString();
    m_done += m_fields.bytes.size();
    m_fields.bytes.resize(0);
    if (m_progress)
        m_progress(m_done, m_total);
    return m_error.isEmpty();
}

QByteArray bytesOf(const UpdateFile& file)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QString error;
    const bool isWritten = writeUpdateFile(file, buffer, {}, &error);
    Q_ASSERT_X(isWritten, "updateFileBytes", qPrintable(error));
    Q_UNUSED(isWritten);
    return buffer.data();
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

RecordTotals recordTotals(const RecordBlock& block)
{
    if (block.source)
        return block.source->totals();
    RecordTotals totals;
    totals.count = block.records.size();
    for (const ImageRecord& record : block.records) {
        totals.bytes += record.data.size();
        totals.longest = std::max(totals.longest, record.data.size());
    }
    return totals;
}

bool writeUpdateFile(const UpdateFile& file, QIODevice& device, const WriteProgress& progress,
                     QString* error)
{
    FileWriter writer(device, progress);
    std::visit([&](const auto& content) { writer.write(content); }, file);
    *error = writer.error();
    return error->isEmpty();
}

QByteArray controllerImageBytes(const ControllerImage& image)
{
    return bytesOf(image);
}

QByteArray cameraUpdateBytes(const CameraUpdateFile& file)
{
    return bytesOf(file);
}

QByteArray updateFileBytes(const UpdateFile& file)
{
    return bytesOf(file);
}
