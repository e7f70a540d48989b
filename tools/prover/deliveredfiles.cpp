#include "deliveredfiles.h"

#include <blockreceiver.h>
#include <deliverychecks.h>
#include <imageblockreader.h>
#include <littleendianreader.h>
#include <sixbitencoding.h>
#include <updatefolder.h>

#include <QDir>
#include <QFile>

#include <algorithm>

namespace {

constexpr int payloadMagicBytes = 4;

struct CloseFile
{
    void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

PayloadComponent componentOf(const ZanUpdateBlock& block)
{
    return block.type == ZAN_SYSTEM_UPDATE ? PayloadComponent::ControllerFirmware
                                           : PayloadComponent::TrackingSoftware;
}

// A mark out of a file's name can be anything. One that would be read as a part of the number is
// none that a controller reports, nor is one with a blank.
QString reportableMark(const ZanData& image)
{
    const VersionInfo version = image.newPtVersion();
    const QString mark = image.getPreReleaseAppendix();
    const bool isReportable = !mark.contains(QLatin1Char(' ')) &&
                              VersionInfo::fromString(version.toString() + mark) == version;
    return isReportable ? mark : QString();
}

PayloadHead headOf(const ZanData& image, const ZanUpdateBlock& block)
{
    if (block.type == ZAN_SYSTEM_UPDATE)
        return {PayloadComponent::ControllerFirmware, image.newCtVersion(), QString()};
    return {PayloadComponent::TrackingSoftware, image.newPtVersion(), reportableMark(image)};
}

BlockContent unreadable(BlockRead read)
{
    BlockContent content;
    content.reason = read == BlockRead::CannotRead
                         ? QStringLiteral("the file ends inside the block")
                         : QStringLiteral("no block stands at its offset");
    return content;
}

/// Sends a block to a receiver as a run does, record by record, and sees what becomes of it.
class BlockTrial
{
public:
    BlockTrial(const ZanData& image, int index)
        : m_image(image), m_block(*image.getUpdateBlock(index)),
          m_file(image.getUpdateBlockInFile(index))
    {
    }

    BlockContent run();

private:
    BlockContent stream(LittleEndianReader& reader, const ImageBlockHead& head);
    void send(const UpdateRecord& record, int number, int count);
    BlockContent conclude(int records) const;

    const ZanData& m_image;
    const ZanUpdateBlock& m_block;
    File m_file;
    BlockReceiver m_receiver;
    QByteArray m_start;
};

BlockContent BlockTrial::run()
{
    if (!m_file)
        return unreadable(BlockRead::CannotRead);
    LittleEndianReader reader(m_file.get(), LittleEndianReader::LargeChunk);
    ImageBlockHead head;
    const BlockRead read = readImageBlockHead(reader, m_image.getSystemModel(), &head);
    return read == BlockRead::Ok ? stream(reader, head) : unreadable(read);
}

BlockContent BlockTrial::stream(LittleEndianReader& reader, const ImageBlockHead& head)
{
    for (int number = 1; number <= head.recordCount; ++number) {
        UpdateRecord record;
        const BlockRead read = readImageRecord(reader, head.maxRecordLength, &record);
        if (read != BlockRead::Ok)
            return unreadable(read);
        send(record, number, head.recordCount);
    }
    return conclude(qMax(0, head.recordCount));
}

void BlockTrial::send(const UpdateRecord& record, int number, int count)
{
    if (m_start.size() < payloadMagicBytes)
        m_start.append(reinterpret_cast<const char*>(record.data), record.length);
    // Unknown content need not be kept in memory, and would be refused in any case.
    if (m_start.size() >= payloadMagicBytes && !isPayload(m_start))
        return;
    char text[2 * MAX_RECORD_BYTES];
    encodeSixBit(text, record.data, record.length);
    if (number == 1 || !m_receiver.refused())
        m_receiver.take(componentOf(m_block), count, number, QByteArray(text));
}

BlockContent BlockTrial::conclude(int records) const
{
    BlockContent content;
    content.records = records;
    if (records == 0) {
        content.kind = BlockContent::Empty;
    } else if (!isPayload(m_start)) {
        content.kind = BlockContent::Assumed;
        content.head = headOf(m_image, m_block);
    } else if (m_receiver.state() == BlockReceiver::State::Complete) {
        content.kind = BlockContent::Brings;
        content.head = m_receiver.head();
    } else {
        content.kind = BlockContent::Refused;
        content.reason = m_receiver.reason();
    }
    return content;
}

DeliveredImage readImage(const QString& name, std::unique_ptr<ZanData> data)
{
    DeliveredImage image{name, std::move(data), {}};
    for (int index = 0; index < image.data->getNumberOfUpdateBlocks(); ++index)
        image.blocks += BlockTrial(*image.data, index).run();
    return image;
}

std::unique_ptr<QTemporaryDir> temporaryProgramFolder(QString* error)
{
    auto folder = std::make_unique<QTemporaryDir>();
    const QString path = folder->path();
    const bool isAscii =
        std::all_of(path.begin(), path.end(), [](QChar letter) { return letter.unicode() < 0x80; });
    if (folder->isValid() && isAscii && QDir(path).mkdir(updateFolderName))
        return folder;
    *error = isAscii ? QStringLiteral("%1: no temporary folder can be made there; name another one "
                                      "in TMPDIR")
                           .arg(QDir::tempPath())
                     : QStringLiteral("%1: the temporary folder must have an ASCII path; name "
                                      "another one in TMPDIR")
                           .arg(QDir::tempPath());
    return nullptr;
}

bool linkInto(const QTemporaryDir& folder, const QString& target, const QString& name,
              QString* error)
{
    const QString link =
        folder.path() + QLatin1Char('/') + updateFolderName + QLatin1Char('/') + name;
    if (QFile::link(target, link))
        return true;
    *error = QStringLiteral("%1: cannot be linked to").arg(target);
    return false;
}

} // namespace

DeliveredFiles::DeliveredFiles(const QString& folder) : m_folder(folder) {}

std::optional<DeliveredFiles> DeliveredFiles::read(const QString& folder, QString* error)
{
    const QDir dir(folder);
    if (!dir.exists() || !QFileInfo(folder).isReadable()) {
        *error = dir.exists() ? QStringLiteral("%1: the folder cannot be read").arg(folder)
                              : QStringLiteral("%1: there is no such folder").arg(folder);
        return std::nullopt;
    }
    const QString used = updateFolderOf(folder);
    DeliveredFiles delivery(QFileInfo(used).isDir() ? used : folder);
    delivery.m_links = temporaryProgramFolder(error);
    if (!delivery.m_links || !delivery.link(error))
        return std::nullopt;
    delivery.readImages();
    if (delivery.hasUpdateFile())
        return delivery;
    // Nothing could go wrong with it, which must not pass for a proof.
    *error = QStringLiteral("%1: there is no update file").arg(delivery.m_folder);
    return std::nullopt;
}

bool DeliveredFiles::hasUpdateFile() const
{
    return !m_images.empty() ||
           std::any_of(m_otherFiles.begin(), m_otherFiles.end(), [](const QString& name) {
               return QDir::match(QStringLiteral("*.VX2znimg"), name);
           });
}

bool DeliveredFiles::link(QString* error)
{
    for (const QString& name : QDir(m_folder).entryList(QDir::Files)) {
        if (!linkInto(*m_links, filePath(name), name, error))
            return false;
    }
    return true;
}

void DeliveredFiles::readImages()
{
    const QDir dir(m_links->path() + QLatin1Char('/') + updateFolderName);
    for (const QString& name : dir.entryList(QDir::Files)) {
        auto data = std::make_unique<ZanData>(dir.filePath(name));
        if (data->isValid())
            m_images.push_back(readImage(name, std::move(data)));
        else
            m_otherFiles += name;
    }
    std::stable_sort(m_images.begin(), m_images.end(),
                     [](const DeliveredImage& a, const DeliveredImage& b) {
                         return a.data->newVornix2Version() < b.data->newVornix2Version();
                     });
}

QString DeliveredFiles::filePath(const QString& name) const
{
    return QDir(m_folder).absoluteFilePath(name);
}

std::unique_ptr<QTemporaryDir> DeliveredFiles::layOut(const QVector<int>& order,
                                                      QString* error) const
{
    std::unique_ptr<QTemporaryDir> folder = temporaryProgramFolder(error);
    for (int position = 0; folder && position < order.size(); ++position) {
        const int index = order.at(position);
        const QString target = filePath(m_images.at(static_cast<std::size_t>(index)).name);
        if (!linkInto(*folder, target, nameAt(position, index), error))
            return nullptr;
    }
    return folder;
}

QString DeliveredFiles::nameAt(int position, int index) const
{
    return QStringLiteral("%1-%2")
        .arg(position + 1, 5, 10, QLatin1Char('0'))
        .arg(m_images.at(static_cast<std::size_t>(index)).name);
}
