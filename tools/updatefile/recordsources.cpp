#include "recordsources.h"

#include "imagescan.h"

#include <failure.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr int recordsInBuffer = 2048;

bool openRegularFile(QFile& file, QString* error)
{
    if (QFileInfo::exists(file.fileName()) && !QFileInfo(file.fileName()).isFile())
        return fail(QStringLiteral("%1: is no regular file").arg(file.fileName()), error);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
           fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()), error);
}

QString changed(const QString& path)
{
    return QStringLiteral("%1: the file changed while it was read").arg(path);
}

RecordTotals totalsOf(qint64 bytes, int recordLength)
{
    return {(bytes + recordLength - 1) / recordLength, bytes,
            static_cast<int>(std::min<qint64>(bytes, recordLength))};
}

class FileRecords : public RecordSource
{
public:
    FileRecords(QString path, qint64 bytes, int recordLength)
        : m_path(std::move(path)), m_totals(totalsOf(bytes, recordLength)),
          m_recordLength(recordLength)
    {
    }

    RecordTotals totals() const override { return m_totals; }

    bool feed(RecordSink& sink, QString* error) const override
    {
        QFile file(m_path);
        if (!openRegularFile(file, error))
            return false;
        QByteArray buffer(m_recordLength * recordsInBuffer, Qt::Uninitialized);
        for (qint64 left = m_totals.bytes; left > 0;) {
            const auto wanted = static_cast<int>(std::min<qint64>(left, buffer.size()));
            if (file.read(buffer.data(), wanted) != wanted)
                return fail(changed(m_path), error);
            if (!cut(buffer.constData(), wanted, sink))
                return true;
            left -= wanted;
        }
        return file.size() == m_totals.bytes || fail(changed(m_path), error);
    }

private:
    bool cut(const char* bytes, int size, RecordSink& sink) const
    {
        for (int start = 0; start < size; start += m_recordLength) {
            if (!sink.take(bytes + start, std::min(m_recordLength, size - start)))
                return false;
        }
        return true;
    }

    const QString m_path;
    const RecordTotals m_totals;
    const int m_recordLength;
};

class PayloadRecords : public RecordSource
{
public:
    PayloadRecords(PayloadHead head, qint64 count, int recordLength, quint32 seed)
        : m_head(std::move(head)), m_count(count), m_recordLength(recordLength), m_seed(seed)
    {
    }

    RecordTotals totals() const override
    {
        return {m_count, m_count * m_recordLength, m_recordLength};
    }

    bool feed(RecordSink& sink, QString* /*error*/) const override
    {
        PayloadStream stream(m_head, m_count * m_recordLength - payloadOverhead, m_seed);
        char record[maxRecordBytes];
        for (qint64 index = 0; index < m_count; ++index) {
            stream.read(record, m_recordLength);
            if (!sink.take(record, m_recordLength))
                break;
        }
        return true;
    }

private:
    const PayloadHead m_head;
    const qint64 m_count;
    const int m_recordLength;
    const quint32 m_seed;
};

class BlockRecords : public RecordSource
{
public:
    BlockRecords(QString path, int index, const RecordTotals& totals)
        : m_path(std::move(path)), m_index(index), m_totals(totals)
    {
    }

    RecordTotals totals() const override { return m_totals; }

    bool feed(RecordSink& sink, QString* error) const override
    {
        QFile file(m_path);
        if (!openRegularFile(file, error))
            return false;
        bool isWanted = true;
        ScanEvents events;
        events.record = [&](int index, const char* data, int size) {
            isWanted = isWanted && (index != m_index || sink.take(data, size));
        };
        const ScannedFile scanned = scanUpdateFile(file, events);
        const RecordTotals totals = scanned.contents.value(m_index).totals;
        if (totals.count != m_totals.count || totals.bytes != m_totals.bytes)
            return fail(changed(m_path), error);
        return true;
    }

private:
    const QString m_path;
    const int m_index;
    const RecordTotals m_totals;
};

} // namespace

std::shared_ptr<const RecordSource> recordsOfFile(const QString& path, int recordLength,
                                                  QString* error)
{
    QFile file(path);
    if (!openRegularFile(file, error))
        return nullptr;
    return std::make_shared<FileRecords>(path, file.size(), recordLength);
}

std::shared_ptr<const RecordSource> recordsOfPayload(const PayloadHead& head, qint64 count,
                                                     int recordLength, quint32 seed)
{
    return std::make_shared<PayloadRecords>(head, count, recordLength, seed);
}

std::shared_ptr<const RecordSource> recordsOfBlock(const QString& path, int index, QString* error)
{
    QFile file(path);
    if (!openRegularFile(file, error))
        return nullptr;
    const ScannedFile scanned = scanUpdateFile(file);
    if (!scanned.file || index >= scanned.contents.size()) {
        *error = QStringLiteral("%1: has no block %2").arg(path).arg(index);
        return nullptr;
    }
    if (!scanned.contents[index].isComplete) {
        *error = QStringLiteral("%1: block %2 is damaged").arg(path).arg(index);
        return nullptr;
    }
    return std::make_shared<BlockRecords>(path, index, scanned.contents[index].totals);
}
