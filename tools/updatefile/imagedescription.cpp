#include "imagedescription.h"

#include "imageformat.h"
#include "imagewords.h"
#include "recordsources.h"
#include "releasetext.h"

#include <checkedjson.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <limits>

namespace {

// Far beyond any real file, and still within what a byte array holds.
constexpr qint64 maxPayloadBytes = 1 << 30;

VersionInfo readVersion(CheckedObject& object, const QString& key, int parts)
{
    const auto version = parseVersion(object.text(key), parts);
    if (!version)
        object.fail(key, parts == 3 ? "must be a version such as \"1.2.3\""
                                    : "must be a version such as \"1.2\"");
    return version.value_or(VersionInfo());
}

ReleaseText readRelease(CheckedObject& object, const QString& key)
{
    const auto release = parseRelease(object.text(key));
    if (!release)
        object.fail(key, R"(must be a version such as "1.2.3" or "1.2.3-beta.4")");
    return release.value_or(ReleaseText());
}

ImageDate readDate(CheckedObject& object, const QString& key)
{
    const auto date = parseDate(object.text(key));
    if (!date)
        object.fail(key, "must be a date such as \"2025-12-31\"");
    return date.value_or(ImageDate());
}

template <typename Integer>
void readOverride(CheckedObject& overrides, const QString& key, std::optional<Integer>* field)
{
    const qint64 value = overrides.number(key, 0, std::numeric_limits<Integer>::max(), -1);
    if (value >= 0)
        *field = static_cast<Integer>(value);
}

void readReserved(CheckedObject& overrides, std::array<quint16, 4>* words)
{
    int index = 0;
    for (quint16& word : *words)
        word = static_cast<quint16>(
            overrides.number(QStringLiteral("reserved%1").arg(++index), 0, 0xFFFF, 0));
}

QVector<quint16> readModels(CheckedObject& root)
{
    static const QRegularExpression form("^0x[0-9a-f]{4}$");
    QVector<quint16> models;
    for (const QString& text : root.texts("models")) {
        if (!form.match(text).hasMatch())
            root.fail(QStringLiteral("models[%1]").arg(models.size()),
                      "must be a model code such as \"0x0901\"");
        models.append(text.toUShort(nullptr, 16));
    }
    return models;
}

QVector<ImageRecord> readRecords(CheckedObject& object)
{
    static const QRegularExpression form("^([0-9a-f]{2})*$");
    QVector<ImageRecord> records;
    for (const QString& text : object.texts("records")) {
        if (!form.match(text).hasMatch() || text.size() > 2 * maxRecordBytes)
            object.fail(QStringLiteral("records[%1]").arg(records.size()),
                        QStringLiteral("must be up to %1 bytes in hexadecimal, such as \"01fe\"")
                            .arg(maxRecordBytes));
        records.append(QByteArray::fromHex(text.toLatin1()));
    }
    return records;
}

QByteArray readText(CheckedObject& object, int maxBytes)
{
    const QString text = object.text("text", QString());
    if (text.size() > maxBytes)
        object.fail("text", QStringLiteral("must be at most %1 characters").arg(maxBytes));
    if (QString::fromLatin1(text.toLatin1()) != text)
        object.fail("text", "must be Latin-1");
    return text.toLatin1();
}

/// Reads one description, whose blocks together must not grow beyond all bounds.
class DescriptionReader
{
public:
    explicit DescriptionReader(const QString& folder) : m_folder(folder) {}

    QStringList inputFiles() const { return m_inputFiles; }
    ControllerImage readController(CheckedObject& root);
    CameraUpdateFile readCamera(CheckedObject& root);

private:
    ControllerImageBlock readBlock(CheckedObject& object, const ControllerImage& image);
    CameraImage readImage(CheckedObject& object, const CameraUpdateFile& file);
    void readContent(CheckedObject& object, CheckedObject& overrides, const PayloadHead& head,
                     RecordBlock* block);
    std::shared_ptr<const RecordSource> readSource(CheckedObject& object, const PayloadHead& head);
    std::shared_ptr<const RecordSource> readPayload(CheckedObject payload, int recordLength,
                                                    const PayloadHead& head);
    std::shared_ptr<const RecordSource> readRecordsOf(CheckedObject origin);
    QString inputFile(CheckedObject& object);
    std::shared_ptr<const RecordSource> addUp(CheckedObject& object, const QString& key,
                                              const std::shared_ptr<const RecordSource>& source);

    const QDir m_folder; // that files are named from
    QStringList m_inputFiles;
    QString m_appendix;
    qint64 m_payloadBytes = 0;
};

ControllerImage DescriptionReader::readController(CheckedObject& root)
{
    ControllerImage image;
    image.layout = root.choice("layout", layoutWords());
    image.modelFamily = root.choice("modelFamily", modelFamilyWords(), 0);

    const ReleaseText release = readRelease(root, "release");
    m_appendix = release.appendix;
    image.release = release.version;
    if (image.layout == ImageLayout::Dated) {
        image.preReleaseType = release.preReleaseType;
        image.preReleaseNumber = release.preReleaseNumber;
        image.releaseDate = readDate(root, "releaseDate");
        image.minorReleaseDate = readDate(root, "minorReleaseDate");
    }
    image.newPt = readVersion(root, "newPt", 3);
    image.newCt = readVersion(root, "newCt", 2);
    image.minPt = readVersion(root, "minPt", 3);
    image.minCt = readVersion(root, "minCt", 2);

    CheckedObject overrides = root.objectOrEmpty("override");
    readOverride(overrides, "magic", &image.magic);
    readOverride(overrides, "blockCount", &image.blockCount);
    readReserved(overrides, &image.reserved);
    overrides.finish();

    for (CheckedObject& object : root.objects("blocks"))
        image.blocks.append(readBlock(object, image));
    return image;
}

ControllerImageBlock DescriptionReader::readBlock(CheckedObject& object,
                                                  const ControllerImage& image)
{
    ControllerImageBlock block;
    const BlockType type = object.choice("type", blockTypeWords());
    block.type = type;
    const int parts = imageformat::versionParts(block.type);
    block.minVer = readVersion(object, "minVersion", parts);
    block.maxVer = readVersion(object, "maxVersion", parts);
    block.text = readText(object, imageformat::maxBlockTextBytes);

    CheckedObject overrides = object.objectOrEmpty("override");
    block.type = static_cast<quint16>(overrides.number("type", 0, 0xFFFF, block.type));
    if (type == FirmwareBlock)
        readContent(object, overrides,
                    {PayloadComponent::TrackingSoftware, image.newPt, m_appendix}, &block);
    else
        readContent(object, overrides,
                    {PayloadComponent::ControllerFirmware, image.newCt, QString()}, &block);
    return block;
}

CameraUpdateFile DescriptionReader::readCamera(CheckedObject& root)
{
    CameraUpdateFile file;
    // The head has no room for a pre-release; the payload has.
    const ReleaseText release = readRelease(root, "newVersion");
    m_appendix = release.appendix;
    file.newVer = release.version;
    file.minVer = readVersion(root, "minVersion", 3);
    file.models = readModels(root);

    CheckedObject overrides = root.objectOrEmpty("override");
    readOverride(overrides, "magic", &file.magic);
    readOverride(overrides, "modelCount", &file.modelCount);
    readOverride(overrides, "imageCount", &file.imageCount);
    readReserved(overrides, &file.reserved);
    overrides.finish();

    for (CheckedObject& object : root.objects("images"))
        file.images.append(readImage(object, file));
    return file;
}

CameraImage DescriptionReader::readImage(CheckedObject& object, const CameraUpdateFile& file)
{
    CameraImage image;
    image.text = readText(object, imageformat::maxCameraTextBytes);
    CheckedObject overrides = object.objectOrEmpty("override");
    if (object.contains("newVersion"))
        image.newVer = readVersion(object, "newVersion", 3);
    if (object.contains("minVersion"))
        image.minVer = readVersion(object, "minVersion", 3);
    readContent(object, overrides, {PayloadComponent::CameraFirmware, file.newVer, m_appendix},
                &image);
    return image;
}

void DescriptionReader::readContent(CheckedObject& object, CheckedObject& overrides,
                                    const PayloadHead& head, RecordBlock* block)
{
    if (object.contains("records"))
        block->records = readRecords(object);
    else
        block->source = readSource(object, head);
    readOverride(overrides, "magic", &block->magic);
    readOverride(overrides, "textLength", &block->textLength);
    readOverride(overrides, "recordCount", &block->recordCount);
    readOverride(overrides, "maxRecordLength", &block->maxRecordLength);
    readOverride(overrides, "offset", &block->offset);
    readOverride(overrides, "length", &block->length);
    overrides.finish();
    object.objectOrEmpty("shown"); // what `show` tells beside the description
    object.finish();
}

std::shared_ptr<const RecordSource> DescriptionReader::readSource(CheckedObject& object,
                                                                  const PayloadHead& head)
{
    if (object.contains("recordsOf"))
        return readRecordsOf(object.object("recordsOf"));
    const auto length =
        static_cast<int>(object.number("recordLength", 1, maxRecordBytes, maxRecordBytes));
    if (!object.contains("file"))
        return readPayload(object.object("payload"), length, head);
    const QString path = inputFile(object);
    QString error;
    const auto source = recordsOfFile(path, length, &error);
    if (!source)
        object.fail("file", error);
    return addUp(object, "file", source);
}

std::shared_ptr<const RecordSource> DescriptionReader::readRecordsOf(CheckedObject origin)
{
    const QString path = inputFile(origin);
    const auto index = static_cast<int>(origin.number("block", 0, 0xFFFF));
    origin.finish();
    QString error;
    const auto source = recordsOfBlock(path, index, &error);
    if (!source)
        origin.fail("file", error);
    return addUp(origin, "file", source);
}

QString DescriptionReader::inputFile(CheckedObject& object)
{
    const QString path = m_folder.filePath(object.text("file"));
    m_inputFiles.append(path);
    return path;
}

// Notes what goes beyond all bounds.
std::shared_ptr<const RecordSource>
DescriptionReader::addUp(CheckedObject& object, const QString& key,
                         const std::shared_ptr<const RecordSource>& source)
{
    m_payloadBytes += source ? source->totals().bytes : 0;
    if (m_payloadBytes > maxPayloadBytes)
        object.fail(
            key,
            QStringLiteral("the payloads of a file must not exceed %1 bytes").arg(maxPayloadBytes));
    return source;
}

std::shared_ptr<const RecordSource>
DescriptionReader::readPayload(CheckedObject payload, int recordLength, const PayloadHead& head)
{
    const qint64 count = payload.number("records", 1, maxPayloadBytes);
    const auto seed =
        static_cast<quint32>(payload.number("seed", 0, std::numeric_limits<quint32>::max(), 1));
    payload.finish();
    if (count * recordLength < payloadOverhead)
        payload.fail("records", QStringLiteral("too few for the %1 bytes of a payload's head "
                                               "and checksum")
                                    .arg(payloadOverhead));
    return addUp(payload, "records", recordsOfPayload(head, count, recordLength, seed));
}

} // namespace

std::optional<UpdateFile> readImageDescription(const QByteArray& json, const QString& fileName,
                                               QStringList* inputFiles, QString* error)
{
    const auto document = parseJsonObject(json, fileName, error);
    if (!document)
        return std::nullopt;

    CheckedObject root(*document, fileName, error);
    DescriptionReader reader(QFileInfo(fileName).path());
    UpdateFile file;
    if (root.choice("kind", kindWords()) == UpdateFileKind::Controller)
        file = reader.readController(root);
    else
        file = reader.readCamera(root);
    root.objectOrEmpty("shown"); // what `show` tells beside the description
    root.finish();
    if (inputFiles)
        *inputFiles = reader.inputFiles();
    if (!root.ok())
        return std::nullopt;
    return file;
}
