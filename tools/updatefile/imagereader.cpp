#include "imagereader.h"

#include "imagescan.h"

#include <QBuffer>
#include <QDir>
#include <QFile>

#include <algorithm>

namespace {

template <typename Block>
void setRecords(QVector<Block>* blocks, const QVector<QVector<ImageRecord>>& records)
{
    for (int index = 0; index < std::min(blocks->size(), records.size()); ++index)
        (*blocks)[index].records = records[index];
}

} // namespace

ReadUpdateFile readUpdateFile(const QByteArray& bytes)
{
    QBuffer device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly);
    QVector<QVector<ImageRecord>> records;
    ScanEvents events;
    events.record = [&](int index, const char* data, int size) {
        if (records.size() <= index)
            records.resize(index + 1);
        records[index].append(QByteArray(data, size));
    };
    ReadUpdateFile result;
    const ScannedFile scanned = scanUpdateFile(device, events);
    for (const RuleFinding& finding : scanned.findings)
        result.problems.append(findingText(finding));
    result.file = scanned.file;
    if (!result.file)
        return result;
    if (auto* image = std::get_if<ControllerImage>(&*result.file))
        setRecords(&image->blocks, records);
    else
        setRecords(&std::get<CameraUpdateFile>(*result.file).images, records);
    return result;
}

QVector<UpdateFile> readUpdateFiles(const QString& folder, qint64 mostBytes)
{
    QVector<UpdateFile> files;
    for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::Files)) {
        QFile file(entry.filePath());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const ReadUpdateFile content =
            readUpdateFile(mostBytes < file.size() ? file.read(mostBytes) : file.readAll());
        if (content.file)
            files += *content.file;
    }
    return files;
}
